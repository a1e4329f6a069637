#include "python/src/Opening.h"

#include "prm/GuessedSets.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSetEdits.h"
#include "python/src/GroupNameEdit.h"
#include "python/src/Kind.h"

#include <QTextStream>
#include <boost/make_shared.hpp>

#include <algorithm>

namespace PrmPython {

namespace {

/// Takes all that another parameter of the same kind has, but for its master.
class TakeEdit : public Prm::ParameterSnapshotEdit {
public:
    TakeEdit(Prm::ParameterWithoutType& parameter, const boost::shared_ptr<Prm::ParameterWithoutType>& source)
        : ParameterSnapshotEdit(&parameter), m_source(source) {}

protected:
    bool applies() override { return true; }
    void apply() override {
        parameter()->assignFrom(*m_source);
        if (Prm::ParameterWithoutType* const rest = parameter())
            rest->vCopyKeyframeDataFrom(m_source.get());
    }

private:
    boost::shared_ptr<Prm::ParameterWithoutType> m_source;
};

/// Exchanges the file, which keeps the header and the lines that no parameter has.
class ExchangeFileEdit : public Bsc::Command {
public:
    ExchangeFileEdit(Home& home, std::unique_ptr<Prm::ProjectFile> other) : m_home(home), m_other(std::move(other)) {}
    void doIt() override { m_home.file.swap(m_other); }
    void undoIt() override { m_home.file.swap(m_other); }

private:
    Home& m_home;
    std::unique_ptr<Prm::ProjectFile> m_other;
};

/// A parameter without data of the same kind, name, default value and options; null for a kind that Python cannot make.
boost::shared_ptr<Prm::ParameterWithoutType> emptyLike(const Prm::ParameterWithoutType& parameter) {
    boost::shared_ptr<Prm::ParameterWithoutType> made;
    eachKind([&](auto* kind) {
        using T = std::remove_pointer_t<decltype(kind)>;
        const auto* const typed = dynamic_cast<const Prm::Parameter<T>*>(&parameter);
        if (!typed)
            return false;
        Prm::ParameterOptions options;
        options.setFlag(Prm::Keyframed, typed->isKeyframed());
        options.setFlag(Prm::Splittable, typed->splittable());
        options.setFlag(Prm::Locked, typed->isLocked());
        options.setFlag(Prm::Hidden, typed->isHidden());
        made = boost::make_shared<typename Kind<T>::Class>(typed->scriptName(), typed->defaultValue(), options);
        return true;
    });
    return made;
}

/// Gives guessed sets the kinds that are present, before a text is read into them: a parameter without values, of which
/// a text has lines all the same, cannot be guessed.
class Kinds {
public:
    explicit Kinds(const QByteArray& text) : m_text('\n' + text) {}

    void take(const Prm::ParameterSet& present, Prm::ParameterSet& guessed) const {
        for (const auto& one : present.parameters())
            take(*one, guessed);
        for (const Prm::ParameterSet* const subset : present.subsets())
            if (Prm::ParameterSet* const same = subsetLike(subset->scriptName(), subset->path(), guessed))
                take(*subset, *same);
    }

private:
    bool isNamed(const QString& path) const { return m_text.contains('\n' + path.toUtf8() + '.'); }

    void take(const Prm::ParameterWithoutType& present, Prm::ParameterSet& guessed) const {
        if (const auto* const compound = dynamic_cast<const Prm::CompoundParameter*>(&present)) {
            if (Prm::ParameterSet* const parts = subsetLike(present.scriptName(), present.path(), guessed))
                take(static_cast<const Prm::ParameterSet&>(*compound), *parts);
            return;
        }
        Prm::ParameterWithoutType* const same = guessed.parameterWTWithName(present.scriptName());
        const auto like = same || isNamed(present.path()) ? emptyLike(present) : nullptr;
        if (!like)
            return;
        if (same)
            Prm::ParameterSetRemoveEdit(guessed, static_cast<Prm::BasicParameter&>(*same)).doIt();
        guessed.addParameter(like);
    }
    Prm::ParameterSet* subsetLike(const QString& name, const QString& path, Prm::ParameterSet& guessed) const {
        Prm::ParameterSet* const same = guessed.subsetWithName(name);
        if (same || !isNamed(path))
            return same;
        const auto made = boost::make_shared<Prm::ParameterSet>();
        made->setScriptName(name);
        guessed.addParameterSet(made);
        return made.get();
    }

    const QByteArray m_text;
};

QString linesOf(const Prm::ParameterWithoutType& parameter) {
    QString text;
    QTextStream stream(&text);
    parameter.bStreamOut(stream, {}, true);
    return text;
}

/// Brings a set into the state of another one, whose members it takes over.
class Adoption {
public:
    explicit Adoption(Home& home) : m_home(home) {}

    void adopt(Prm::ParameterSet& into, Prm::ParameterSet& from) {
        const auto wanted = from.parameters();
        for (const auto& present : std::vector(into.parameters()))
            if (!hasLike(wanted, *present) && !isCompoundIn(from, *present))
                remove(into, *present);
        for (const auto& parameter : wanted)
            take(into, from, parameter);
        for (Prm::ParameterSet* const present : into.subsets())
            if (!from.subsetWithName(present->scriptName()))
                run(std::make_unique<Prm::ParameterSetRemoveEdit>(into, *present));
        for (Prm::ParameterSet* const subset : from.subsets())
            adoptSubset(into, *subset);
    }

private:
    using Parameters = std::vector<boost::shared_ptr<Prm::ParameterWithoutType>>;

    static bool isLike(const Prm::ParameterWithoutType& a, const Prm::ParameterWithoutType& b) {
        return a.scriptName() == b.scriptName() && a.qMetaType() == b.qMetaType();
    }
    static bool hasLike(const Parameters& all, const Prm::ParameterWithoutType& one) {
        return std::any_of(all.begin(), all.end(), [&](const auto& other) { return isLike(*other, one); });
    }
    static bool isCompoundIn(const Prm::ParameterSet& from, Prm::ParameterWithoutType& one) {
        return dynamic_cast<const Prm::CompoundParameter*>(&one) && from.subsetWithName(one.scriptName());
    }
    void run(std::unique_ptr<Bsc::Command> edit) { m_home.history.run(std::move(edit), nullptr); }
    void remove(Prm::ParameterSet& from, Prm::ParameterWithoutType& one) {
        if (auto* const compound = dynamic_cast<Prm::CompoundParameter*>(&one))
            run(std::make_unique<Prm::ParameterSetRemoveEdit>(from, *compound));
        else
            run(std::make_unique<Prm::ParameterSetRemoveEdit>(from, static_cast<Prm::BasicParameter&>(one)));
    }
    void setStatic(Prm::BasicParameter& present, const Prm::ParameterWithoutType& wanted) {
        QVariant value = wanted.variantValue(Prm::Context());
        const QVariant former = present.variantValue(Prm::Context());
        if (value.convert(former.userType()) && value != former)
            run(std::make_unique<Prm::ParameterSetStaticValueEdit>(present, value));
    }
    void take(Prm::ParameterSet& into, Prm::ParameterSet& from,
              const boost::shared_ptr<Prm::ParameterWithoutType>& wanted) {
        Prm::ParameterWithoutType* const present = into.parameterWTWithName(wanted->scriptName());
        Prm::BasicParameter* const unanimated = present ? nullptr : into.parameterWithName(wanted->scriptName());
        if (unanimated) {
            setStatic(*unanimated, *wanted);
        } else if (!present) {
            const boost::shared_ptr<Prm::BasicParameter> parameter = wanted;
            Prm::ParameterSetRemoveEdit(from, *parameter).doIt();
            run(std::make_unique<Prm::ParameterSetAddEdit>(into, parameter));
        } else if (linesOf(*present) != linesOf(*wanted))
            run(std::make_unique<TakeEdit>(*present, wanted));
    }
    void adoptSubset(Prm::ParameterSet& into, Prm::ParameterSet& subset) {
        auto* const compound = dynamic_cast<Prm::CompoundParameter*>(into.parameterWTWithName(subset.scriptName()));
        if (compound) {
            for (const auto& part : subset.parameters())
                if (Prm::ParameterWithoutType* const present = compound->parameterWTWithName(part->scriptName()))
                    if (linesOf(*present) != linesOf(*part))
                        run(std::make_unique<TakeEdit>(*present, part));
            return;
        }
        Prm::ParameterSet* present = into.subsetWithName(subset.scriptName());
        if (!present) {
            const auto made = boost::make_shared<Prm::ParameterSet>();
            made->setScriptName(subset.scriptName());
            run(std::make_unique<Prm::ParameterSetAddEdit>(into, made));
            present = made.get();
        }
        if (present->name() != subset.name() || present->displayName() != subset.displayName())
            run(std::make_unique<GroupNameEdit>(*present, subset.name(), subset.displayName()));
        adopt(*present, subset);
    }

    Home& m_home;
};

/// The paths of parameters, each with that of its master, empty for none.
using MasterPaths = std::vector<std::pair<QString, QString>>;

MasterPaths masterPathsOf(const Prm::ParameterSet& set) {
    MasterPaths paths;
    set.forEachParameter(
        [&](Prm::ParameterWithoutType* parameter) {
            const Prm::ParameterWithoutType* const master = parameter->masterParameter();
            paths.emplace_back(parameter->path(), master ? master->path() : QString());
        },
        true);
    return paths;
}

void adoptMasters(Home& home, const MasterPaths& paths) {
    for (const auto& [path, masterPath] : paths) {
        Prm::ParameterWithoutType* const ours = home.root->parameterWTWithName(path);
        Prm::ParameterWithoutType* const master =
            masterPath.isEmpty() ? nullptr : home.root->parameterWTWithName(masterPath);
        if (!ours || ours->masterParameter() == master)
            continue;
        if (master)
            home.history.run(std::make_unique<Prm::ParameterAddConstrainedParameterEdit>(*master, *ours), ours);
        else
            home.history.run(std::make_unique<Prm::ParameterWithoutTypeUnconstrainEdit>(*ours), ours);
    }
}

} // namespace

QByteArray contentsOf(py::handle path) {
    const Staying staying;
    return utf8FromText(py::module_::import("pathlib").attr("Path")(path).attr("read_bytes")());
}

void setViewNames(Home& home, const QStringList& names) {
    QVector<QStringList> all;
    for (const QString& name : names)
        all.append({name, name.left(1)});
    home.views.setViewNames(all);
}

HomePointer readProject(const QByteArray& text, const QStringList& rules, const std::optional<QStringList>& views) {
    buryLeftBehind();
    boost::shared_ptr<Prm::ParameterSet> sets;
    {
        const Working working;
        sets = Prm::guessedSets(text, rules);
    }
    HomePointer home = kept(new Home(sets));
    bool isRead = false;
    {
        const Working working;
        isRead = home->file->loadText(text);
    }
    if (!isRead)
        raise(PyExc_ValueError, home->file->errorString());
    if (views)
        setViewNames(*home, *views);
    return home;
}

void adoptText(Home& home, const QByteArray& text, const QString& title) {
    home.ownedRoot();
    const auto wanted = Prm::guessedSets(text);
    Kinds(text).take(*home.root, *wanted);
    Prm::ProjectFile reading(*wanted);
    if (!reading.loadText(text))
        raise(PyExc_ValueError, reading.errorString());
    const MasterPaths masters = masterPathsOf(*wanted);
    const History::Block block = home.history.begin(title);
    try {
        Adoption(home).adopt(*home.root, *wanted);
        adoptMasters(home, masters);
        auto file = std::make_unique<Prm::ProjectFile>(*home.root);
        file->loadText(text);
        home.history.run(std::make_unique<ExchangeFileEdit>(home, std::move(file)), nullptr);
    } catch (...) {
        home.history.rollBack(block);
        throw;
    }
    home.history.end(block);
    const Deleting deleting;
    wanted->clearAllLists();
}

} // namespace PrmPython

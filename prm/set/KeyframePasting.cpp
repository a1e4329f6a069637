// Finds the parameters that copied keyframes are pasted into, and makes the edits.

#include "host/bsc/CompositeCommand.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/set/CopiedKeyframes.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/untyped/UntypedAnswers.h"

#include <QHash>
#include <QMetaType>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

namespace Prm {

namespace detail {

namespace {

class TargetWalk {
public:
    std::vector<PasteTarget> take() { return std::move(m_targets); }

    void addSet(const ParameterSet& set, const QString& path) {
        addParameters(set, path, nullptr, {});
        for (const ParameterSet* const subset : set.subsets())
            addSet(*subset, path + subset->scriptName() + QLatin1Char('.'));
    }

private:
    void addParameters(const ParameterSet& set, const QString& path, ParameterWithoutType* whole,
                       const QString& nameInWhole) {
        for (const auto& parameter : set.parameters()) {
            const QString own = path + parameter->scriptName();
            ParameterWithoutType* const top = whole ? whole : parameter.get();
            const QString inWhole = whole ? lineStart(nameInWhole, parameter->scriptName(), true) : QString();
            if (const auto* const compound = dynamic_cast<const ParameterSet*>(parameter.get()))
                addParameters(*compound, own + QLatin1Char('.'), top, inWhole);
            else
                m_targets.push_back({parameter.get(), own, top, inWhole, valueKindOf(*parameter)});
        }
    }

    std::vector<PasteTarget> m_targets;
};

} // namespace

std::vector<PasteTarget> pasteTargets(const ParameterSet& root) {
    TargetWalk walk;
    walk.addSet(root, {});
    return walk.take();
}

QString valueKindOf(const ParameterWithoutType& parameter) {
    const auto* const answers = UntypedAnswers::of(parameter);
    return answers ? answers->valueType() : QString::fromLatin1(QMetaType::typeName(parameter.qMetaType()));
}

bool mayBePasted(Time time) {
    return time.isValid() && std::isfinite(static_cast<float>(time.toDouble()));
}

namespace {

QString quoted(const QString& text) {
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

QString named(const View& view) {
    return QStringLiteral("view %1").arg(view.id());
}

/// Finds the target of a copied parameter. The names of a path are compared from its end.
class Targets {
public:
    explicit Targets(const ParameterSet& into) : m_targets(pasteTargets(into)) {
        for (const PasteTarget& target : m_targets) {
            if (!m_byPath.contains(target.path))
                m_byPath.insert(target.path, &target);
            m_byName.emplace_back(namesFromEnd(target.kind, target.path), &target);
        }
        std::sort(m_byName.begin(), m_byName.end());
    }

    const PasteTarget* withPath(const QString& path) const { return m_byPath.value(path); }

    /// Null where none matches, and where several do: then these are appended.
    const PasteTarget* withName(const CopiedParameter& copied, QStringList& several) const {
        const QStringList names = namesFromEnd(copied.kind, copied.path);
        const auto next = std::lower_bound(m_byName.begin(), m_byName.end(), std::make_pair(names, m_targets.data()));
        const auto after = next == m_byName.end() ? 0 : commonStart(next->first, names);
        const auto before = next == m_byName.begin() ? 0 : commonStart(std::prev(next)->first, names);
        const int most = std::max(after, before);
        if (most < 2)
            return nullptr;
        const auto matches = [&](const Named& one) { return commonStart(one.first, names) == most; };
        auto begin = next;
        while (begin != m_byName.begin() && matches(*std::prev(begin)) && next - begin < mostNamed)
            --begin;
        auto end = next;
        while (end != m_byName.end() && matches(*end) && end - next < mostNamed)
            ++end;
        for (auto one = begin; one != end; ++one) {
            if (one->second->parameter != begin->second->parameter)
                several = QStringList{begin->second->path, one->second->path};
        }
        return several.isEmpty() ? begin->second : nullptr;
    }

private:
    using Named = std::pair<QStringList, const PasteTarget*>;
    /// A message names two; more need not be found.
    static constexpr int mostNamed = 4;

    static QStringList namesFromEnd(const QString& kind, const QString& path) {
        QStringList names = path.split(QLatin1Char('.'));
        std::reverse(names.begin(), names.end());
        names.prepend(kind);
        return names;
    }
    static int commonStart(const QStringList& a, const QStringList& b) {
        return static_cast<int>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
    }

    std::vector<PasteTarget> m_targets;
    QHash<QString, const PasteTarget*> m_byPath;
    std::vector<Named> m_byName;
};

/// Those of a paste, of which the extrapolation is a part.
constexpr EditWords pasteWords{"Paste %n keyframe into %p", "Paste %n keyframes into %p"};

bool hasKeyframes(const ParameterWithoutType& parameter) {
    const std::vector<View>& views = parameter.viewList();
    return std::any_of(views.begin(), views.end(), [&](View view) { return parameter.keyframeCount(view) > 0; });
}

} // namespace

} // namespace detail

class KeyframeClipboard::Paste {
public:
    Paste(const Contents& contents, ParameterSet& into, Time at, const std::vector<View>& views)
        : m_contents(contents), m_targets(into), m_at(at), m_views(views) {
        std::vector<const detail::CopiedParameter*> unmatched;
        for (const auto& copied : contents.parameters) {
            if (const auto* const target = m_targets.withPath(copied.path))
                take(copied, *target);
            else
                unmatched.push_back(&copied);
        }
        for (const auto* const copied : unmatched)
            takeByName(*copied);
    }

    QStringList appendTo(Bsc::CompositeCommand& command) {
        std::vector<std::unique_ptr<Bsc::Command>> edits;
        for (const Whole& whole : m_wholes) {
            for (const View view : m_views.empty() ? std::vector<View>{View::INVALID()} : m_views)
                edits.push_back(pasteOf(whole, view));
        }
        std::move(m_settings.begin(), m_settings.end(), std::back_inserter(edits));
        for (auto& edit : edits)
            command.push_back(edit.release());
        return m_told;
    }

private:
    /// The lines for one edit: those of all parts of a compound.
    struct Whole {
        ParameterWithoutType* parameter;
        QString lines;
    };

    void tell(const QString& sentence) { m_told.append(sentence); }

    void takeByName(const detail::CopiedParameter& copied) {
        QStringList several;
        const auto* const target = m_targets.withName(copied, several);
        if (target)
            take(copied, *target);
        else if (several.isEmpty())
            tell(QStringLiteral("No parameter of type %1 matches %2").arg(copied.kind, detail::quoted(copied.path)));
        else
            tell(QStringLiteral("Several parameters match %1, among them %2")
                     .arg(detail::quoted(copied.path), several.join(QLatin1String(" and "))));
    }
    void take(const detail::CopiedParameter& copied, const detail::PasteTarget& target) {
        const QString path = detail::quoted(target.path);
        if (copied.kind != target.kind)
            return tell(QStringLiteral("%1 has values of type %2, not %3").arg(path, target.kind, copied.kind));
        if (m_taken.contains(target.parameter))
            return tell(QStringLiteral("%1 matches %2, which already gets keyframes of another parameter")
                            .arg(detail::quoted(copied.path), path));
        m_taken.insert(target.parameter);
        const bool isFresh = !detail::hasKeyframes(*target.parameter);
        const int before = m_keyframes;
        bool hasOneView = false;
        for (const auto& view : copied.views) {
            if (!view.staticText.isNull())
                takeStatic(view, target);
            if (view.keyframes.isEmpty())
                continue;
            if (hasOneView && !target.parameter->splittable())
                tell(QStringLiteral("%1 has the same data in all views; the keyframes of %2 are not pasted")
                         .arg(path, detail::named(view.view)));
            else
                takeKeyframes(view, target);
            hasOneView = true;
        }
        if (isFresh && m_keyframes > before) {
            add<ParameterExtrapolationBeforeEdit>(detail::pasteWords, false, *target.parameter, copied.before);
            add<ParameterExtrapolationAfterEdit>(detail::pasteWords, false, *target.parameter, copied.after);
        }
    }
    void takeKeyframes(const detail::CopiedParameter::OfView& view, const detail::PasteTarget& target) {
        if (!target.parameter->isKeyframed())
            return tell(QStringLiteral("%1 is not animated").arg(detail::quoted(target.path)));
        QString& lines = wholeOf(target).lines;
        detail::LineNotes notes;
        for (const QString& line : view.keyframes) {
            const auto keyframe = target.parameter->getSerialisedKeyframe(Context(Context::INVALID_TIME));
            notes.clear();
            if (keyframe)
                keyframe->setFromString(line);
            if (!notes.losses.isEmpty() || !keyframe) {
                tell(QStringLiteral("%1: %2").arg(detail::quoted(target.path), notes.losses.value(0)));
                continue;
            }
            lines += view.view.toString() + target.nameInWhole + line + QLatin1Char('\n');
            ++m_keyframes;
        }
    }
    void takeStatic(const detail::CopiedParameter::OfView& copied, const detail::PasteTarget& target) {
        const auto* const answers = detail::UntypedAnswers::of(*target.parameter);
        if (!answers)
            return;
        const detail::LineNotes notes;
        const QVariant value = answers->readValue(copied.staticText);
        if (!notes.losses.isEmpty())
            return tell(QStringLiteral("%1: %2").arg(detail::quoted(target.path), notes.losses.front()));
        for (const View view : m_views.empty() ? std::vector<View>{copied.view} : m_views) {
            if (target.parameter->keyframeCount(view) > 0)
                tell(QStringLiteral("%1 has keyframes in %2; the value is not pasted")
                         .arg(detail::quoted(target.path), detail::named(view)));
            else
                add<ParameterSetStaticValueEdit>({"Paste value into %p", "Paste %n values into %p"}, true,
                                                 *target.parameter, value, view);
        }
    }
    Whole& wholeOf(const detail::PasteTarget& target) {
        const auto place = m_places.value(target.whole, m_wholes.size());
        if (place == m_wholes.size()) {
            m_places.insert(target.whole, place);
            m_wholes.push_back({target.whole, {}});
        }
        return m_wholes[place];
    }
    std::unique_ptr<Bsc::Command> pasteOf(const Whole& whole, View view) {
        auto edit =
            std::make_unique<ParameterPasteKeyframesEdit>(*whole.parameter, whole.lines, m_at, view, m_contents.first);
        m_told += edit->losses();
        return edit;
    }
    template <class Edit, class... More>
    void add(const EditWords& words, bool isCounted, ParameterWithoutType& parameter, const More&... more) {
        auto edit = std::make_unique<Edit>(parameter, more...);
        edit->describeAs(words, isCounted);
        m_settings.push_back(std::move(edit));
    }

    const Contents& m_contents;
    detail::Targets m_targets;
    Time m_at;
    const std::vector<View>& m_views;
    QSet<const ParameterWithoutType*> m_taken;
    std::vector<Whole> m_wholes;
    QHash<const ParameterWithoutType*, std::size_t> m_places;
    int m_keyframes = 0;
    std::vector<std::unique_ptr<Bsc::Command>> m_settings;
    QStringList m_told;
};

QStringList KeyframeClipboard::appendToCommand(ParameterSet& into, Bsc::CompositeCommand& command, Time at,
                                               const std::vector<View>& views) const {
    if (at.isValid() && m_contents->first.isValid()) {
        const double shift = at - m_contents->first;
        if (!detail::mayBePasted(m_contents->first + shift) || !detail::mayBePasted(m_contents->last + shift))
            throw std::runtime_error("A keyframe would come to a time that is out of range");
    }
    return Paste(*m_contents, into, at, views).appendTo(command);
}

} // namespace Prm

// What project text cannot hold of the sets that are to be saved.

#include "prm/MovedParameter.h"
#include "prm/Parameter.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/ProjectFile.h"
#include "prm/StaticParameter.h"
#include "prm/untyped/PartialState.h"

#include <QHash>
#include <QMap>

#include <algorithm>

namespace Prm {

namespace {

bool breaksLine(const QString& text) {
    return text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
}

/// UTF-8 has no halves of surrogate pairs.
bool isChangedByUtf8(const QString& text) {
    return QString::fromStdString(text.toStdString()) != text;
}

/// What is lost of a text that is not escaped; empty if it can be read back.
QString lossOfRawText(const QString& text) {
    if (breaksLine(text))
        return QStringLiteral("holds a line break");
    return isChangedByUtf8(text) ? QStringLiteral("holds half a surrogate pair") : QString();
}

/// Collects the losses of one parameter, each after its path.
class Losses {
public:
    Losses(const ParameterWithoutType& parameter, QStringList& list) : m_parameter(parameter), m_list(list) {}

    void collect() {
        if (m_parameter.isLocked())
            add(QStringLiteral("the locked flag is not written"));
        if (dynamic_cast<const ParameterSet*>(&m_parameter)) {
            if (m_parameter.isHidden() || m_parameter.masterParameter())
                add(QStringLiteral("the hidden flag and the master of a compound are not written"));
            return;
        }
        collectData();
    }

private:
    void collectData() {
        const std::vector<View> views = m_parameter.viewList();
        for (const View view : views)
            collectView(view);
        if (m_parameter.extrapolationBefore() > Extrapolation::Custom0 ||
            m_parameter.extrapolationAfter() > Extrapolation::Custom0)
            add(QStringLiteral("a custom extrapolation other than the first becomes Constant"));
    }
    void add(const QString& loss) { m_list.append(QStringLiteral("%1: %2").arg(m_parameter.extendedName(), loss)); }
    void add(const QString& loss, const View& view, int count) {
        if (count > 0)
            add(QStringLiteral("view %1: %2 (%3)").arg(view.id()).arg(loss).arg(count));
    }
    void collectView(const View& view) {
        int moved = 0;
        int merged = 0;
        int customKinds = 0;
        int shapes = 0;
        Time former;
        const unsigned int count = m_parameter.keyframeCount(view);
        for (unsigned int i = 0; i < count; ++i) {
            const Time time = m_parameter.keyframeTime(i, view).time;
            const Time saved = writtenTime(time);
            moved += saved != time ? 1 : 0;
            merged += i > 0 && saved == former ? 1 : 0;
            former = saved;
            const IType data = m_parameter.interpolationData(KeyframeIndex(&m_parameter, view, i));
            customKinds += data.interpolation > Interpolation::Custom0 ? 1 : 0;
            shapes += data.interpolation != Interpolation::Bezier && data != IType(data.interpolation) ? 1 : 0;
        }
        add(QStringLiteral("keyframe times will move"), view, moved);
        add(QStringLiteral("keyframes will merge with the one before them"), view, merged);
        add(QStringLiteral("custom interpolations other than the first become Constant"), view, customKinds);
        add(QStringLiteral("shape numbers of kinds other than Bezier are not written"), view, shapes);
        const bool isRead = isReadIn(view) && (m_parameter.splittable() || view == View(View::defaultViewId()));
        add(QStringLiteral("lines that name the view are not read"), view, isRead ? 0 : 1);
        collectTexts(view, count);
    }
    /// The last valid id of a view is too large for its own prefix.
    static bool isReadIn(const View& view) {
        QString prefix = view.toString();
        View read;
        return View::extractStringPrefix(prefix, read);
    }
    void collectTexts(const View& view, unsigned int count) {
        const auto* const parameter = dynamic_cast<const Parameter<QString>*>(&m_parameter);
        if (!parameter)
            return;
        int changed = isChangedByUtf8(parameter->staticValue(view)) ? 1 : 0;
        for (unsigned int i = 0; i < count; ++i)
            changed += isChangedByUtf8(parameter->keyframe(i, view).value) ? 1 : 0;
        add(QStringLiteral("texts hold half a surrogate pair"), view, changed);
    }

    const ParameterWithoutType& m_parameter;
    QStringList& m_list;
};

using Names = QMap<QString, int>;

/// Whether the lines of a name may be taken by a member with the part before one of its dots as name.
bool beginsWithAnother(const QString& name, const Names& names) {
    int dot = name.indexOf(QLatin1Char('.'));
    while (dot >= 0 && !names.contains(name.left(dot)))
        dot = name.indexOf(QLatin1Char('.'), dot + 1);
    return dot >= 0;
}

QStringList lossesOfName(const QString& name, const Names& names) {
    QStringList losses;
    if (name.isEmpty())
        losses.append(QStringLiteral("is empty"));
    if (name.contains(QLatin1Char('=')))
        losses.append(QStringLiteral("holds \"=\""));
    if (const QString loss = lossOfRawText(name); !loss.isEmpty())
        losses.append(loss);
    if (names.value(name) > 1)
        losses.append(QStringLiteral("is used %1 times").arg(names.value(name)));
    if (beginsWithAnother(name, names))
        losses.append(QStringLiteral("begins with the name of another member and a dot"));
    return losses;
}

/// The parts of a compound without a name are written like members of the set around it.
bool isSpreadOut(const ParameterWithoutType& parameter) {
    return parameter.scriptName().isEmpty() && dynamic_cast<const ParameterSet*>(&parameter);
}

void countParameters(const ParameterSet& set, Names& names) {
    for (const auto& parameter : set.parameters()) {
        if (isSpreadOut(*parameter))
            countParameters(dynamic_cast<const ParameterSet&>(*parameter), names);
        else
            ++names[parameter->scriptName()];
    }
}

void collectNames(const ParameterSet& set, QStringList& losses) {
    Names names;
    countParameters(set, names);
    for (const BasicParameter* parameter : set.basicParameters())
        ++names[parameter->scriptName()];
    for (const ParameterSet* subset : set.subsets())
        ++names[subset->scriptName()];
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        const QStringList found = lossesOfName(name.key(), names);
        for (const QString& loss : found)
            losses.append(
                QStringLiteral("the script name \"%1\" in the set \"%2\" %3").arg(name.key(), set.scriptName(), loss));
    }
}

void collectSet(const ParameterSet& set, QStringList& losses) {
    collectNames(set, losses);
    for (const BasicParameter* parameter : set.basicParameters()) {
        const auto* const moved = dynamic_cast<const MovedParameter*>(parameter);
        if (moved && moved->isWaiting())
            losses.append(
                QStringLiteral("%1: a line was read, but there is no parameter for it").arg(moved->scriptName()));
        const auto* const text = dynamic_cast<const StaticParameter<QString>*>(parameter);
        if (!text)
            continue;
        const QString loss = lossOfRawText(text->value());
        if (!loss.isEmpty())
            losses.append(QStringLiteral("%1: the text %2").arg(text->scriptName(), loss));
    }
    const QString loss = lossOfRawText(set.name());
    if (!loss.isEmpty())
        losses.append(QStringLiteral("the name of the set \"%1\" %2").arg(set.scriptName(), loss));
}

void collectCompound(const ParameterWithoutType& parameter, const ParameterSet& compound, QStringList& losses) {
    if (!isSpreadOut(parameter))
        collectNames(compound, losses);
    if (!compound.basicParameters().empty() || !compound.subsets().empty())
        losses.append(QStringLiteral("%1: the static parameters and the subsets of a compound are not written")
                          .arg(parameter.extendedName()));
}

/// A parameter with a master returns what the master has; a snapshot has its own data only.
void collectOwn(const ParameterWithoutType& parameter, QStringList& losses) {
    const boost::shared_ptr<Bsc::MementoBase> snapshot =
        parameter.masterParameter() ? parameter.exportState() : nullptr;
    const auto* const own = dynamic_cast<const detail::WholeSnapshot*>(snapshot.get());
    Losses(own ? own->parameter() : parameter, losses).collect();
}

} // namespace

QStringList ProjectFile::saveLosses() const {
    m_root.assignNamePrefixes();
    QStringList losses = m_readingLosses;
    collectSet(m_root, losses);
    m_root.forEachSubset([&](ParameterSet* set) { collectSet(*set, losses); }, true);
    // Masters are found again by their names.
    QHash<QString, const ParameterWithoutType*> byName;
    m_root.forEachParameterAndPart(
        [&](const ParameterWithoutType* parameter) { byName.insert(parameter->extendedName(), parameter); });
    m_root.forEachParameterAndPart([&](const ParameterWithoutType* parameter) {
        collectOwn(*parameter, losses);
        const auto* const compound = dynamic_cast<const ParameterSet*>(parameter);
        if (compound)
            collectCompound(*parameter, *compound, losses);
        const ParameterWithoutType* const master = compound ? nullptr : parameter->masterParameter();
        if (master && !m_findMaster && byName.value(master->extendedName()) != master)
            losses.append(QStringLiteral("%1: the master \"%2\" will not be found by its name")
                              .arg(parameter->extendedName(), master->extendedName()));
    });
    return losses;
}

} // namespace Prm

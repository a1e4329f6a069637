// What project text cannot hold of the sets that are to be saved.

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/ProjectFile.h"
#include "prm/StaticParameter.h"

#include <QHash>

#include <algorithm>
#include <cmath>

namespace Prm {

namespace {

bool breaksLine(const QString& text) {
    return text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
}

double timeAfterSaving(Time time) {
    return static_cast<double>(QString::number(time.toDouble(), 'g', 6).toFloat());
}

/// Collects the losses of one parameter behind its path.
class Losses {
public:
    Losses(const ParameterWithoutType& parameter, QStringList& list) : m_parameter(parameter), m_list(list) {}

    void collect() {
        collectName();
        const std::vector<View> views = m_parameter.viewList();
        for (const View view : views)
            collectView(view);
        if (m_parameter.extrapolationBefore() > Extrapolation::Custom0 ||
            m_parameter.extrapolationAfter() > Extrapolation::Custom0)
            add(QStringLiteral("a custom extrapolation other than the first becomes Constant"));
        const bool isCompound = dynamic_cast<const ParameterSet*>(&m_parameter) != nullptr;
        if (isCompound && (m_parameter.isHidden() || m_parameter.masterParameter()))
            add(QStringLiteral("the hidden flag and the master of a compound are not written"));
    }

private:
    void add(const QString& loss) { m_list.append(QStringLiteral("%1: %2").arg(m_parameter.extendedName(), loss)); }
    void add(const QString& loss, const View& view, int count) {
        if (count > 0)
            add(QStringLiteral("view %1: %2 (%3)").arg(view.id()).arg(loss).arg(count));
    }
    void collectName() {
        const QString& name = m_parameter.scriptName();
        if (name.contains(QLatin1Char('=')))
            add(QStringLiteral("the script name holds \"=\""));
        if (breaksLine(name))
            add(QStringLiteral("the script name holds a line break"));
    }
    void collectView(const View& view) {
        int moved = 0;
        int merged = 0;
        int customKinds = 0;
        int shapes = 0;
        double former = -HUGE_VAL;
        const unsigned int count = m_parameter.keyframeCount(view);
        for (unsigned int i = 0; i < count; ++i) {
            const Time time = m_parameter.keyframeTime(i, view).time;
            const double saved = timeAfterSaving(time);
            moved += saved != time.toDouble() ? 1 : 0;
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
    }

    const ParameterWithoutType& m_parameter;
    QStringList& m_list;
};

void collectSet(const ParameterSet& set, QStringList& losses) {
    QHash<QString, int> names;
    for (const auto& parameter : set.parameters())
        ++names[parameter->scriptName()];
    for (const BasicParameter* parameter : set.basicParameters()) {
        ++names[parameter->scriptName()];
        const auto* const text = dynamic_cast<const StaticParameter<QString>*>(parameter);
        if (text && breaksLine(text->value()))
            losses.append(QStringLiteral("%1: the text holds a line break").arg(parameter->scriptName()));
    }
    for (const ParameterSet* subset : set.subsets())
        ++names[subset->scriptName()];
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        if (name.value() > 1)
            losses.append(QStringLiteral("the script name \"%1\" is used %2 times in the set \"%3\"")
                              .arg(name.key())
                              .arg(name.value())
                              .arg(set.scriptName()));
    }
    if (breaksLine(set.name()))
        losses.append(QStringLiteral("the name of the set \"%1\" holds a line break").arg(set.scriptName()));
}

} // namespace

QStringList ProjectFile::saveLosses() const {
    m_root.assignNamePrefixes();
    QStringList losses;
    collectSet(m_root, losses);
    m_root.forEachSubset([&](ParameterSet* set) { collectSet(*set, losses); }, true);
    m_root.forEachParameter([&](const ParameterWithoutType* parameter) { Losses(*parameter, losses).collect(); }, true);
    return losses;
}

} // namespace Prm

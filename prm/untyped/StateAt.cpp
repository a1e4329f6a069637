#include "prm/untyped/StateAt.h"

#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"

#include <QPointF>

#include <algorithm>

namespace Prm::detail {

namespace {

const ParameterWithoutType* animated(const BasicParameter& parameter) {
    return qobject_cast<const ParameterWithoutType*>(&parameter);
}

/// The static value of a parameter with keyframes, and the own value of one that shows its master's, cannot be asked
/// for. A view that is none writes the source data, and does not tell of their keyframes.
bool hidesItsStaticValue(const ParameterWithoutType& parameter, const Context& context) {
    const bool hasKeyframes =
        parameter.keyframeCount(context.view) > 0 || (!context.view.isValid() && parameter.isKeyframed());
    return parameter.masterParameter() || (hasKeyframes && !Frame(context).isValid());
}

} // namespace

Context writtenAt(const BasicParameter& parameter, const Context& context) {
    const ParameterWithoutType* const own = animated(parameter);
    const bool isApart = !own || own->splittable() || dynamic_cast<const ParameterSet*>(own);
    return isApart ? context : Context(context.time, View(View::defaultViewId()), context.flags);
}

std::vector<View> viewsWithData(const ParameterWithoutType& parameter) {
    const auto* const compound = dynamic_cast<const ParameterSet*>(&parameter);
    if (!compound)
        return parameter.viewList();
    std::vector<View> all;
    for (const auto& part : compound->parameters()) {
        const std::vector<View> views = viewsWithData(*part);
        all.insert(all.end(), views.begin(), views.end());
        all.push_back(View::INVALID());
    }
    return all;
}

bool sameVariants(const QVariant& a, const QVariant& b) {
    if (a.userType() != b.userType())
        return false;
    switch (a.userType()) {
    case QMetaType::Double:
        return a.toDouble() == b.toDouble();
    case QMetaType::QPointF:
        return a.toPointF().x() == b.toPointF().x() && a.toPointF().y() == b.toPointF().y();
    default:
        break;
    }
    if (a.userType() != qMetaTypeId<QVector<QVariant>>())
        return a == b;
    const auto left = a.value<QVector<QVariant>>();
    const auto right = b.value<QVector<QVariant>>();
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), sameVariants);
}

bool sameKeyframes(const SerialisedKeyframe* a, const SerialisedKeyframe* b) {
    return a && b ? a->equals(*b) : !a && !b;
}

StateAt::StateAt(const BasicParameter& parameter, const Context& context) : m_context(writtenAt(parameter, context)) {
    if (const auto* const compound = dynamic_cast<const ParameterSet*>(&parameter)) {
        for (const auto& part : compound->parameters())
            m_parts.emplace_back(*part, context);
        return;
    }
    m_value = parameter.variantValue(m_context, std::nothrow);
    const ParameterWithoutType* const own = animated(parameter);
    if (!own)
        return;
    m_views = viewsWithData(*own);
    if (context.time.isValid())
        m_keyframe = own->getSerialisedKeyframe(m_context);
}

bool StateAt::hasChanged(const BasicParameter& parameter) const {
    if (const auto* const compound = dynamic_cast<const ParameterSet*>(&parameter)) {
        const auto& parts = compound->parameters();
        return !std::equal(m_parts.begin(), m_parts.end(), parts.begin(), parts.end(),
                           [](const StateAt& former, const auto& part) { return !former.hasChanged(*part); });
    }
    const StateAt now(parameter, m_context);
    if (now.m_views != m_views || !sameKeyframes(now.m_keyframe.get(), m_keyframe.get()))
        return true;
    if (now.m_keyframe)
        return false;
    const ParameterWithoutType* const own = animated(parameter);
    return (own && hidesItsStaticValue(*own, m_context)) || !sameVariants(now.m_value, m_value);
}

} // namespace Prm::detail

// Where values differ after a change, and between two parameters.

#include "host/bsc/MementoBase.h"
#include "prm/CompoundParameter.h"
#include "prm/Extent.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/set/ShownState.h"
#include "prm/untyped/PartialState.h"

#include <QVarLengthArray>

#include <typeinfo>

namespace Prm {

namespace detail {

/// Follows a change from the parameter that emitted it to all that show it.
class ReachOfChange {
public:
    explicit ReachOfChange(const ParameterChange& change) {
        if (!change.parameter || !ParameterChange::concernsValues(change.type))
            return;
        // The positions of keyframes that it names may be others now.
        const bool isLate = change.m_number != 0 && change.m_number != change.parameter->m_changes;
        addFrom(*change.parameter, isLate ? recordOf(ParameterChange::PARAMETER_ASSIGNED, *change.parameter) : change);
    }

    Extent extent() && { return std::move(m_extent); }

private:
    static ParameterChange recordOf(ParameterChange::ChangeType type, const ParameterWithoutType& parameter,
                                    unsigned int index = 0, const Context& at = {}) {
        ParameterChange change;
        change.parameter = const_cast<ParameterWithoutType*>(&parameter);
        change.type = type;
        change.affectedIndex = index;
        change.context = at;
        return change;
    }

    void addFrom(const ParameterWithoutType& parameter, const ParameterChange& change) {
        if (const Differences* const type = ShownState::typeOf(parameter))
            return add(parameter, type, type->reachOf(parameter, change));
        const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter);
        if (!compound || change.type == ParameterChange::PARAMETER_DELETED)
            return add(parameter, nullptr, everywhere());
        for (const auto& part : compound->parameters())
            addFrom(*part, ofPart(*compound, *part, change));
    }

    /// What a change of a compound means for one of its parts. It names a keyframe by its place among those of all.
    static ParameterChange ofPart(const CompoundParameter& compound, const ParameterWithoutType& part,
                                  const ParameterChange& change) {
        const bool isAdded = change.type == ParameterChange::KEYFRAME_ADDED;
        if (change.type == ParameterChange::KEYFRAME_REMOVED)
            return recordOf(change.type, part, 0, writtenAt(part, change.context));
        if (change.type == ParameterChange::VALUE_CHANGED)
            return recordOf(change.type, part, 0, change.context);
        if (!isAdded && change.type != ParameterChange::KEYFRAME_CHANGED_VALUE)
            return recordOf(ParameterChange::PARAMETER_ASSIGNED, part);
        const View view = change.context.view;
        if (change.affectedIndex >= compound.keyframeCount(view))
            return recordOf(ParameterChange::VALUE_CHANGED, part, 0, change.context);
        const Context at = writtenAt(part, compound.keyframeTime(change.affectedIndex, view));
        unsigned int index = 0;
        if (!part.bKeyframeAt(Context::Explicit(at)) || !part.bNearestKeyframeIndex(at, index))
            return recordOf(ParameterChange::COMMAND_REGISTERED, part);
        return recordOf(change.type, part, index, Context(Time(), at.view));
    }

    struct Step {
        const ParameterWithoutType* parameter;
        const Differences* type;
        bool isEverywhere;
    };
    using Steps = QVarLengthArray<Step, 4>;

    /// In a loop, because chains of masters may be long.
    void add(const ParameterWithoutType& parameter, const Differences* type, const Reach& reach) {
        Steps left;
        left.append({&parameter, type, false});
        while (!left.isEmpty()) {
            const Step step = left.last();
            left.removeLast();
            const bool isLarger =
                step.isEverywhere ? m_extent.add(step.parameter, everywhere()) : m_extent.add(step.parameter, reach);
            if (!isLarger)
                continue;
            if (step.type)
                addConstrained(step, left);
            addCompounds(step, left);
        }
    }
    static void addConstrained(const Step& step, Steps& left) {
        for (const ParameterWithoutType* const constrained : step.parameter->constrainedParameters()) {
            const Differences* const other = ShownState::typeOf(*constrained);
            if (other && other->valueType() == step.type->valueType())
                left.append({constrained, other, step.isEverywhere || other->asksHooks(*constrained)});
        }
    }
    static void addCompounds(const Step& step, Steps& left) {
        for (const Listing& listing : step.parameter->m_listedIn) {
            const ParameterSet& set = *listing.set;
            // Most are no compounds, and a cast takes longer.
            const auto* const compound =
                typeid(set) == typeid(ParameterSet) ? nullptr : dynamic_cast<const CompoundParameter*>(&set);
            if (compound)
                left.append({compound, nullptr, step.isEverywhere});
        }
    }

    Extent m_extent;
};

} // namespace detail

Extent extentOf(const ParameterChange& change) {
    return detail::ReachOfChange(change).extent();
}

Extent differenceOf(const ParameterWithoutType& before, const ParameterWithoutType& after) {
    const auto* const former = dynamic_cast<const CompoundParameter*>(&before);
    const auto* const now = dynamic_cast<const CompoundParameter*>(&after);
    Extent extent;
    if (!former || !now) {
        extent.add(&after, detail::ShownState(before).differenceTo(detail::ShownState(after)));
    } else if (former->parameters().size() != now->parameters().size()) {
        extent.add(&after, detail::everywhere());
    } else {
        for (std::size_t i = 0; i < now->parameters().size(); ++i) {
            const ParameterWithoutType& part = *now->parameters()[i];
            extent |= differenceOf(*former->parameters()[i], part);
            if (const detail::Reach* const reach = extent.reachOf(&part))
                extent.add(&after, *reach);
        }
    }
    return extent;
}

Extent differenceOf(const Bsc::MementoBase& before, const ParameterWithoutType& after) {
    Extent extent;
    const auto* const whole = dynamic_cast<const detail::WholeSnapshot*>(&before);
    const detail::Differences* const type = detail::ShownState::typeOf(after);
    const detail::Differences* const formerType = whole ? detail::ShownState::typeOf(whole->parameter()) : nullptr;
    if (!type || !formerType || type->valueType() != formerType->valueType() || type->asksHooks(after)) {
        extent.add(&after, detail::everywhere());
        return extent;
    }
    const auto former = type->snapshot(whole->parameter());
    const auto now = type->snapshot(after);
    former->takeDefaultFrom(*now);
    extent.add(&after, former->differenceTo(*now));
    return extent;
}

} // namespace Prm

// Where values differ after a change, and between two parameters.

#include "host/bsc/MementoBase.h"
#include "prm/CompoundParameter.h"
#include "prm/Extent.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/set/ShownState.h"
#include "prm/untyped/PartialState.h"

#include <QVarLengthArray>

#include <optional>
#include <typeinfo>

namespace Prm {

namespace detail {

/// Follows a change from the parameter that emitted it to all that show it.
class ReachOfChange {
public:
    explicit ReachOfChange(Extent& extent) : m_extent(extent) {}

    void add(const ParameterChange& change) {
        if (!change.parameter || !ParameterChange::concernsValues(change.type))
            return;
        // The positions of keyframes that it names may be others now.
        const bool isLate = change.m_number != 0 && change.m_number != change.parameter->m_changes;
        if (isLate)
            addFrom(*change.parameter, recordOf(ParameterChange::PARAMETER_ASSIGNED, *change.parameter));
        else
            addFrom(*change.parameter, change);
    }

private:
    static ParameterChange recordOf(ParameterChange::ChangeType type, ParameterWithoutType& parameter,
                                    unsigned int index = 0, const Context& at = {}) {
        ParameterChange change;
        change.parameter = &parameter;
        change.type = type;
        change.affectedIndex = index;
        change.context = at;
        return change;
    }

    void addFrom(const ParameterWithoutType& parameter, const ParameterChange& change) {
        if (const Differences* const type = ShownState::typeOf(parameter)) {
            // Undo ties or frees the parameter first.
            const bool isKnown = change.m_difference && !parameter.masterParameter() &&
                                 parameter.extraData().tied + 1 != change.m_number && !type->asksHooks(parameter);
            return add(parameter, type, isKnown ? change.m_difference->reach() : type->reachOf(parameter, change));
        }
        const auto* const compound = dynamic_cast<const CompoundParameter*>(&parameter);
        if (!compound || change.type == ParameterChange::PARAMETER_DELETED)
            return add(parameter, nullptr, everywhere());
        for (const auto& part : compound->parameters()) {
            if (const auto own = ofPart(*compound, *part, change))
                addFrom(*part, *own);
        }
    }

    /// What a change of a compound means for one of its parts: none for a part without a keyframe there. It names a
    /// keyframe by its place among those of all.
    static std::optional<ParameterChange> ofPart(const CompoundParameter& compound, ParameterWithoutType& part,
                                                 const ParameterChange& change) {
        const bool isAdded = change.type == ParameterChange::KEYFRAME_ADDED;
        if (change.type == ParameterChange::KEYFRAME_REMOVED)
            return recordOf(change.type, part, 0, writtenAt(part, change.context));
        if (change.type == ParameterChange::VALUE_CHANGED)
            return recordOf(change.type, part, 0, change.context);
        if (!isAdded && change.type != ParameterChange::KEYFRAME_CHANGED_VALUE)
            return recordOf(ParameterChange::PARAMETER_ASSIGNED, part);
        const View view = change.context.view;
        if (change.affectedIndex == KeyframeIndex::INVALID_INDEX)
            return recordOf(change.type, part, KeyframeIndex::INVALID_INDEX, change.context);
        if (change.affectedIndex >= compound.keyframeCount(view))
            return recordOf(ParameterChange::VALUE_CHANGED, part, 0, change.context);
        const Context at = writtenAt(part, compound.keyframeTime(change.affectedIndex, view));
        unsigned int index = 0;
        if (!part.bKeyframeAt(Context::Explicit(at)) || !part.bNearestKeyframeIndex(at, index))
            return {};
        return recordOf(change.type, part, index, Context(Time(), at.view));
    }

    /// One that shows what another parameter shows, or a part of it.
    struct Follower {
        const ParameterWithoutType* parameter;
        const Differences* type;
        bool isEverywhere;
    };
    using Followers = QVarLengthArray<Follower, 4>;

    /// In a loop, because chains of masters may be long. Followers get all that was ever added for the parameter: they
    /// got the rest before.
    void add(const ParameterWithoutType& parameter, const Differences* type, Reach&& reach) {
        if (!m_extent.add(&parameter, std::move(reach)))
            return;
        Followers left;
        addFollowers({&parameter, type, false}, left);
        while (!left.isEmpty()) {
            const Follower one = left.last();
            left.removeLast();
            if (m_extent.add(one.parameter, one.isEverywhere ? everywhere() : Reach(*m_extent.reachOf(&parameter))))
                addFollowers(one, left);
        }
    }
    static void addFollowers(const Follower& one, Followers& left) {
        if (one.type)
            addConstrained(one, left);
        addCompounds(one, left);
    }
    static void addConstrained(const Follower& one, Followers& left) {
        for (const ParameterWithoutType* next = one.parameter->extraData().firstConstrained; next;
             next = next->nextConstrained()) {
            const Differences* const other = ShownState::typeOf(*next);
            if (other && other->valueType() == one.type->valueType())
                left.append({next, other, one.isEverywhere || other->asksHooks(*next)});
        }
    }
    static void addCompounds(const Follower& one, Followers& left) {
        for (const Listing& listing : one.parameter->m_listedIn) {
            const ParameterSet& set = *listing.set;
            // Most are no compounds, and a cast takes longer.
            const auto* const compound =
                typeid(set) == typeid(ParameterSet) ? nullptr : dynamic_cast<const CompoundParameter*>(&set);
            if (compound)
                left.append({compound, nullptr, one.isEverywhere});
        }
    }

    Extent& m_extent;
};

} // namespace detail

Extent extentOf(const ParameterChange& change) {
    Extent extent;
    detail::ReachOfChange(extent).add(change);
    return extent;
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
                extent.add(&after, detail::Reach(*reach));
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

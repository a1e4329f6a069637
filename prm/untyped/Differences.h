#pragma once

#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"
#include "prm/track/ViewRanges.h"

#include <memory>
#include <typeinfo>

namespace Prm::detail {

/// All that a parameter's own values are made of, at one moment. Shares keyframes with the parameter until those
/// change.
class PRM_EXPORT TracksSnapshot {
public:
    virtual ~TracksSnapshot();

    /// Whether the parameter, from which it was taken, has certainly not changed since. Compares no keyframes: a list
    /// that is shared has not changed.
    virtual bool isOf(const ParameterWithoutType& parameter) const = 0;
    /// Where values differ: everywhere for another type of values.
    virtual Reach differenceTo(const TracksSnapshot& now) const = 0;
    virtual bool hasCustomKinds() const = 0;
    /// For snapshots for undo, which do not hold the default value.
    virtual void takeDefaultFrom(const TracksSnapshot& other) = 0;
};

/// Where values differ after an assignment. Made before it, and asked, if at all, while the change is emitted.
class PRM_EXPORT AssignedDifference {
public:
    virtual Reach reach() const = 0;

protected:
    ~AssignedDifference() = default;
};

/// What has to be known of the type of a parameter's values: one object for each type.
class PRM_EXPORT Differences {
public:
    virtual const std::type_info& valueType() const = 0;
    /// Whether hooks of a host's class compute the values.
    virtual bool asksHooks(const ParameterWithoutType& parameter) const = 0;
    /// Where the parameter's values may differ from those before a change that it has just emitted.
    virtual Reach reachOf(const ParameterWithoutType& parameter, const ParameterChange& change) const = 0;
    virtual std::unique_ptr<TracksSnapshot> snapshot(const ParameterWithoutType& parameter) const = 0;

protected:
    ~Differences() = default;
};

} // namespace Prm::detail

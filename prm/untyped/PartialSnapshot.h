#pragma once

#include "host/bsc/MementoBase.h"
#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"

#include <boost/shared_ptr.hpp>

namespace Prm::detail {

/// A snapshot of a part of a parameter's state; putting it back leaves the rest alone.
class PRM_EXPORT PartialSnapshot : public Bsc::MementoBase {
public:
    /// A snapshot of the same part as it is now.
    virtual boost::shared_ptr<Bsc::MementoBase> present(const BasicParameter& parameter) const = 0;
};

/// A snapshot of a whole parameter, as a parameter without a master.
class PRM_EXPORT WholeSnapshot : public Bsc::MementoBase {
public:
    virtual const ParameterWithoutType& parameter() const = 0;
};

/// What the snapshot would put back, as it is now.
inline boost::shared_ptr<Bsc::MementoBase> presentLike(const Bsc::MementoBase& snapshot,
                                                       const BasicParameter& parameter) {
    const auto* const partial = dynamic_cast<const PartialSnapshot*>(&snapshot);
    return partial ? partial->present(parameter) : parameter.exportState();
}

} // namespace Prm::detail

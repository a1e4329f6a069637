#pragma once

#include "host/bsc/MementoBase.h"
#include "prm/Export.h"
#include "prm/ParameterWithoutType.h"

#include <boost/shared_ptr.hpp>

namespace Prm::detail {

/// A memento of what an edit concerns in one parameter. Putting it back leaves the rest alone.
class PRM_EXPORT PartialState : public Bsc::MementoBase {
public:
    /// Whether the parameter holds exactly the same.
    virtual bool equals(const BasicParameter& parameter) const = 0;
    /// The present state of what this one would change when it is put back.
    virtual boost::shared_ptr<Bsc::MementoBase> present(const BasicParameter& parameter) const = 0;
};

/// A snapshot of a whole parameter, as a parameter without a master.
class PRM_EXPORT WholeSnapshot : public Bsc::MementoBase {
public:
    virtual const ParameterWithoutType& parameter() const = 0;
};

/// Exactly the same, also where the comparison of variants is fuzzy.
PRM_EXPORT bool sameVariants(const QVariant& a, const QVariant& b);

// The same of any memento; one of a host's own class is of the whole parameter, and never known to be equal.
PRM_EXPORT bool equalsState(const Bsc::MementoBase& memento, const BasicParameter& parameter);
PRM_EXPORT boost::shared_ptr<Bsc::MementoBase> presentState(const Bsc::MementoBase& memento,
                                                            const BasicParameter& parameter);

} // namespace Prm::detail

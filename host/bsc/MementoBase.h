#pragma once

#include "host/Export.h"

namespace Bsc {

/// A snapshot of an object's state. What it holds is known only to the kind of object that exported it. Snapshots are
/// owned through `boost::shared_ptr` and never change once made.
///
/// \snippet host_services.cpp snapshot
/// \threads Made, put back and released on the thread of the object that exported it.
class PRM_HOST_EXPORT MementoBase {
public:
    MementoBase() = default;
    MementoBase(const MementoBase&) = default;
    MementoBase& operator=(const MementoBase&) = default;
    virtual ~MementoBase();
};

} // namespace Bsc

#pragma once

#include "prm/ParameterEdits.h"
#include "python/src/Convert.h"

namespace PrmPython {

/// Of the keyframes from `start` to `end`, which may be infinite.
inline Prm::Retiming retimingOf(double scale, double pivot, double shift, double start, double end) {
    Prm::Retiming retiming = Prm::Retiming::scaled(scale, timeOf(pivot));
    retiming.shift = shift;
    if (start > -infinity || end < infinity)
        retiming = retiming.between(start > -infinity ? timeOf(start) : retiming.first,
                                    end < infinity ? timeOf(end) : retiming.last);
    return retiming;
}

} // namespace PrmPython

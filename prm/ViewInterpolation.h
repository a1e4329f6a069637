#pragma once

#include "prm/Export.h"

#include <QtGlobal>

namespace Prm {

/// What a keyframed, splittable parameter shows in a view between those that have data of their own. Views are weighted
/// by their ids; outside the range of the views with data the nearest one counts.
///
/// \snippet in_between_camera.cpp between
/// \threads A plain value.
struct MVInterpolationParams {
    enum Mode : quint32 {
        Off,     ///< the source data
        Nearest, ///< the nearest view with data, the lower id of two equally near
        Linear,  ///< between the two neighbouring views with data
        Smooth   ///< a parabola through the three nearest views with data; between two as `Linear`
    };
    Mode mode = Off;
};

} // namespace Prm

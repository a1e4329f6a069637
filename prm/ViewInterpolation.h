#pragma once

#include "prm/Export.h"

#include <QtGlobal>

namespace Prm {

/// How the value of a keyframed, splittable parameter is computed in a view without data. Views with data are weighted
/// by the distance of their ids; outside their range the nearest one is used.
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

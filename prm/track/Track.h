#pragma once

#include "prm/Interpolation.h"
#include "prm/KeyframeData.h"

#include <QVector>

namespace Prm::detail {

/// The keyframes of one view, in ascending order of time, and the value if there are none.
template <class T> struct Track {
    T staticValue{};
    QVector<KeyframeData<T>> keyframes;
};

/// How values continue outside the keyframes.
struct Outside {
    Extrapolation before = Extrapolation::Constant;
    Extrapolation after = Extrapolation::Constant;
};

} // namespace Prm::detail

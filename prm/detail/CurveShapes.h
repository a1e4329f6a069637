#pragma once

#include "prm/CurveKinds.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeData.h"
#include "prm/ValueType.h"

#include <array>

namespace Prm::detail {

/// The part of a segment's change that is reached at part x, in [0,1], of its time. A custom kind that nobody
/// registered is a straight line.
PRM_EXPORT double segmentProgress(const IType& shape, double x);

/// dy/dx where a segment begins or ends, for straight lines that continue it: 0 where it holds or is vertical.
PRM_EXPORT double startSlope(const IType& shape);
PRM_EXPORT double endSlope(const IType& shape);

/// The time inside the range that a custom kind shows; false when nobody registered the kind.
PRM_EXPORT bool mapIntoRange(Extrapolation kind, Time time, Time first, Time last, Time& inside);

/// from + (to - from) * part, without overflow on the way.
PRM_EXPORT double mix(double from, double to, double part);

/// `edge` continued by a straight line: the change from a to b in `duration` frames, times `slope`, over `distance`
/// frames. Holds where the line is not finite.
PRM_EXPORT double continued(double edge, double a, double b, double duration, double slope, double distance);

/// Whether a segment keeps the value that it starts with. The unnamed kind 0 does, as the name that is written for it.
inline bool holds(const IType& shape) {
    return shape.interpolation <= Interpolation::Constant;
}

/// The value of the segment between two keyframes. Outside the segment, or where its duration is not positive, the
/// nearer keyframe's.
template <class T> T segmentValue(const KeyframeData<T>& from, const KeyframeData<T>& to, Time time) {
    const double duration = to.time - from.time;
    const IType& shape = from.interpolationData;
    if (holds(shape))
        return from.value;
    if (!(duration > 0.0))
        return time > from.time ? to.value : from.value;
    const double x = (time - from.time) / duration;
    if (!(x > 0.0))
        return from.value;
    if (x >= 1.0)
        return to.value;
    const double part = segmentProgress(shape, x);
    std::array<double, ValueType<T>::componentCount> mixed{};
    for (int i = 0; i < ValueType<T>::componentCount; ++i)
        mixed[static_cast<std::size_t>(i)] =
            mix(ValueType<T>::component(from.value, i), ValueType<T>::component(to.value, i), part);
    return ValueType<T>::fromComponents(mixed.data());
}

/// The value of one end of a segment continued in a straight line, `distance` frames along the timeline from that end.
template <class T>
T continuedValue(const T& edge, const KeyframeData<T>& from, const KeyframeData<T>& to, double slope, double distance) {
    const double duration = to.time - from.time;
    std::array<double, ValueType<T>::componentCount> line{};
    for (int i = 0; i < ValueType<T>::componentCount; ++i)
        line[static_cast<std::size_t>(i)] =
            continued(ValueType<T>::component(edge, i), ValueType<T>::component(from.value, i),
                      ValueType<T>::component(to.value, i), duration, slope, distance);
    return ValueType<T>::fromComponents(line.data());
}

} // namespace Prm::detail

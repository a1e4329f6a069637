#pragma once

#include "prm/CurveKinds.h"
#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeData.h"
#include "prm/ValueType.h"

#include <array>
#include <cmath>
#include <type_traits>

namespace Prm::detail {

PRM_EXPORT double curvedProgress(const IType& shape, double x);

/// The fraction of a segment's change that is reached at fraction x, in [0,1], of its time. A custom kind that is not
/// registered is a straight line.
inline double segmentProgress(const IType& shape, double x) {
    return shape.interpolation == Interpolation::Linear ? x : curvedProgress(shape, x);
}

/// Counts the functions of custom kinds that were set and removed.
PRM_EXPORT quint64 kindRegistrations();
/// Whether a host has registered a function for the kind.
PRM_EXPORT bool isRegistered(Interpolation kind);
PRM_EXPORT bool isRegistered(Extrapolation kind);

/// dy/dx where a segment begins or ends, for straight lines that continue it: 0 where it holds or is vertical.
PRM_EXPORT double startSlope(const IType& shape);
PRM_EXPORT double endSlope(const IType& shape);

/// The time inside the range that a custom kind shows; false if the kind is not registered.
PRM_EXPORT bool mapIntoRange(Extrapolation kind, Time time, Time first, Time last, Time& inside);

PRM_EXPORT double mixFar(double from, double to, double part);

/// from + (to - from) * part, without overflow on the way.
inline double mix(double from, double to, double part) {
    const double change = to - from;
    return std::isfinite(change) ? from + change * part : mixFar(from, to, part);
}

/// `edge` continued by a straight line: the change from a to b in `duration` frames, times `slope`, over `distance`
/// frames. Holds where the line is not finite.
PRM_EXPORT double continued(double edge, double a, double b, double duration, double slope, double distance);

/// The shape of a segment that becomes of a kind: the present one where it is of this kind and has one, else the kind's
/// own, slow at both ends for Bezier.
PRM_ALWAYS_INLINE IType initialShape(const IType& present, Interpolation kind) {
    if (kind < Interpolation::Bezier)
        return {kind};
    const bool shaped = present.interpolation == kind && present != IType(kind);
    if (shaped)
        return present;
    if (kind == Interpolation::Bezier)
        return {kind, 1.0 / 3.0, 0.0, 2.0 / 3.0, 1.0};
    return {kind};
}

/// Whether a segment keeps the value that it starts with. The unnamed kind 0 does, as the name that is written for it.
inline bool holds(const IType& shape) {
    return shape.interpolation <= Interpolation::Constant;
}

/// Whether a host's function says how a segment runs.
inline bool isCustom(const IType& shape) {
    return shape.interpolation >= Interpolation::Custom0;
}

template <class T> PRM_ALWAYS_INLINE T blended(const T& from, const T& to, double part) {
    std::array<double, ValueType<T>::componentCount> mixed{};
    for (int i = 0; i < ValueType<T>::componentCount; ++i)
        mixed[static_cast<std::size_t>(i)] =
            mix(ValueType<T>::component(from, i), ValueType<T>::component(to, i), part);
    return ValueType<T>::fromComponents(mixed.data());
}

/// How far a value is between two keyframes: the fractions of the segment's time and of its change. From 1 of the time
/// on, it is the value of the second keyframe; at 0, that of the first.
struct SegmentPart {
    double time = 0.0;
    double change = 0.0;
};

/// The value of the segment between two keyframes. Outside the segment, or where its duration is not positive, the
/// nearer keyframe's. `part`, unless null, is empty at the call.
template <class T>
PRM_ALWAYS_INLINE T segmentValue(const KeyframeData<T>& from, const KeyframeData<T>& to, Time time,
                                 SegmentPart* part = nullptr) {
    const double duration = to.time - from.time;
    const IType& shape = from.interpolationData;
    if (holds(shape))
        return from.value;
    const double x = duration > 0.0 ? (time - from.time) / duration : time > from.time ? 1.0 : 0.0;
    if (!(x > 0.0))
        return from.value;
    if (x >= 1.0) {
        if (part)
            *part = {1.0, 1.0};
        return to.value;
    }
    const double progress = segmentProgress(shape, x);
    if (part)
        *part = {x, progress};
    return blended(from.value, to.value, progress);
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

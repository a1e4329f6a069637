#pragma once

#include "prm/Context.h"
#include "prm/Interpolation.h"
#include "prm/Time.h"

#include <QTypeInfo>

namespace Prm {

/// One keyframe: its time, its value, and how the segment from here to the next keyframe is filled.
///
/// \snippet parameter_panel.cpp keyframe
/// \threads A plain value, as far as T is one.
template <class T> struct KeyframeData {
    KeyframeData() = default;
    KeyframeData(Time at, const T& withValue, const IType& data = {})
        : time(at), value(withValue), interpolationData(data) {}

    Time time;
    T value{};
    IType interpolationData;
};

/// The keyframes around a time. A side without a keyframe has no parameter, the invalid view and index 0; where a
/// keyframe lies exactly at the time, both sides name it.
///
/// \snippet custom_easing.cpp hook
/// \threads A plain value, good for the evaluation that made it.
struct BoundingKeyframes {
    KeyframeIndex before;
    KeyframeIndex after;
};

} // namespace Prm

template <class T>
class QTypeInfo<Prm::KeyframeData<T>> : public QTypeInfoMerger<Prm::KeyframeData<T>, Prm::Time, T, Prm::IType> {};

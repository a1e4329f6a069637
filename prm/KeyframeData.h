#pragma once

#include "prm/Context.h"
#include "prm/Interpolation.h"
#include "prm/Time.h"

#include <QTypeInfo>

namespace Prm {

/// One keyframe: its time, its value, and the interpolation of the segment from it to the next keyframe.
///
/// \snippet parameter_panel.cpp keyframe
/// \threads A plain value if T is one.
template <class T> struct KeyframeData {
    KeyframeData() = default;
    KeyframeData(Time at, const T& withValue, const IType& data = {})
        : time(at), value(withValue), interpolationData(data) {}

    Time time;
    T value{};
    IType interpolationData;
};

/// The keyframes before and after a time. A side without a keyframe has no parameter, the invalid view and index 0. If
/// a keyframe lies exactly at the time, both sides name it.
///
/// \snippet custom_easing.cpp hook
/// \threads A plain value, valid during the evaluation that created it.
struct BoundingKeyframes {
    KeyframeIndex before;
    KeyframeIndex after;
};

} // namespace Prm

template <class T>
class QTypeInfo<Prm::KeyframeData<T>> : public QTypeInfoMerger<Prm::KeyframeData<T>, Prm::Time, T, Prm::IType> {};

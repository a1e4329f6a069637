#pragma once

#include "prm/track/Reshaping.h"
#include "prm/track/Shown.h"
#include "prm/track/Track.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace Prm::detail {

/// The own data of one view while they are reshaped, and what has to be known of the parameter.
template <class T> struct ReshapedTrack {
    Track<T> now;
    Outside outside;
    /// The kind of a first keyframe.
    Interpolation firstKind = Interpolation::Constant;
    /// Every segment keeps the value that it starts with: the type does not blend, or the class has no curves.
    bool holds = false;
    /// A class of a host computes the values.
    bool hasHooks = false;
    /// The view has no data, and shows those of others.
    bool showsOthers = false;
    /// What the parameter shows in the view, wherever that comes from, at times in ascending order.
    std::function<QVector<T>(const QVector<Time>& times)> shownAt;
};

// Why keyframes are not reshaped.
constexpr const char* invalidTime = "the time is not valid";
constexpr const char* hasHooks = "a class of the application computes the values";
constexpr const char* hasCustomKind = "a function of the application computes the values there";
constexpr const char* isBlend = "the view shows a blend of others";
constexpr const char* hasNoCurves = "values of this type have no curves";
constexpr const char* isTooWide = "the radius has too many steps";
constexpr const char* isEmptySpan = "the times are not finite, or have more than 2^24 steps";
constexpr const char* isNegativeError = "the error is negative";
constexpr const char* isNotFinite = "the values are not finite";

/// The positions of the keyframes of a range: the first, and the one after the last.
template <class T>
std::pair<int, int> positionsIn(const QVector<KeyframeData<T>>& keyframes, const KeyframeRange& range) {
    const int begin = lowerBound(keyframes, range.first);
    return {begin, std::max(begin, firstAfter(keyframes, range.last))};
}

template <class T> bool sameKeyframe(const KeyframeData<T>& a, const KeyframeData<T>& b) {
    return a.time == b.time && ValueType<T>::equal(a.value, b.value) && a.interpolationData == b.interpolationData;
}

template <class T> bool sameKeyframes(const QVector<KeyframeData<T>>& a, const QVector<KeyframeData<T>>& b) {
    const bool isShared = a.constData() == b.constData() && a.size() == b.size();
    return isShared || std::equal(a.begin(), a.end(), b.begin(), b.end(), sameKeyframe<T>);
}

} // namespace Prm::detail

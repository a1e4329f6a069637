#pragma once

// Questions about the keyframes of one view.

#include "prm/Parameter.h"
#include "prm/track/KeyframeSearch.h"

#include <algorithm>

namespace Prm {

template <class T> unsigned int Parameter<T>::insertionIndex(const Time& time, const LockedKeyframes& keyframes) const {
    return static_cast<unsigned int>(detail::lowerBound(keyframes.keyframes(), time));
}

template <class T>
unsigned int Parameter<T>::keyframeIndexForTime(const Time& time, const LockedKeyframes& keyframes) const {
    // No keyframe, -1, is the invalid index.
    return static_cast<unsigned int>(detail::positionAt(keyframes.keyframes(), time));
}

template <class T> unsigned int Parameter<T>::keyframeIndexForTime(const Context& context) const {
    return ask(context.view, [&](const auto& track, View) {
        return static_cast<unsigned int>(detail::positionAt(track.keyframes, context.time));
    });
}

template <class T> bool Parameter<T>::hasViewData(const View& view) const {
    return ask(view, [&](const auto&, View owner) { return view.isValid() && owner == view; });
}

template <class T> bool Parameter<T>::hidesKeyframesOf(const View& view) const {
    return !isKeyframed() || (splittable() && !hasViewData(view));
}

/// The result of a query of the keyframes of a view; `none` if it has no keyframes to query. Guards and query use one
/// state.
template <class T>
template <class Question>
auto Parameter<T>::askKeyframes(const View& view, decltype(std::declval<Question>()(KeyframeVector())) none,
                                const Question& question) const -> decltype(none) {
    return ask(view, [&](const auto& track, View owner) {
        if (!isKeyframed())
            return none;
        if (splittable() && !(asksHooks() ? hasViewData(view) : view.isValid() && owner == view))
            return none;
        return question(track.keyframes);
    });
}

/// The position that a search finds in the list of a view; -1 if there is none.
template <class T> template <class Find> int Parameter<T>::findKeyframe(const View& view, const Find& find) const {
    return askKeyframes(view, -1,
                        [&](const KeyframeVector& keyframes) { return keyframes.isEmpty() ? -1 : find(keyframes); });
}

template <class T> unsigned int Parameter<T>::keyframeCount(const View& view) const {
    return askKeyframes(view, 0u,
                        [](const KeyframeVector& keyframes) { return static_cast<unsigned int>(keyframes.size()); });
}

template <class T> Context Parameter<T>::keyframeTime(unsigned int index, const View& view) const {
    return ask(view, [&](const auto& track, View) {
        const bool there = isKeyframed() && index < static_cast<unsigned int>(track.keyframes.size());
        return Context(there ? track.keyframes.at(static_cast<int>(index)).time : Time(), view);
    });
}

template <class T> KeyframeData<T> Parameter<T>::keyframe(unsigned int index, const View& view) const {
    return ask(view, [&](const auto& track, View) -> KeyframeData<T> {
        if (!isKeyframed() || track.keyframes.isEmpty())
            return {Time::INVALID, track.staticValue, IType(defaultInterpolation())};
        const auto last = static_cast<unsigned int>(track.keyframes.size()) - 1;
        return track.keyframes.at(static_cast<int>(std::min(index, last)));
    });
}

template <class T> T Parameter<T>::keyframeValue(unsigned int index, const View& view) const {
    return ask(view, [&](const auto& track, View) {
        if (!isKeyframed() || track.keyframes.isEmpty())
            return track.staticValue;
        const auto last = static_cast<unsigned int>(track.keyframes.size()) - 1;
        return track.keyframes.at(static_cast<int>(std::min(index, last))).value;
    });
}

template <class T> bool Parameter<T>::bKeyframeAt(const Context::Explicit& context) const {
    return findKeyframe(context.view,
                        [&](const auto& keyframes) { return detail::positionAt(keyframes, context.time); }) >= 0;
}

template <class T> bool Parameter<T>::bNextKeyframe(const Context& context, Context& next) const {
    return findKeyframe(context.view, [&](const auto& keyframes) {
               const int position = detail::nextPosition(keyframes, context.time);
               if (position >= 0)
                   next = Context(keyframes.at(position).time, context.view);
               return position;
           }) >= 0;
}

template <class T> bool Parameter<T>::bPreviousKeyframe(const Context& context, Context& previous) const {
    return findKeyframe(context.view, [&](const auto& keyframes) {
               const int position = detail::lowerBound(keyframes, context.time) - 1;
               if (position >= 0)
                   previous = Context(keyframes.at(position).time, context.view);
               return position;
           }) >= 0;
}

template <class T> bool Parameter<T>::bNearestKeyframeIndex(const Context& context, unsigned int& index) const {
    const int position = findKeyframe(
        context.view, [&](const auto& keyframes) { return detail::nearestPosition(keyframes, context.time); });
    if (position >= 0)
        index = static_cast<unsigned int>(position);
    return position >= 0;
}

template <class T> bool Parameter<T>::bNearestKeyframeTime(const Context& context, Time& time) const {
    return findKeyframe(context.view, [&](const auto& keyframes) {
               const int position = detail::nearestPosition(keyframes, context.time);
               time = keyframes.at(position).time;
               return position;
           }) >= 0;
}

template <class T> QVector<Context> Parameter<T>::allKeyframes() const {
    QVector<Context> all;
    const std::vector<View> views = viewList();
    for (const View view : views)
        forEachKeyframeTime([&](const Context& keyframe) { all.append(keyframe); }, view);
    return all;
}

} // namespace Prm

#pragma once

// What a parameter shows in a view, as plain data, and the questions of prm/Answers.h about it for callers that do not
// know its type.

#include "prm/Answers.h"
#include "prm/Parameter.h"
#include "prm/track/CanonicalTrack.h"
#include "prm/track/HandleShaping.h"
#include "prm/untyped/UntypedAnswers.h"

#include <typeinfo>

namespace Prm {

template <class T> detail::Shown<T> Parameter<T>::shownIn(const View& view) const {
    const auto tracks = [&](const Parameter& shown) { return shown.ownTracks(view); };
    return askShown(tracks, tracks);
}

namespace detail {

/// The hooks of `Parameter<T>` itself, of a type that blends, hold each keyframe's value.
template <class T> void holdValues(Shown<T>& shown) {
    shown.outside = {};
    for (Track<T>& track : shown.tracks) {
        for (KeyframeData<T>& keyframe : track.keyframes)
            keyframe.interpolationData = Interpolation::Constant;
    }
}

} // namespace detail

/// Without the master.
template <class T> detail::Shown<T> Parameter<T>::ownTracks(const View& view) const {
    detail::Shown<T> shown;
    detail::SourceViews sources;
    const HeldTrack held =
        hold(view, [&](const FastViewMap& map) { return sourceView(map, view, Traits(*this), sources); });
    shown[0] = held.track;
    shown.outside = held.settings.outside;
    if (sources.size() > 1 && held.settings.keyframed) {
        shown.weights = detail::sourceWeights(sources, view);
        shown.count = sources.size();
        for (int i = 0; i < shown.count; ++i)
            shown[i] = hold(sources[i], [&](const FastViewMap&) { return sources[i]; }).track;
    }
    if (asksHooks() && typeid(*this) != typeid(Parameter))
        shown.hooks = &typeid(*this);
    else if (!held.settings.keyframed)
        shown[0].keyframes = {};
    else if (asksHooks())
        detail::holdValues(shown);
    return shown;
}

template <class T> auto Parameter<T>::keyframesIn(const View& view, const TimeSpan& span) const -> KeyframeVector {
    const detail::Moments times = detail::Moments::of(span);
    if (times.isEmpty())
        return {};
    return askKeyframes(view, KeyframeVector(), [&](const KeyframeVector& keyframes) {
        const auto positionOf = [&](double time) {
            return detail::lowerBound(keyframes.constData(), keyframes.size(), Time::fromDouble(time));
        };
        const int begin = positionOf(times.first);
        const int end =
            times.last >= Time::INVALID_TIME_VALUE ? keyframes.size() : positionOf(detail::timeAfter(times.last));
        return keyframes.mid(begin, end - begin);
    });
}

namespace detail {

/// Those of a keyframe, as points of one component's curve; none if there is no such keyframe.
template <class T>
KeyframeHandles handlesOf(const Parameter<T>& parameter, const KeyframeIndex& keyframe, int component) {
    if constexpr (blends<T>) {
        const quint32 count = parameter.keyframeCount(keyframe.view);
        if (keyframe.index >= count || component < 0 || component >= ValueType<T>::componentCount)
            return {};
        const quint32 first = keyframe.index > 0 ? keyframe.index - 1 : 0;
        QVector<KeyframeData<T>> around;
        for (quint32 i = first; i < count && i <= keyframe.index + 1; ++i)
            around.append(parameter.keyframe(i, keyframe.view));
        return handlesAt(around, static_cast<int>(keyframe.index - first), component);
    } else {
        return {};
    }
}

} // namespace detail

template <class T> const detail::UntypedAnswers& detail::UntypedAnswers::ofType() {
    using Untyped = ParameterWithoutType;
    static const auto typed = [](const Untyped& parameter) -> const Parameter<T>& {
        return *static_cast<const Parameter<T>*>(parameter.asTyped(typeid(T)));
    };
    static const UntypedAnswers answers{
        [](const Untyped& parameter, const Context& context) { return Prm::constantAround(typed(parameter), context); },
        [](const Untyped& parameter, View view, const TimeSpan& span) {
            return Prm::isConstant(typed(parameter), view, span);
        },
        [](Bsc::Hash& hash, const Untyped& parameter, View view, const TimeSpan& span) {
            const Shown<T> shown = Ask::shownIn(typed(parameter), view);
            if (shown.hooks)
                addHooks(hash, shown, span, view);
            else
                addRange(hash, shown, Moments::of(span));
        },
        [](Bsc::Hash& hash, const Untyped& parameter, const Context& context) {
            addConstant(hash, typed(parameter).value(context));
        },
        [] { return ValueType<T>::name(); },
        [](const Untyped& parameter, const View& view) {
            QString text;
            ValueType<T>::write(text, typed(parameter).keyframeValue(0, view));
            return text;
        },
        [](const QString& text) { return ValueType<T>::toVariant(ValueType<T>::read(text)); },
        [](const Untyped& parameter, const KeyframeIndex& keyframe, int component) {
            return detail::handlesOf(typed(parameter), keyframe, component);
        },
    };
    return answers;
}

} // namespace Prm

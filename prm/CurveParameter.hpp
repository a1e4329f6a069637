#pragma once

// The bodies of `CurveParameter<T>`, for the source file that instantiates it for a type.

#include "prm/CurveParameter.h"
#include "prm/Parameter.hpp"
#include "prm/track/Evaluation.h"

#include <algorithm>

namespace Prm {

template <class T> CurveParameter<T>::CurveParameter() : CurveParameter(QString()) {}

template <class T>
CurveParameter<T>::CurveParameter(const QString& name, const T& value, ParameterOptions options, ParameterSet* parent)
    : Parameter<T>(name, value, options, parent) {
    this->setEvaluated();
}

template <class T>
CurveParameter<T>::CurveParameter(const CurveParameter& other)
    : ParameterWithoutType(), Parameter<T>(static_cast<const Parameter<T>&>(other)) {
    this->setEvaluated();
}

template <class T> CurveParameter<T>::~CurveParameter() {
    this->announceDeletion();
}

template <class T>
T CurveParameter<T>::interpolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const {
    return this->askHeld(around.before.view, [&](const auto& track, View) {
        // A hook of the caller's may have edited the list.
        const int last = track.keyframes.size() - 1;
        if (last < 0)
            return track.staticValue;
        const auto keyframe = [&](const KeyframeIndex& index) -> const KeyframeData<T>& {
            return track.keyframes.at(std::min(static_cast<int>(index.index), last));
        };
        return detail::segmentValue(keyframe(around.before), keyframe(around.after), context.time);
    });
}

template <class T>
T CurveParameter<T>::extrapolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const {
    const bool before = around.before.view == View::INVALID();
    return this->askHeld(before ? around.after.view : around.before.view, [&](const auto& track, View) {
        if (track.keyframes.isEmpty())
            return track.staticValue;
        const Extrapolation kind = before ? this->extrapolationBefore() : this->extrapolationAfter();
        return detail::outsideValue(track.keyframes, before, kind, context.time);
    });
}

template <class T> bool CurveParameter<T>::supportsExtrapolationFromNoKeys() const {
    return false;
}

template <class T>
IType CurveParameter<T>::initialiseInterpolation(const KeyframeData<T>& from, const KeyframeData<T>&,
                                                 Interpolation kind) const {
    return detail::initialShape(from.interpolationData, kind);
}

} // namespace Prm

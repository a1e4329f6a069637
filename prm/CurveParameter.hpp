#pragma once

// The bodies of `CurveParameter<T>`, for the source file that instantiates it for a type.

#include "prm/CurveParameter.h"
#include "prm/Parameter.hpp"
#include "prm/track/CurveShapes.h"

namespace Prm {

template <class T> CurveParameter<T>::CurveParameter() : CurveParameter(QString()) {}

template <class T>
CurveParameter<T>::CurveParameter(const QString& name, const T& value, ParameterOptions options, ParameterSet* parent)
    : Parameter<T>(name, value, options, parent) {
    this->setKnownClass(typeid(CurveParameter));
}

template <class T>
CurveParameter<T>::CurveParameter(const CurveParameter& other)
    : ParameterWithoutType(), Parameter<T>(static_cast<const Parameter<T>&>(other)) {
    this->setKnownClass(typeid(CurveParameter));
}

template <class T> CurveParameter<T>::~CurveParameter() {
    this->announceDeletion();
}

template <class T>
T CurveParameter<T>::interpolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const {
    const auto block = this->read(around.before.view);
    const auto& keyframes = block.keyframes();
    // A hook of the caller's may have edited the list.
    const int last = keyframes.size() - 1;
    if (last < 0)
        return block->staticValue;
    const int from = std::min(static_cast<int>(around.before.index), last);
    const int to = std::min(static_cast<int>(around.after.index), last);
    return detail::segmentValue(keyframes.at(from), keyframes.at(to), context.time);
}

template <class T>
T CurveParameter<T>::extrapolateValue(const BoundingKeyframes& around, const Context& context, Cache*) const {
    const bool before = around.before.view == View::INVALID();
    const auto block = this->read(before ? around.after.view : around.before.view);
    if (block.keyframes().isEmpty())
        return block->staticValue;
    const Extrapolation kind = before ? this->extrapolationBefore() : this->extrapolationAfter();
    return extrapolateIn(block.keyframes(), kind, before, context.time);
}

template <class T>
T CurveParameter<T>::extrapolateIn(const typename Parameter<T>::KeyframeVector& keyframes, Extrapolation kind,
                                   bool before, Time time) const {
    const KeyframeData<T>& first = keyframes.first();
    const KeyframeData<T>& last = keyframes.last();
    const KeyframeData<T>& edge = before ? first : last;
    const int count = keyframes.size();
    if (count < 2 || kind == Extrapolation::Constant)
        return edge.value;
    if (kind == Extrapolation::Linear) {
        const KeyframeData<T>& from = before ? first : keyframes.at(count - 2);
        const KeyframeData<T>& to = before ? keyframes.at(1) : last;
        const double slope =
            before ? detail::startSlope(from.interpolationData) : detail::endSlope(from.interpolationData);
        return detail::continuedValue(edge.value, from, to, slope, time - edge.time);
    }
    Time inside;
    // A host's function may edit the list. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const typename Parameter<T>::KeyframeVector kept = keyframes;
    T held = edge.value;
    if (!detail::mapIntoRange(kind, time, first.time, last.time, inside))
        return held;
    const detail::Bracket at = detail::bracket(kept.constData(), count, inside);
    if (at.before < 0 || at.after < 0)
        return held;
    return detail::segmentValue(kept.at(at.before), kept.at(at.after), inside);
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

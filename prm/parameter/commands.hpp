#pragma once

// The undoable forms of the edits.

#include "prm/Parameter.h"
#include "prm/detail/NotBuiltYet.h"

namespace Prm {

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetInterpolationCommand(Interpolation, Context, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("vSetInterpolationCommand");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetInterpolationDataCommand(Bsc::CompositeCommand&, IType, const KeyframeIndex&) {
    detail::throwNotBuiltYet("vSetInterpolationDataCommand");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetExtrapolationBeforeCommand(Extrapolation, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("vSetExtrapolationBeforeCommand");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetExtrapolationAfterCommand(Extrapolation, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("vSetExtrapolationAfterCommand");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vAddKeyframeCommand(const Context::Explicit&, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("vAddKeyframeCommand");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vAddKeyframeCommand(const Frame&, const AnimationState&, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("vAddKeyframeCommand");
}

template <class T> void Parameter<T>::createKeyframeDeletion(const Context::Explicit&, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("createKeyframeDeletion");
}

template <class T>
void Parameter<T>::createKeyframeDeletion(const Frame&, const AnimationState&, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("createKeyframeDeletion");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vDeleteAllKeyframesCommand(const View&, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("vDeleteAllKeyframesCommand");
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::bAddConstrainedParameterCommand(ParameterWithoutType*, Bsc::CompositeCommand&) {
    detail::throwNotBuiltYet("bAddConstrainedParameterCommand");
}

} // namespace Prm

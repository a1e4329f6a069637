#pragma once

// The undoable forms of the edits.

#include "host/bsc/CompositeCommand.h"
#include "prm/Parameter.h"
#include "prm/ParameterEdits.h"

namespace Prm {

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetInterpolationCommand(Interpolation kind, Context context,
                                                              Bsc::CompositeCommand& command) {
    command.push_back(new ParameterInterpolationEdit(*this, kind, context));
    return command;
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetInterpolationDataCommand(Bsc::CompositeCommand& command, IType data,
                                                                  const KeyframeIndex& keyframe) {
    command.push_back(new ParameterInterpolationDataEdit(*this, data, keyframe.index, keyframe.view));
    return command;
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetExtrapolationBeforeCommand(Extrapolation kind,
                                                                    Bsc::CompositeCommand& command) {
    command.push_back(new ParameterExtrapolationBeforeEdit(*this, kind));
    return command;
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vSetExtrapolationAfterCommand(Extrapolation kind, Bsc::CompositeCommand& command) {
    command.push_back(new ParameterExtrapolationAfterEdit(*this, kind));
    return command;
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vAddKeyframeCommand(const Context::Explicit& context,
                                                         Bsc::CompositeCommand& command) {
    return ParameterAddKeyEdit::appendToCommand(*this, context, command);
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vAddKeyframeCommand(const Frame& frame, const AnimationState& state,
                                                         Bsc::CompositeCommand& command) {
    return ParameterAddKeyEdit::appendToCommand(*this, frame, state, command);
}

template <class T>
void Parameter<T>::createKeyframeDeletion(const Context::Explicit& context, Bsc::CompositeCommand& command) {
    ParameterDeleteKeyEdit::appendToCommand(*this, context, command);
}

template <class T>
void Parameter<T>::createKeyframeDeletion(const Frame& frame, const AnimationState& state,
                                          Bsc::CompositeCommand& command) {
    ParameterDeleteKeyEdit::appendToCommand(*this, frame, state, command);
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::vDeleteAllKeyframesCommand(const View& view, Bsc::CompositeCommand& command) {
    command.push_back(new ParameterDeleteAllKeysEdit(*this, view));
    return command;
}

template <class T>
Bsc::CompositeCommand& Parameter<T>::bAddConstrainedParameterCommand(ParameterWithoutType* parameter,
                                                                     Bsc::CompositeCommand& command) {
    if (parameter)
        command.push_back(new ParameterAddConstrainedParameterEdit(*this, *parameter));
    return command;
}

} // namespace Prm

// Sending changes: the factories of `ParameterChange`, and what lets a type through blocked signals.

#include "prm/ParameterChange.h"
#include "prm/ParameterWithoutType.h"

#include <QDebug>

namespace Prm {

void ParameterChange::send(ParameterWithoutType& parameter, ChangeType type, int index, const Context& at) {
    if (!parameter.emits(type)) {
        parameter.countChange(type);
        return;
    }
    ParameterChange change(type, parameter, static_cast<unsigned int>(index));
    change.context = at;
    parameter.emitChange(change);
}

void ParameterChange::sendForView(ParameterWithoutType& parameter, ChangeType type, int index, const View& view) {
    send(parameter, type, index, Context(Time(), view));
}

void ParameterChange::keyframeAdded(ParameterWithoutType& parameter, int index, const View& view) {
    sendForView(parameter, KEYFRAME_ADDED, index, view);
}

void ParameterChange::keyframeRemoved(ParameterWithoutType& parameter, int index, const Context& context) {
    send(parameter, KEYFRAME_REMOVED, index, context);
}

void ParameterChange::keyframeChangedValue(ParameterWithoutType& parameter, int index, const View& view) {
    sendForView(parameter, KEYFRAME_CHANGED_VALUE, index, view);
}

void ParameterChange::keyframeChangedTimeValue(ParameterWithoutType& parameter, int index, const View& view) {
    sendForView(parameter, KEYFRAME_CHANGED_TIME_VALUE, index, view);
}

void ParameterChange::keyframeChangedInterpolation(ParameterWithoutType& parameter, int index, const View& view) {
    sendForView(parameter, KEYFRAME_CHANGED_INTERPOLATION, index, view);
}

void ParameterChange::changedExtrapolationBefore(ParameterWithoutType& parameter) {
    send(parameter, PARAMETER_CHANGED_EXTRAPOLATION_BEFORE);
}

void ParameterChange::changedExtrapolationAfter(ParameterWithoutType& parameter) {
    send(parameter, PARAMETER_CHANGED_EXTRAPOLATION_AFTER);
}

void ParameterChange::parameterAssigned(ParameterWithoutType& parameter) {
    send(parameter, PARAMETER_ASSIGNED);
}

void ParameterChange::assigned(ParameterWithoutType& parameter, const detail::AssignedDifference& difference) {
    ParameterChange change(PARAMETER_ASSIGNED, parameter, 0);
    change.m_difference = &difference;
    parameter.emitChange(change);
}

void ParameterChange::valueChanged(ParameterWithoutType& parameter, const View& view) {
    sendForView(parameter, VALUE_CHANGED, 0, view);
}

void ParameterChange::viewReset(ParameterWithoutType& parameter, const View& view) {
    sendForView(parameter, VIEW_RESET, 0, view);
}

void ParameterChange::viewCleared(ParameterWithoutType& parameter, const View& view) {
    sendForView(parameter, VIEW_CLEARED, 0, view);
}

void ParameterChange::viewAdded(ParameterWithoutType& parameter, const View& view) {
    sendForView(parameter, VIEW_ADDED, 0, view);
}

void ParameterChange::viewRemoved(ParameterWithoutType& parameter, const View& view) {
    sendForView(parameter, VIEW_REMOVED, 0, view);
}

void ParameterChange::parameterDeleted(ParameterWithoutType& parameter) {
    send(parameter, PARAMETER_DELETED);
}

void ParameterChange::hiddenParameterChanged(ParameterWithoutType& parameter) {
    send(parameter, PARAMETER_HIDDEN_CHANGED);
}

void ParameterChange::lockedParameterChanged(ParameterWithoutType& parameter) {
    send(parameter, PARAMETER_LOCKED_CHANGED);
}

void ParameterChange::keyframeMoved(ParameterWithoutType& parameter, QList<unsigned int>& indices, const View& view) {
    ParameterChange change(KEYFRAME_MOVED, &parameter, &indices);
    change.context.view = view;
    parameter.emitChange(change);
}

void ParameterChange::commandRegistered(ParameterWithoutType& parameter, Bsc::CompositeCommand& command,
                                        const Context& context) {
    ParameterChange change(COMMAND_REGISTERED, parameter, command, context);
    Q_EMIT parameter.commandRegistrationChanged(change);
}

ScopedSignalPermit::ScopedSignalPermit(ParameterWithoutType& parameter, ParameterChange::ChangeType type)
    : m_parameter(parameter), m_guard(parameter), m_type(type),
      m_previous(parameter.overrideBlockedSignals(type, true)) {}

ScopedSignalPermit::~ScopedSignalPermit() {
    if (m_guard.alive())
        m_parameter.overrideBlockedSignals(m_type, m_previous);
}

QDebug operator<<(QDebug debug, const ParameterChange& change) {
    const QDebugStateSaver saver(debug);
    debug.nospace().noquote() << "ParameterChange(" << change.typeToString();
    if (change.parameter)
        debug << ", " << change.parameter->scriptName();
    debug << ", index " << static_cast<int>(change.affectedIndex) << ", " << change.context << ')';
    return debug;
}

} // namespace Prm

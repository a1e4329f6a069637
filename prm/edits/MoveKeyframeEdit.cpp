#include "prm/MoveKeyframeEdit.h"

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"

namespace Prm {

namespace {

Context atFrame(const Frame& frame, const View& view) {
    return {Time::fromUInt(frame.toUInt()), view};
}

} // namespace

MoveKeyframeEdit::MoveKeyframeEdit(ParameterWithoutType& parameter, const Context& from, const Context& to)
    : ParameterSnapshotEdit(&parameter), m_from(from), m_to(to) {}

bool MoveKeyframeEdit::applies() const {
    return m_to.time.isValid() && parameter()->bKeyframeAt(Context::Explicit(m_from));
}

bool MoveKeyframeEdit::apply() {
    return doMoveKeyframe(m_from, m_to);
}

bool MoveKeyframeEdit::doMoveKeyframe(const Context& from, const Context& to) {
    if (!parameter() || !to.time.isValid())
        return false;
    const boost::shared_ptr<SerialisedKeyframe> keyframe = parameter()->getSerialisedKeyframe(from);
    if (!keyframe)
        return false;
    keyframe->adjustTime(static_cast<float>(to.time.toDouble() - from.time.toDouble()));
    // Rounded to single precision, a target near the last time may lie behind it.
    if (!keyframe->context().time.isValid())
        return false;
    parameter()->vDeleteKeyframe(Context::Explicit(from));
    if (parameter())
        parameter()->importKeyframe(*keyframe);
    return true;
}

void MoveKeyframeEdit::appendToCommand(ParameterWithoutType& parameter, const Frame& from, const Frame& to,
                                       const View& view, Bsc::CompositeCommand& command) {
    command.push_back(new MoveKeyframeEdit(parameter, atFrame(from, view), atFrame(to, view)));
}

void MoveKeyframeEdit::appendToCommand(ParameterWithoutType& parameter, const Frame& from, const Frame& to,
                                       Bsc::CompositeCommand& command) {
    for (const View view : parameter.viewList())
        appendToCommand(parameter, from, to, view, command);
}

void MoveKeyframeEdit::appendToCommand(CompoundParameter& parameter, const Frame& from, const Frame& to,
                                       Bsc::CompositeCommand& command) {
    doAppendToCommand(&parameter, from, to, command);
}

void MoveKeyframeEdit::doAppendToCommand(ParameterWithoutType* parameter, const Frame& from, const Frame& to,
                                         Bsc::CompositeCommand& command) {
    if (parameter)
        appendToCommand(*parameter, from, to, command);
}

void MoveKeyframeEdit::appendToCommand(ParameterSet& set, const Frame& from, const Frame& to,
                                       Bsc::CompositeCommand& command) {
    set.forEachParameter([&](ParameterWithoutType* parameter) { doAppendToCommand(parameter, from, to, command); },
                         true);
}

} // namespace Prm

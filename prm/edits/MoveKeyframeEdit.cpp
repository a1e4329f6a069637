#include "prm/MoveKeyframeEdit.h"

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/ParameterSet.h"
#include "prm/SerialisedKeyframe.h"

#include <cmath>
#include <limits>
#include <optional>

namespace Prm {

namespace {

/// None where the target is no valid time, as one near the last time may be once the shift is rounded.
std::optional<float> shiftBetween(const Context& from, const Context& to) {
    const double exact = to.time.toDouble() - from.time.toDouble();
    if (!to.time.isValid() || !(std::abs(exact) <= static_cast<double>(std::numeric_limits<float>::max())))
        return {};
    const auto shift = static_cast<float>(exact);
    if (!(from.time + static_cast<double>(shift)).isValid())
        return {};
    return shift;
}

Context atFrame(const Frame& frame, const View& view) {
    return {Time::fromUInt(frame.toUInt()), view};
}

} // namespace

MoveKeyframeEdit::MoveKeyframeEdit(ParameterWithoutType& parameter, const Context& from, const Context& to)
    : ParameterSnapshotEdit(&parameter, {"Move %n keyframe of %p", "Move %n keyframes of %p"}), m_from(from), m_to(to) {
}

bool MoveKeyframeEdit::applies() {
    return shiftBetween(m_from, m_to) && parameter()->bKeyframeAt(Context::Explicit(m_from));
}

void MoveKeyframeEdit::apply() {
    doMoveKeyframe(m_from, m_to);
}

int MoveKeyframeEdit::countNow() const {
    return parameter() && parameter()->bKeyframeAt(Context::Explicit(m_from)) ? 1 : 0;
}

detail::Places MoveKeyframeEdit::places() const {
    const Time target = m_from.time + static_cast<double>(*shiftBetween(m_from, m_to));
    return {detail::Place::at(m_from), detail::Place::at(Context(target, m_from.view))};
}

bool MoveKeyframeEdit::doMoveKeyframe(const Context& from, const Context& to) {
    const std::optional<float> shift = shiftBetween(from, to);
    if (!parameter() || !shift)
        return false;
    const boost::shared_ptr<SerialisedKeyframe> keyframe = parameter()->getSerialisedKeyframe(from);
    if (!keyframe)
        return false;
    parameter()->vDeleteKeyframe(Context::Explicit(from));
    keyframe->adjustTime(*shift);
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
    if (auto* const compound = dynamic_cast<CompoundParameter*>(&set))
        return appendToCommand(*compound, from, to, command);
    set.forEachParameter([&](ParameterWithoutType* parameter) { doAppendToCommand(parameter, from, to, command); },
                         true);
}

} // namespace Prm

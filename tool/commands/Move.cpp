#include "prm/SerialisedKeyframe.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

/// To the very time: a keyframe is moved by frames in single precision, of which the first move may leave a rest.
void moveTo(Prm::SerialisedKeyframe& keyframe, Prm::Time time) {
    constexpr int most = 4;
    for (int i = 0; i < most && keyframe.context().time != time; ++i)
        keyframe.adjustTime(static_cast<float>(time - keyframe.context().time));
}

/// A parameter that loses its last keyframe keeps that value, but here it only goes away for a moment.
void move(FileParameter::Data& data, const Prm::Context& from, const Prm::Context& to) {
    const auto keyframe = data.getSerialisedKeyframe(from);
    if (!keyframe)
        return;
    const FileValue value = data.staticValue(from.view);
    data.vDeleteKeyframe(Prm::Context::Explicit(from));
    moveTo(*keyframe, to.time);
    data.importKeyframe(*keyframe);
    data.vSetValue(value, {Prm::Time::INVALID, from.view});
}

} // namespace

int moveKeyframes(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("from", "The frame of the keyframe.", "FRAME")
        .option("to", "Where it goes; a keyframe that is there already makes way.", "FRAME")
        .option("view", "Only in this view; in all unless given.", "N");
    declareOutput(arguments);
    arguments.example("prm move project.prm blur --from 10 --to 12 -o moved.prm");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("from") || !arguments.has("to"))
        throw WrongUse("--from and --to are both needed");
    const Prm::Time from = keyframeOption(arguments, "from");
    const Prm::Time to = keyframeOption(arguments, "to");
    const Prm::View only = viewOption(arguments, Prm::View::INVALID());
    return editProject(arguments, arguments.patterns(),
                       [&](const Project& /*project*/, const FileParameter& parameter) {
                           for (const Prm::View each : parameter.data().viewList()) {
                               if (each == only || !only.isValid())
                                   move(parameter.data(), {from, each}, {to, each});
                           }
                       });
}

} // namespace Tool

#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

Prm::Retiming retimingOf(const Arguments& arguments) {
    const bool shifts = arguments.hasFirstOf("shift", "scale");
    if (shifts && arguments.has("pivot"))
        throw WrongUse("--pivot belongs to --scale");
    const Prm::Time pivot = timeOption(arguments, "pivot");
    Prm::Retiming retiming = shifts ? Prm::Retiming::shifted(numberOption(arguments, "shift"))
                                    : Prm::Retiming::scaled(numberOption(arguments, "scale"), pivot);
    if (!retiming.isUsable())
        throw WrongUse("the scale must be above 0");
    retiming.first = decimalTime(keyframeOption(arguments, "from", retiming.first));
    retiming.last = decimalTime(keyframeOption(arguments, "to", retiming.last));
    if (retiming.last < retiming.first)
        throw WrongUse("--from is later than --to");
    return retiming;
}

/// Otherwise nothing of the parameter would move.
void checkPossible(const Project& project, const FileParameter& parameter, const Prm::Retiming& retiming) {
    for (const auto& [view, data] : parameter.views()) {
        for (const FileKeyframe& key : data.keys) {
            const Prm::Time time = decimalTime(key.time);
            if (retiming.concerns(time) && !isFrame(retiming(time)))
                throw Problem("%1: frame %2 would move out of range; --from and --to name others",
                              project.place(parameter, key.value.line), frameText(key.time.toDouble()));
        }
    }
}

} // namespace

int retime(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("shift", "Later by so many frames, or earlier with a minus sign: --shift=-12.", "FRAMES")
        .option("scale", "Farther from the pivot by a factor.", "S")
        .option("pivot", "The frame that stays, 0 unless given.", "FRAME")
        .option("from", "Only keyframes from here on.", "FRAME")
        .option("to", "Only keyframes up to here.", "FRAME");
    declareOutput(arguments);
    arguments.example("prm retime project.prm blur --shift 12 --in-place");
    if (!arguments.read())
        return Fine;
    const Prm::Retiming retiming = retimingOf(arguments);
    return editProject(arguments, arguments.patterns(), [&](const Project& project, const FileParameter& parameter) {
        checkPossible(project, parameter, retiming);
        FileParameter::Data& data = parameter.data();
        data.adjustKeyframesTime(decimalTime);
        Prm::ParameterRetimeEdit(data, retiming).doIt();
        data.adjustKeyframesTime(fileTime);
    });
}

} // namespace Tool

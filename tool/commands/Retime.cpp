#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Problem.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

const QString shift = QStringLiteral("shift");
const QString scale = QStringLiteral("scale");
const QString pivot = QStringLiteral("pivot");
const QString from = QStringLiteral("from");
const QString to = QStringLiteral("to");

Prm::Retiming retimingOf(const Arguments& arguments) {
    if (arguments.has(shift) == arguments.has(scale))
        throw WrongUse(QStringLiteral("one of --shift and --scale is needed"));
    if (arguments.has(shift) && arguments.has(pivot))
        throw WrongUse(QStringLiteral("--pivot belongs to --scale"));
    const Prm::Time fixed = arguments.has(pivot) ? timeOption(arguments, pivot) : Prm::Time::fromInt(0);
    Prm::Retiming retiming = arguments.has(shift) ? Prm::Retiming::shifted(numberOption(arguments, shift))
                                                  : Prm::Retiming::scaled(numberOption(arguments, scale), fixed);
    if (!retiming.isUsable())
        throw WrongUse(QStringLiteral("the scale must be above 0"));
    if (arguments.has(from))
        retiming.first = timeOption(arguments, from);
    if (arguments.has(to))
        retiming.last = timeOption(arguments, to);
    if (retiming.last < retiming.first)
        throw WrongUse(QStringLiteral("--from is later than --to"));
    return retiming;
}

/// Otherwise nothing of the parameter would move.
void checkPossible(const EditedParameter& edited, const Prm::Retiming& retiming) {
    const auto& parameter = edited.parameter();
    for (const Prm::View view : parameter.viewList()) {
        for (unsigned int i = 0; i < parameter.keyframeCount(view); ++i) {
            const Prm::Time time = parameter.keyframeTime(i, view).time;
            if (retiming.concerns(time) && !isFrame(retiming(time)))
                throw Problem(QStringLiteral("%1: frame %2 would move out of range")
                                  .arg(edited.path, plainText(time.toDouble())));
        }
    }
}

} // namespace

int retime(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments
        .option({shift}, QStringLiteral("Later by so many frames, or earlier with a minus sign: --shift=-12."),
                QStringLiteral("FRAMES"))
        .option({scale}, QStringLiteral("Farther from the pivot by a factor."), QStringLiteral("S"))
        .option({pivot}, QStringLiteral("The frame that stays, 0 unless given."), QStringLiteral("FRAME"))
        .option({from}, QStringLiteral("Only keyframes from here on."), QStringLiteral("FRAME"))
        .option({to}, QStringLiteral("Only keyframes up to here."), QStringLiteral("FRAME"));
    declareOutput(arguments);
    arguments.example(QStringLiteral("prm retime project.prm blur --shift 12 --in-place"));
    if (!arguments.read(2, -1))
        return Fine;
    const Prm::Retiming retiming = retimingOf(arguments);
    return editProject(arguments, arguments.patterns(), [&](const EditedParameter& edited) {
        checkPossible(edited, retiming);
        Prm::ParameterRetimeEdit(edited.parameter(), retiming).doIt();
    });
}

} // namespace Tool

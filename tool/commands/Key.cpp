#include "prm/ReshapingEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/CurveEdit.h"
#include "tool/edit/Editing.h"

namespace Tool {

int insertKeyframe(Arguments& arguments) {
    using Insertion = Prm::ParameterInsertKeyframeEdit;
    Project::declareWithPatterns(arguments);
    arguments.option("at", "The frame of the keyframe, the first one where there is none.", "FRAME")
        .option("view", "In this view; in all with data unless given.", "N")
        .option("exact", "Refuses where one more keyframe does not keep the curve.");
    declareOutput(arguments);
    arguments.example("prm key project.prm blur.size --at 10 --in-place");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("at"))
        throw WrongUse("--at is needed");
    const Prm::Context at(timeOption(arguments, "at"), viewOption(arguments, Prm::View::INVALID()));
    const auto inexact = arguments.has("exact") ? Insertion::Refuse : Insertion::AddOrRound;
    return editProject(arguments, arguments.patterns(), [&](const FileParameter& parameter) {
        editMeaning(parameter, [&](Prm::ParameterWithoutType& typed) {
            Insertion insertion(typed, at, inexact);
            doOrExplain(parameter, insertion);
        });
    });
}

} // namespace Tool

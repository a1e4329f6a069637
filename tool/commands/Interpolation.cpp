#include "prm/Interpolation.h"

#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"
#include "tool/edit/Reshaping.h"

namespace Tool {

namespace {

Prm::Interpolation kindOption(const Arguments& arguments) {
    for (const Prm::Interpolation kind :
         {Prm::Interpolation::Constant, Prm::Interpolation::Linear, Prm::Interpolation::Bezier}) {
        if (kindText(kind).compare(arguments.value("as"), Qt::CaseInsensitive) == 0)
            return kind;
    }
    throw WrongUse("--as: '%1' is not constant, linear or bezier", arguments.value("as"));
}

} // namespace

int setInterpolation(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("as", "The kind: constant, linear or bezier. A segment that has it already keeps its shape.",
                     "KIND", {"constant", "linear", "bezier"});
    declareSpan(arguments);
    arguments.example("prm interpolation project.prm blur.size --as linear --in-place");
    if (!arguments.read())
        return Fine;
    const Prm::Interpolation kind = kindOption(arguments);
    const Prm::KeyframeSpan span = spanOption(arguments);
    const auto edit = [&](const Project& project, const FileParameter& parameter) {
        hasKeyframes(arguments, project, parameter, span);
        for (const Prm::Context& key : parameter.data().allKeyframes()) {
            const bool isInView = !span.view.isValid() || key.view == span.view;
            if (isInView && key.time >= span.first && key.time <= span.last)
                Prm::ParameterInterpolationEdit(parameter.data(), kind, key).doIt();
        }
    };
    return editProject(arguments, arguments.patterns(), edit, accountBy("set to " + kindText(kind)));
}

} // namespace Tool

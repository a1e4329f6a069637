#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

void addOffset(const FileParameter& parameter, Prm::View view, double offset) {
    FileParameter::Data& data = parameter.data();
    for (unsigned int i = 0; i < data.keyframeCount(view); ++i)
        data.vSetValue(parameter.sum(data.keyframeValue(i, view), offset), {data.keyframeTime(i, view).time, view});
    const FileValue value = data.staticValue(view);
    if (!value.text.isNull())
        data.vSetValue(parameter.sum(value, offset), {Prm::Time::INVALID, view});
}

} // namespace

int split(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("view", "The view that gets a copy of what it shows.", "N")
        .option("offset", "Added to the numbers of the copy.", "D");
    declareOutput(arguments);
    arguments.example("prm split project.prm blur.size --view 1 --offset 2.5 --in-place");
    if (!arguments.read())
        return Fine;
    if (!arguments.has("view"))
        throw WrongUse("--view is needed");
    const Prm::View view = viewOption(arguments);
    const double offset = numberOption(arguments, "offset");
    return editProject(arguments, arguments.patterns(),
                       [&](const Project& /*project*/, const FileParameter& parameter) {
                           if (parameter.data().viewList().empty() || parameter.data().hasViewData(view))
                               return;
                           Prm::ParameterSplitViewEdit(parameter.data(), view).doIt();
                           if (offset != 0)
                               addOffset(parameter, view, offset);
                       });
}

} // namespace Tool

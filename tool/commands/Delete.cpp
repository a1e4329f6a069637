#include "prm/KeyframeSelectionEdit.h"
#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"
#include "tool/edit/Reshaping.h"

namespace Tool {

namespace {

/// Without keyframes, a parameter needs a value that the file can hold.
void keepValue(FileParameter::Data& data, Prm::View view) {
    const unsigned int count = data.keyframeCount(view);
    if (count > 0 && data.staticValue(view).text.isNull())
        data.vSetValue({data.keyframeValue(count - 1, view).text}, {Prm::Time::INVALID, view});
}

void deleteSpan(FileParameter::Data& data, const Prm::KeyframeSpan& span, Prm::View view) {
    Prm::KeyframeSelection selection;
    selection.add(data, view, {span.first.toDouble(), span.last.toDouble(), true, true});
    if (selection.count() < data.keyframeCount(view))
        return Prm::KeyframeSelectionEdit(selection, Prm::KeyframeChange::deleted()).doIt();
    keepValue(data, view);
    Prm::ParameterDeleteAllKeysEdit(data, view).doIt();
}

} // namespace

int deleteKeyframes(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("at", "The keyframe at this frame.", "FRAME")
        .option("all", "All keyframes. Leaves the value that counts without them, or the last one.");
    declareSpan(arguments);
    arguments.example("prm delete project.prm blur --from 10 --to 20 -o fewer.prm");
    if (!arguments.read())
        return Fine;
    const bool hasSpan = arguments.has("from") || arguments.has("to");
    if (int(arguments.has("at")) + int(arguments.has("all")) + int(hasSpan) != 1)
        throw WrongUse("either --at, or --from and --to, or --all is needed");
    Prm::KeyframeSpan span = spanOption(arguments);
    if (arguments.has("at"))
        span.first = span.last = keyframeOption(arguments, "at");
    const auto edit = [&](const Project& project, const FileParameter& parameter) {
        hasKeyframes(arguments, project, parameter, span);
        for (const Prm::View view : std::vector<Prm::View>(parameter.data().viewList())) {
            if (!span.view.isValid() || view == span.view)
                deleteSpan(parameter.data(), span, view);
        }
    };
    return editProject(arguments, arguments.patterns(), edit, accountBy("changed"));
}

} // namespace Tool

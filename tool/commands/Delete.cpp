#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

/// Without keyframes, a parameter needs a value that the file can hold.
void deleteAll(FileParameter::Data& data, Prm::View view) {
    const unsigned int count = data.keyframeCount(view);
    if (count > 0 && data.staticValue(view).text.isNull())
        data.vSetValue({data.keyframeValue(count - 1, view).text}, {Prm::Time::INVALID, view});
    Prm::ParameterDeleteAllKeysEdit(data, view).doIt();
}

} // namespace

int deleteKeyframes(Arguments& arguments) {
    Project::declareWithPatterns(arguments);
    arguments.option("at", "The frame of the keyframe.", "FRAME")
        .option("all", "All keyframes. Leaves the value that counts without them, or the last one.")
        .option("view", "Only in this view; in all unless given.", "N");
    declareOutput(arguments);
    arguments.example("prm delete project.prm blur --at 10 -o fewer.prm");
    if (!arguments.read())
        return Fine;
    const bool isOne = arguments.hasFirstOf("at", "all");
    const Prm::Time time = timeOption(arguments, "at");
    const Prm::View only = viewOption(arguments, Prm::View::INVALID());
    return editProject(arguments, arguments.patterns(), [&](const FileParameter& parameter) {
        for (const Prm::View view : std::vector<Prm::View>(parameter.data().viewList())) {
            if (only.isValid() && view != only)
                continue;
            if (isOne)
                Prm::ParameterDeleteKeyEdit(parameter.data(), {time, view}).doIt();
            else
                deleteAll(parameter.data(), view);
        }
    });
}

} // namespace Tool

#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

/// Where a value goes. What is asked for must have been meant.
Prm::Context placeOf(const FileParameter& parameter, Prm::Time time, Prm::View view, bool isStatic) {
    const auto& data = parameter.data();
    if (!parameter.master().isEmpty())
        throw Problem("%1: shows %2, which is to be edited", parameter.path(), parameter.master());
    const bool isUnwritten = data.viewList().empty() && view == Prm::View();
    if (!data.hasViewData(view) && !isUnwritten)
        throw Problem("%1: view %2 has no data of its own; prm split gives it some", parameter.path(), view.id());
    if (!time.isValid() && !isStatic && data.keyframeCount(view) > 0)
        throw Problem("%1: has keyframes; --at sets one, --static the value that counts without them",
                      parameter.path());
    return {time, view};
}

/// The line of what is there already goes on standing for it.
int lineAt(const FileParameter::Data& data, const Prm::Context& place) {
    if (!place.time.isValid())
        return data.staticValue(place.view).line;
    const unsigned int index = data.keyframeIndexForTime(place);
    return index == Prm::KeyframeIndex::INVALID_INDEX ? FileValue::noLine : data.keyframeValue(index, place.view).line;
}

} // namespace

int setValue(Arguments& arguments) {
    Project::declare(arguments);
    arguments.positional("PATTERN", "A parameter, a group or a shell pattern.")
        .positional("VALUE", "A number, text, 0 or 1, or two numbers between quotes: \"2 3\".")
        .option("at", "Sets a keyframe here.", "FRAME")
        .option("static", "Sets the value that counts without keyframes.")
        .option("view", "In this view, 0 unless given.", "N");
    declareOutput(arguments);
    arguments.example("prm set project.prm blur.size 2.5 --at 10 --in-place");
    if (!arguments.read())
        return Fine;
    if (arguments.has("at") && arguments.has("static"))
        throw WrongUse("--at and --static exclude each other");
    const Prm::Time time = keyframeOption(arguments, "at", Prm::Time::INVALID);
    const Prm::View view = viewOption(arguments);
    return editProject(arguments, {arguments.patterns().at(0)},
                       [&](const Project& /*project*/, const FileParameter& parameter) {
                           const Prm::Context place = placeOf(parameter, time, view, arguments.has("static"));
                           FileValue value = parameter.newValue(arguments.patterns().at(1));
                           value.line = lineAt(parameter.data(), place);
                           parameter.data().vSetValue(value, place);
                       });
}

} // namespace Tool

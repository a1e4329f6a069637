#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Problem.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

/// Where a value goes. What is asked for must have been meant.
Prm::Context placeOf(const EditedParameter& edited, Prm::Time time, Prm::View view, bool isStatic) {
    const auto& parameter = edited.parameter();
    const bool isUnwritten = parameter.viewList().empty() && view == Prm::View();
    if (!parameter.hasViewData(view) && !isUnwritten)
        throw Problem(QStringLiteral("%1: view %2 has no data of its own; prm split gives it some")
                          .arg(edited.path)
                          .arg(view.id()));
    if (!time.isValid() && !isStatic && parameter.keyframeCount(view) > 0)
        throw Problem(QStringLiteral("%1: has keyframes; --at sets one, --static the value that counts without them")
                          .arg(edited.path));
    return {time, view};
}

/// The line of what is there already goes on standing for it.
int lineAt(const EditedParameter& edited, const Prm::Context& place) {
    const auto& parameter = edited.parameter();
    if (!place.time.isValid())
        return parameter.staticValue(place.view).line;
    const unsigned int index = parameter.keyframeIndexForTime(place);
    return index == Prm::KeyframeIndex::INVALID_INDEX ? WrittenValue::noLine
                                                      : parameter.keyframeValue(index, place.view).line;
}

} // namespace

int setValue(Arguments& arguments) {
    const QString at = QStringLiteral("at");
    const QString fixed = QStringLiteral("static");
    const QString view = QStringLiteral("view");
    Project::declare(arguments);
    arguments.positional(QStringLiteral("PATTERN"), QStringLiteral("A parameter, a group or a shell pattern."))
        .positional(QStringLiteral("VALUE"),
                    QStringLiteral("A number, text, 0 or 1, or two numbers between quotes: \"2 3\"."))
        .option({at}, QStringLiteral("Sets a keyframe here."), QStringLiteral("FRAME"))
        .option({fixed}, QStringLiteral("Sets the value that counts without keyframes."))
        .option({view}, QStringLiteral("In this view, 0 unless given."), QStringLiteral("N"));
    declareOutput(arguments);
    arguments.example(QStringLiteral("prm set project.prm blur.size 2.5 --at 10 --in-place"));
    if (!arguments.read(3, 3))
        return Fine;
    if (arguments.has(at) && arguments.has(fixed))
        throw WrongUse(QStringLiteral("--at and --static exclude each other"));
    const Prm::Time time = arguments.has(at) ? timeOption(arguments, at) : Prm::Time(Prm::Time::INVALID);
    const Prm::View wanted = arguments.has(view) ? readView(arguments.value(view)) : Prm::View();
    return editProject(arguments, {arguments.rest().at(1)}, [&](const EditedParameter& edited) {
        const Prm::Context place = placeOf(edited, time, wanted, arguments.has(fixed));
        WrittenValue value = edited.value(arguments.rest().at(2));
        value.line = lineAt(edited, place);
        edited.setValue(value, place);
    });
}

} // namespace Tool

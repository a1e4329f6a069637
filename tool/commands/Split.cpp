#include "prm/ParameterEdits.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Problem.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

void addOffset(const EditedParameter& edited, Prm::View view, double offset) {
    const auto& parameter = edited.parameter();
    for (unsigned int i = 0; i < parameter.keyframeCount(view); ++i)
        edited.setValue(edited.sum(parameter.keyframeValue(i, view), offset),
                        {parameter.keyframeTime(i, view).time, view});
    const WrittenValue value = parameter.staticValue(view);
    if (!value.text.isNull())
        edited.setValue(edited.sum(value, offset), {Prm::Time(Prm::Time::INVALID), view});
}

} // namespace

int split(Arguments& arguments) {
    const QString viewName = QStringLiteral("view");
    const QString offsetName = QStringLiteral("offset");
    Project::declareWithPatterns(arguments);
    arguments.option({viewName}, QStringLiteral("The view that gets a copy of what it shows."), QStringLiteral("N"))
        .option({offsetName}, QStringLiteral("Added to the numbers of the copy."), QStringLiteral("D"));
    declareOutput(arguments);
    arguments.example(QStringLiteral("prm split project.prm blur.size --view 1 --offset 2.5 --in-place"));
    if (!arguments.read(2, -1))
        return Fine;
    if (!arguments.has(viewName))
        throw WrongUse(QStringLiteral("--view is needed"));
    const Prm::View view = readView(arguments.value(viewName));
    const double offset = arguments.has(offsetName) ? numberOption(arguments, offsetName) : 0;
    return editProject(arguments, arguments.patterns(), [&](const EditedParameter& edited) {
        if (edited.parameter().viewList().empty() || edited.parameter().hasViewData(view))
            return;
        Prm::ParameterSplitViewEdit(edited.parameter(), view).doIt();
        if (offset != 0)
            addOffset(edited, view, offset);
    });
}

} // namespace Tool

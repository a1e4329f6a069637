#include "prm/MoveKeyframeEdit.h"
#include "tool/Commands.h"
#include "tool/Frames.h"
#include "tool/Problem.h"
#include "tool/edit/Editing.h"

namespace Tool {

namespace {

/// A parameter that loses its last keyframe keeps that value, but here it only goes away for a moment. The way back, a
/// copy of all views for each of them, is not needed.
void move(const EditedParameter& edited, const Prm::Context& from, const Prm::Context& to) {
    const WrittenValue value = edited.parameter().staticValue(from.view);
    if (Prm::MoveKeyframeEdit(edited.parameter(), from, to).doMoveKeyframe(Prm::Context::Explicit(from), to))
        edited.setValue(value, {Prm::Time(Prm::Time::INVALID), from.view});
}

} // namespace

int moveKeyframes(Arguments& arguments) {
    const QString from = QStringLiteral("from");
    const QString to = QStringLiteral("to");
    const QString view = QStringLiteral("view");
    Project::declareWithPatterns(arguments);
    arguments.option({from}, QStringLiteral("The frame of the keyframe."), QStringLiteral("FRAME"))
        .option({to}, QStringLiteral("Where it goes; a keyframe that is there already makes way."),
                QStringLiteral("FRAME"))
        .option({view}, QStringLiteral("Only in this view; in all unless given."), QStringLiteral("N"));
    declareOutput(arguments);
    arguments.example(QStringLiteral("prm move project.prm blur --from 10 --to 12 -o moved.prm"));
    if (!arguments.read(2, -1))
        return Fine;
    if (!arguments.has(from) || !arguments.has(to))
        throw WrongUse(QStringLiteral("--from and --to are both needed"));
    const Prm::Time start = timeOption(arguments, from);
    const Prm::Time end = timeOption(arguments, to);
    const Prm::View only = arguments.has(view) ? readView(arguments.value(view)) : Prm::View::INVALID();
    return editProject(arguments, arguments.patterns(), [&](const EditedParameter& edited) {
        for (const Prm::View each : edited.parameter().viewList()) {
            if (each == only || !only.isValid())
                move(edited, {start, each}, {end, each});
        }
    });
}

} // namespace Tool

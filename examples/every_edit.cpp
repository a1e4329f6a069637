// Every kind of edit: each group is done, shown as the lines of project text that it changes, and undone.

#include "host/bsc/CompositeCommand.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"

#include <QStringList>
#include <QTextStream>

using Prm::Time;
using Prm::View;

namespace {

Time frame(int number) {
    return Time::fromInt(number);
}

QStringList textOf(const Prm::ParameterWithoutType& parameter) {
    QString text;
    QTextStream stream(&text);
    parameter.bStreamOut(stream, {}, true);
    return text.split('\n', Qt::SkipEmptyParts);
}

/// Whether the parameter is the same at the end.
bool doAndUndo(const char* title, Prm::ParameterWithoutType& parameter, Bsc::CompositeCommand& command) {
    QTextStream out(stdout);
    const QStringList before = textOf(parameter);
    command.doIt();
    out << title << '\n';
    for (const QString& line : textOf(parameter)) {
        if (!before.contains(line))
            out << "    " << line << '\n';
    }
    command.undoIt();
    return textOf(parameter) == before;
}

} // namespace

int main() {
    Prm::NumericParameter<double> angle("angle"), other("other");
    angle.vSetValue(0.0, frame(0));
    angle.vSetValue(90.0, frame(20));
    other.vSetValue(7.0, frame(5));
    Bsc::CompositeCommand keyframes, curves, values, views, times, links, settings;

    // [keyframes]
    keyframes.push_back(new Prm::ParameterAddKeyEdit(angle, frame(10)));
    keyframes.push_back(new Prm::ParameterDeleteKeyEdit(angle, {frame(20), View()}));
    keyframes.push_back(new Prm::ParameterResetEdit(angle, frame(0))); // deletes that one as well
    keyframes.push_back(new Prm::ParameterDeleteAllKeysEdit(angle, View()));
    // [keyframes]
    // [curves]
    curves.push_back(new Prm::ParameterInterpolationEdit(angle, Prm::Interpolation::Bezier, frame(0)));
    curves.push_back(
        new Prm::ParameterInterpolationDataEdit(angle, {Prm::Interpolation::Bezier, 0.5, 0, 0.5, 1}, 0, {}));
    curves.push_back(new Prm::ParameterExtrapolationBeforeEdit(angle, Prm::Extrapolation::Linear));
    curves.push_back(new Prm::ParameterExtrapolationAfterEdit(angle, Prm::Extrapolation::Linear));
    // [curves]
    // [values]
    values.push_back(new Prm::ParameterSetValueEdit(angle, 45.0, frame(10)));
    values.push_back(new Prm::ParameterSetStaticValueEdit(angle, 30.0));
    // [values]
    // [views]
    views.push_back(new Prm::ParameterSplitViewEdit(angle, View(1))); // view 1 gets a copy of what it shows
    views.push_back(new Prm::ParameterDeleteViewEdit(angle, View(0)));
    // [views]
    // [times]
    Prm::ParameterRetimeEdit::appendToCommand(angle, Prm::Retiming::scaled(2.0).between(frame(1), frame(20)), times);
    const QString copied = Prm::ParameterPasteKeyframesEdit::textOf(angle, View(), frame(0), frame(20));
    times.push_back(new Prm::ParameterPasteKeyframesEdit(angle, copied, frame(100)));
    // [times]
    // [links]
    links.push_back(new Prm::ParameterAddConstrainedParameterEdit(other, angle)); // angle shows the animation of other
    links.push_back(new Prm::ParameterWithoutTypeUnconstrainEdit(angle));         // and keeps a copy of it
    // [links]
    // [settings]
    settings.push_back(new Prm::ParameterWithoutTypeHideEdit(angle, true));
    settings.push_back(new Prm::ParameterWithoutTypeLockEdit(angle, true));
    // [settings]

    const bool undone = doAndUndo("keyframes", angle, keyframes) && doAndUndo("curves", angle, curves) &&
                        doAndUndo("values", angle, values) && doAndUndo("views", angle, views) &&
                        doAndUndo("times", angle, times) && doAndUndo("links", angle, links) &&
                        doAndUndo("settings", angle, settings);
    return undone && angle.keyframeCount({}) == 2 && !angle.isLocked() ? 0 : 1;
}

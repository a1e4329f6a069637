// Copies the keyframes of several parameters as text, and pastes them below another set.

#include "host/bsc/CompositeCommand.h"
#include "prm/KeyframeClipboard.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"

#include <QTextStream>

using Number = Prm::NumericParameter<double>;
using Prm::Time;

namespace {

struct Layer : Prm::ParameterSet {
    explicit Layer(const QString& name) : ParameterSet(name) {
        addParameter(opacity);
        addParameter(angle);
    }

    Number opacity{"opacity"}, angle{"angle"};
};

} // namespace

int main() {
    Layer logo("logo"), title("title");
    logo.opacity.vSetValue(0.0, Time::fromInt(10));
    logo.opacity.vSetValue(1.0, Time::fromInt(20));
    logo.angle.vSetValue(90.0, Time::fromInt(15));
    Prm::ParameterSet scene("scene"), other("other");
    scene.addParameterSet(logo);
    other.addParameterSet(title);

    // [copy]
    Prm::KeyframeSelection selection;
    selection.addSet(logo);
    const QString text = Prm::KeyframeClipboard::textOf(selection, scene);
    // [copy]
    // [paste]
    Bsc::CompositeCommand command; // one undo step
    const QStringList problems =
        Prm::KeyframeClipboard(text).appendToCommand(other, command, Time::fromInt(100)); // by name: other paths
    command.doIt();
    // [paste]
    QTextStream out(stdout);
    out << text << problems.join('\n');
    const bool isPasted = title.opacity.keyframeTime(1, {}).time == Time::fromInt(110) &&
                          title.angle.keyframeTime(0, {}).time == Time::fromInt(105);
    command.undoIt();
    return isPasted && problems.isEmpty() && title.angle.keyframeCount({}) == 0 ? 0 : 1;
}

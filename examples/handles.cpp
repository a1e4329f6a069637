// Handles of a curve as points, which a curve editor shows and moves.

#include "prm/HandlesEdit.h"
#include "prm/NumericParameter.h"

#include <QTextStream>

using Prm::HandleChange;
using Prm::Time;
using Prm::View;

int main() {
    Prm::NumericParameter<double> height("height");
    for (const auto& [frame, value] : {std::pair(0, 0.0), {10, 10.0}, {30, 20.0}, {40, 20.0}})
        height.vSetValue(value, Time::fromInt(frame));
    const Prm::Context::Explicit keyframe(Time::fromInt(10), View());

    // [handles]
    const Prm::KeyframeHandles shown = Prm::handles({&height, View(), 1}); // of the keyframe at index 1
    QTextStream out(stdout);
    out << shown.in->time << ' ' << shown.in->value << ", " << shown.out->time << ' ' << shown.out->value << '\n';
    // [handles]
    // [move]
    Prm::ParameterHandlesEdit smooth(height, keyframe, HandleChange::automatic());
    smooth.doIt();
    // The user drags the handle after the keyframe to frame 14 and value 16; the other one stays in line with it.
    Prm::ParameterHandlesEdit drag(height, keyframe, HandleChange::movedOut({14.0, 16.0}, HandleChange::Aligned));
    drag.doIt();
    // [move]
    const Prm::KeyframeHandles moved = Prm::handles({&height, View(), 1});
    // [equal]
    // From frame 30 to 40 the value stays the same, so that a handle needs a keyframe at the extremum.
    const HandleChange raised = HandleChange::movedOut({32.0, 26.0});
    const Prm::Context::Explicit third(Time::fromInt(30), View());
    const bool isRefused = !Prm::ParameterHandlesEdit(height, third, raised).refusal().isEmpty();
    Prm::ParameterHandlesEdit(height, third, raised.withExtremum()).doIt();
    // [equal]
    return moved.out->value == 16.0 && isRefused && height.keyframeCount({}) == 5 ? 0 : 1;
}

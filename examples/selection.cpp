// A selection of keyframes over two parameters: moved as one edit, and dragged.

#include "prm/KeyframeSelectionEdit.h"
#include "prm/NumericParameter.h"

#include <memory>

using Prm::KeyframeChange;
using Prm::Time;

int main() {
    Prm::NumericParameter<double> x("x"), y("y");
    for (const int frame : {0, 1, 2, 10}) {
        x.vSetValue(frame, Time::fromInt(frame));
        y.vSetValue(-frame, Time::fromInt(frame));
    }
    const auto isAt = [&](int index, double frame) {
        return x.keyframeTime(static_cast<unsigned int>(index), {}).time == Time::fromDouble(frame);
    };

    // [edit]
    Prm::KeyframeSelection selection;
    selection.add(x, {0.0, 2.0, true, true}); // the keyframes from frame 0 to 2
    selection.add(y, {0.0, 2.0, true, true});
    Prm::KeyframeSelectionEdit later(selection, KeyframeChange::moved(1.0));
    later.doIt(); // the keyframes at 0, 1, 2 are at 1, 2, 3
    // [edit]
    const bool isLater = isAt(0, 1.0) && isAt(2, 3.0) && later.refusal().isEmpty();
    later.undoIt();
    // [drag]
    Prm::InteractiveKeyframeEdit drag(selection);
    drag.preview(KeyframeChange::moved(10.0)); // replaces the keyframe at frame 10
    drag.preview(KeyframeChange::moved(4.0));  // which is there again; 4 frames from the beginning
    const std::unique_ptr<Bsc::Command> command = drag.commit();
    command->doIt(); // by the undo stack
    // [drag]
    const bool isDragged = x.keyframeCount({}) == 4 && isAt(0, 4.0) && isAt(3, 10.0);
    command->undoIt();
    return isLater && isDragged && isAt(0, 0.0) ? 0 : 1;
}

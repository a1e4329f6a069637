#include "prm/KeyframeChange.h"

namespace Prm {

KeyframeChange KeyframeChange::moved(double frames, const std::vector<double>& values) {
    KeyframeChange change;
    change.valueShift = values;
    if (frames != 0.0)
        change.retiming = Retiming::shifted(frames);
    return change;
}

KeyframeChange KeyframeChange::retimed(const Retiming& retiming) {
    KeyframeChange change;
    change.retiming = retiming;
    return change;
}

KeyframeChange KeyframeChange::scaledValues(double factor, double pivot) {
    KeyframeChange change;
    change.valueScale = factor;
    change.valuePivot = pivot;
    return change;
}

KeyframeChange KeyframeChange::shaped(const IType& shape) {
    KeyframeChange change;
    change.shape = shape;
    return change;
}

KeyframeChange KeyframeChange::eased(const Easing& easing) {
    KeyframeChange change = shaped(easing.parts.front().shape);
    if (easing.parts.size() > 1)
        change.parts = easing.parts;
    return change;
}

KeyframeChange KeyframeChange::withHandles(const HandleChange& handles) {
    KeyframeChange change;
    change.handles = handles;
    return change;
}

KeyframeChange KeyframeChange::deleted() {
    KeyframeChange change;
    change.deletes = true;
    return change;
}

} // namespace Prm

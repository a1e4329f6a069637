#include "prm/KeyframeHandles.h"

namespace Prm {

HandleChange HandleChange::movedIn(const HandlePoint& to, Tie tie) {
    HandleChange change;
    change.tie = tie;
    change.in = to;
    return change;
}

HandleChange HandleChange::movedOut(const HandlePoint& to, Tie tie) {
    HandleChange change;
    change.tie = tie;
    change.out = to;
    return change;
}

HandleChange HandleChange::moved(const HandlePoint& in, const HandlePoint& out) {
    HandleChange change;
    change.in = in;
    change.out = out;
    return change;
}

HandleChange HandleChange::flat() {
    HandleChange change;
    change.kind = Flat;
    return change;
}

HandleChange HandleChange::automatic() {
    HandleChange change;
    change.kind = Automatic;
    return change;
}

HandleChange HandleChange::onlyIn() const {
    HandleChange change = *this;
    change.concernsOut = false;
    return change;
}

HandleChange HandleChange::onlyOut() const {
    HandleChange change = *this;
    change.concernsIn = false;
    return change;
}

HandleChange HandleChange::ofComponent(int index) const {
    HandleChange change = *this;
    change.component = index;
    return change;
}

HandleChange HandleChange::withExtremum() const {
    HandleChange change = *this;
    change.addsExtremum = true;
    return change;
}

} // namespace Prm

// Reshaping curves as a whole: each edit is done, shown by what it makes of the curve, and undone.

#include "prm/NumericParameter.h"
#include "prm/ReshapingEdits.h"

using Prm::Time;
using Prm::View;

int main() {
    Prm::NumericParameter<double> angle("angle");
    angle.vSetValue(0.0, Time::fromInt(0));
    angle.vSetValue(90.0, Time::fromInt(20));
    angle.vSetInterpolation(Prm::Interpolation::Bezier, Time::fromInt(0));
    bool fine = true;
    {
        const double before = angle.value(Time::fromInt(5));
        // [insert]
        Prm::ParameterInsertKeyframeEdit insert(angle, {Time::fromInt(8), View()});
        insert.doIt(); // the curve is what it was, with one keyframe more
        // [insert]
        fine = fine && angle.keyframeCount({}) == 3 && qAbs(angle.value(Time::fromInt(5)) - before) < 1e-9;
        insert.undoIt();
    }
    return fine && angle.keyframeCount({}) == 2 ? 0 : 1;
}

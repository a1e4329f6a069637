// A number that starts slowly along a Bezier segment, and continues in a straight line after its last keyframe.

#include "prm/NumericParameter.h"

#include <QTextStream>

#include <cmath>

using Prm::Extrapolation;
using Prm::Interpolation;
using Prm::Time;
using Prm::View;

int main() {
    QTextStream out(stdout);
    Prm::NumericParameter<double> height("height");
    height.vSetValue(0.0, Time::fromInt(0));
    height.vSetValue(100.0, Time::fromInt(24));

    // [kinds]
    // A kind governs the segment that starts at its keyframe. Bezier begins as a slow start and a slow end.
    height.vSetInterpolation(Interpolation::Bezier, Time::fromInt(0));
    // [kinds]
    const double slowAtBothEnds = height.value(Time::fromInt(6));
    out << "frame 6, slow at both ends: " << slowAtBothEnds << '\n';

    // [shape]
    // Two control points of a curve from (0,0) to (1,1): x is a fraction of the segment's time, y of its change.
    const Prm::IType slowStart(Interpolation::Bezier, 1.0 / 3.0, 0.0, 2.0 / 3.0, 2.0 / 3.0);
    height.vSetInterpolationData(slowStart, 0, View());
    height.vSetExtrapolationAfter(Extrapolation::Linear);
    // [shape]
    for (int frame = 0; frame <= 36; frame += 6)
        out << "frame " << frame << ": " << height.value(Time::fromInt(frame)) << '\n';

    // With control points at a third and two thirds of the time, the curve is a cubic in the time itself.
    const auto isAbout = [](double value, double expected) { return std::abs(value - expected) < 1e-9; };
    const double x = 6.0 / 24.0;
    const bool shapes = isAbout(slowAtBothEnds, 100.0 * (3.0 - 2.0 * x) * x * x) &&
                        isAbout(height.value(Time::fromInt(6)), 100.0 * (2.0 - x) * x * x);
    const bool straight = isAbout(height.value(Time::fromInt(36)), 150.0);
    return shapes && straight ? 0 : 1;
}

// Interpolations of the host: a ball that falls and bounces, and a class of parameter that changes in steps.

#include "prm/CurveKinds.h"
#include "prm/NumericParameter.h"

#include <QTextStream>

#include <cmath>

using Prm::Interpolation;
using Prm::IType;
using Prm::Time;
using Prm::View;

// [bounce]
// Reaches the end after a quarter swing, then bounces shape.x1 times, lower and lower.
double bounce(const IType& shape, double x) {
    constexpr double quarterSwing = 1.570796326794896619;
    const double height = std::abs(std::cos(quarterSwing * (1.0 + 2.0 * shape.x1) * x)) * (1.0 - x);
    return 1.0 - height;
}
// [bounce]

// [hook]
/// A class of a host: of each change, one half happens at once, the other half at the next keyframe.
class HalfSteps : public Prm::NumericParameter<double> {
public:
    using NumericParameter::NumericParameter;

    double interpolateValue(const Prm::BoundingKeyframes& around, const Prm::Context&, Prm::Cache*) const override {
        const double from = keyframeValue(around.before.index, around.before.view);
        return (from + keyframeValue(around.after.index, around.after.view)) / 2.0;
    }
};
// [hook]

int main() {
    QTextStream out(stdout);
    // [register]
    // Once in the process, before anything is evaluated.
    if (!Prm::registerInterpolation(Interpolation::Custom0, bounce))
        return 1;
    // [register]

    Prm::NumericParameter<double> height("height");
    height.vSetValue(40.0, Time::fromInt(0));
    height.vSetValue(0.0, Time::fromInt(35));
    height.vSetInterpolationData(IType(Interpolation::Custom0, 3.0), 0, View());

    double highestAfterTheFall = 0.0;
    for (int frame = 0; frame <= 35; ++frame) {
        const double value = height.value(Time::fromInt(frame));
        out << QString(qRound(value), ' ') << "o\n";
        if (frame > 5)
            highestAfterTheFall = qMax(highestAfterTheFall, value);
    }
    const bool falls = height.value(Time::fromInt(0)) == 40.0 && height.value(Time::fromInt(35)) == 0.0;
    const bool lands = std::abs(height.value(Time::fromInt(5))) < 1e-9;
    const bool bounces = highestAfterTheFall > 20.0 && highestAfterTheFall < 40.0;

    HalfSteps level("level");
    level.vSetValue(0.0, Time::fromInt(0));
    level.vSetValue(8.0, Time::fromInt(10));
    out << "in half steps:";
    for (const int frame : {0, 1, 9, 10})
        out << ' ' << level.value(Time::fromInt(frame));
    out << '\n';
    return falls && lands && bounces && level.value(Time::fromInt(1)) == 4.0 ? 0 : 1;
}

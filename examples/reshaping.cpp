// Reshaping curves as a whole: each edit is done, shown by what it makes of the curve, and undone.

#include "prm/NumericParameter.h"
#include "prm/ReshapingEdits.h"

#include <QTextStream>

#include <cmath>

using Prm::KeyframeSpan;
using Prm::Time;
using Prm::View;

namespace {

/// Does the edit, shows the keyframes, and undoes it.
void show(const char* title, const Prm::NumericParameter<double>& number, Prm::ParameterReshapeEdit& edit) {
    edit.doIt();
    QTextStream out(stdout);
    out << title << ": " << number.keyframeCount({}) << " keyframes\n";
    for (unsigned i = 0; i < number.keyframeCount({}); ++i) {
        const auto keyframe = number.keyframe(i, {});
        out << "    " << keyframe.time.toDouble() << " = " << keyframe.value << '\n';
    }
    edit.undoIt();
}

} // namespace

int main() {
    Prm::NumericParameter<double> angle("angle"), measured("measured");
    angle.vSetValue(0.0, Time::fromInt(0));
    angle.vSetValue(90.0, Time::fromInt(20));
    angle.vSetInterpolation(Prm::Interpolation::Bezier, Time::fromInt(0));
    for (int i = 0; i <= 100; ++i)
        measured.vSetValue(std::sin(i / 16.0), Time::fromInt(i));
    const QVector<Prm::Context> before = angle.allKeyframes();

    // [insert]
    Prm::ParameterInsertKeyframeEdit insert(angle, {Time::fromInt(8), View()}); // the curve stays as it was
    if (!insert.refusal().isEmpty())
        return 1;
    // [insert]
    // [ease]
    Prm::ParameterEaseEdit ease(angle, KeyframeSpan(), *Prm::Easing::find("bounce-out"));
    // [ease]
    // [simplify]
    Prm::ParameterSimplifyEdit simplify(measured, KeyframeSpan().between(Time::fromInt(10), Time::LAST), 0.001);
    // [simplify]
    // [bake]
    Prm::ParameterBakeEdit bake(angle, KeyframeSpan().in(View()), 5.0); // every five frames
    // [bake]
    // [smooth]
    Prm::ParameterSmoothEdit smooth(measured, KeyframeSpan(), 4.0, 0.01);
    // [smooth]
    // [reverse]
    Prm::ParameterReverseEdit reverse(angle, KeyframeSpan());
    // [reverse]
    // [values]
    Prm::ParameterScaleValuesEdit mirror(angle, KeyframeSpan(), Prm::ValueScaling::mirrored(45.0));
    // [values]

    show("insert", angle, insert);
    show("ease", angle, ease);
    show("simplify", measured, simplify);
    show("bake", angle, bake);
    show("smooth", measured, smooth);
    show("reverse", angle, reverse);
    show("values", angle, mirror);
    return angle.allKeyframes() == before && measured.keyframeCount({}) == 101 ? 0 : 1;
}

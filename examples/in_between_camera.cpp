// A rig of cameras, 0 to 10, of which only the outer two have keyframes: the others are computed from these two.

#include "prm/CurveParameter.h"

#include <QTextStream>

using Prm::Context;
using Prm::MVInterpolationParams;
using Prm::Time;
using Prm::View;

int main() {
    QTextStream out(stdout);
    Prm::PointParameter position("position");
    for (const View camera : {View(0), View(10)}) {
        const double x = camera.id() * 2.0;
        position.vSetValue({x, 1.0}, Context(Time::fromInt(0), camera));
        position.vSetValue({x, 9.0}, Context(Time::fromInt(20), camera));
    }

    const auto seenFrom = [&](View camera) { return position.value(Context(Time::fromInt(10), camera)); };
    const auto show = [&](const char* mode) {
        out << mode;
        for (const View camera : {View(0), View(5), View(7), View(10)})
            out << "    camera " << camera.id() << ": " << seenFrom(camera).x() << ' ' << seenFrom(camera).y();
        out << '\n';
    };
    show("off:    ");
    const QPointF source = seenFrom(View(5));

    position.setViewInterpolation({MVInterpolationParams::Nearest});
    show("nearest:");
    const QPointF nearest = seenFrom(View(7));

    // [between]
    position.setViewInterpolation({MVInterpolationParams::Linear});
    const QPointF between = position.value(Context(Time::fromInt(10), View(5)));
    // [between]
    show("linear: ");

    const auto is = [](QPointF at, double x, double y) { return at.x() == x && at.y() == y; };
    return is(source, 0.0, 5.0) && is(nearest, 20.0, 5.0) && is(between, 10.0, 5.0) ? 0 : 1;
}

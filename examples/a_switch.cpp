// A switch over time. Values that do not blend hold from one keyframe to the next.

#include "prm/Parameter.h"

#include <QTextStream>

using Prm::Context;
using Prm::Frame;
using Prm::Time;
using Prm::View;

int main() {
    QTextStream out(stdout);
    // [switch]
    Prm::Parameter<bool> enabled("enabled", true);
    enabled.vSetValue(false, Time::fromInt(3));
    enabled.vSetValue(true, Time::fromInt(6));
    // [switch]

    QString drawn;
    const QVector<bool> values = enabled.sampleValues(Frame::fromInt(0), Frame::fromInt(9), View());
    for (const bool on : values)
        drawn += on ? '#' : '.';
    out << "frames 0 to 9: " << drawn << '\n';

    Time nearest;
    enabled.bNearestKeyframeTime(Time::fromInt(5), nearest);
    out << "the keyframe nearest to frame 5 is at " << nearest.toDouble() << '\n';

    int removed = 0;
    const auto onChanged = [&](Prm::ParameterChange& change) {
        if (change.type == Prm::ParameterChange::KEYFRAME_REMOVED)
            ++removed;
    };
    QObject::connect(&enabled, &Prm::ParameterWithoutType::changed, &enabled, onChanged, Qt::DirectConnection);

    // Without its last keyframe a parameter keeps that keyframe's value, at all times.
    enabled.vDeleteKeyframe(Context::Explicit(Time::fromInt(3), View()));
    enabled.vDeleteKeyframe(Context::Explicit(Time::fromInt(6), View()));
    const bool atStart = enabled.value(Time::fromInt(0));
    out << removed << " keyframes removed; without any it is " << (atStart ? "on" : "off") << '\n';

    return drawn == "......####" && nearest == Time::fromInt(6) && removed == 2 && atStart ? 0 : 1;
}

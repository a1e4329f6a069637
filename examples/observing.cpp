// Receiving changes, with a slot and with a lambda, and receiving fewer of them.

#include "host/bsc/ScopedSignalBlocker.h"
#include "prm/NumericParameter.h"

#include <QStringList>
#include <QTextStream>

using Prm::ParameterChange;
using Prm::Time;

namespace {

// [slot]
/// Writes a line for every change that it receives.
class Journal : public QObject {
    Q_OBJECT

public:
    QStringList lines;

public Q_SLOTS:
    void onChanged(Prm::ParameterChange& change) {
        QString line = change.typeToString();
        // The first five types concern one keyframe, or the static value, which has no index.
        if (change.type <= ParameterChange::KEYFRAME_CHANGED_INTERPOLATION &&
            change.affectedIndex != Prm::KeyframeIndex::INVALID_INDEX)
            line += QStringLiteral(" at frame %1").arg(timeOfKeyframe(change).toDouble());
        lines << line;
    }

private:
    static Time timeOfKeyframe(const ParameterChange& change) {
        if (change.type == ParameterChange::KEYFRAME_REMOVED)
            return change.context.time;
        return change.parameter->keyframeTime(change.affectedIndex, change.context.view).time;
    }
};
// [slot]

} // namespace

int main() {
    QTextStream out(stdout);
    Prm::NumericParameter<double> opacity("opacity");
    Journal journal;
    // [attach]
    opacity.attachObserver(&journal, SLOT(onChanged(Prm::ParameterChange&)));
    // [attach]

    int redrawn = 0;
    // [lambda]
    const auto redraw = [&](ParameterChange& change) {
        if (change.type != ParameterChange::PARAMETER_LOCKED_CHANGED) // changes no picture
            ++redrawn;
    };
    QObject::connect(&opacity, &Prm::ParameterWithoutType::changed, &journal, redraw, Qt::DirectConnection);
    // [lambda]

    opacity.vSetValue(0.0, Time::fromInt(0));
    opacity.vSetValue(1.0, Time::fromInt(24));
    opacity.vSetInterpolation(Prm::Interpolation::Bezier, Time::fromInt(0));

    // [switch]
    // One type of change fewer, for all observers of the parameter.
    opacity.enableNotifications(ParameterChange::KEYFRAME_CHANGED_VALUE, false);
    opacity.vSetValue(0.5, Time::fromInt(12)); // only KEYFRAME_ADDED is emitted
    opacity.enableNotifications(ParameterChange::KEYFRAME_CHANGED_VALUE, true);
    // [switch]

    // [block]
    {
        // A hundred edits, announced as one change. Removals are still emitted, so that data can be freed at once.
        const Bsc::ScopedSignalBlocker silence(opacity);
        const Prm::ScopedSignalPermit removals(opacity, ParameterChange::KEYFRAME_REMOVED);
        for (int frame = 100; frame < 200; ++frame)
            opacity.vSetValue(frame / 200.0, Time::fromInt(frame));
        opacity.vDeleteKeyframe(Prm::Context::Explicit(Time::fromInt(12), {}));
    }
    ParameterChange::parameterAssigned(opacity);
    // [block]

    for (const QString& line : qAsConst(journal.lines))
        out << line << '\n';
    out << "redrawn " << redrawn << " times\n";
    return journal.lines.size() == 8 && journal.lines.at(6) == "KEYFRAME_REMOVED at frame 12" && redrawn == 8 ? 0 : 1;
}

#include "observing.moc"

// An offset for two eyes: one curve for both at first, then one of its own for the right eye.

#include "prm/NumericParameter.h"

#include <QStringList>
#include <QTextStream>

using Prm::Context;
using Prm::Time;
using Prm::View;

class Recorder : public QObject {
    Q_OBJECT
public:
    QStringList received;
public Q_SLOTS:
    void onChanged(Prm::ParameterChange& change) {
        received << change.typeToString() + " in view " + QString::number(change.context.view.id());
    }
};

int main() {
    QTextStream out(stdout);
    const View left(0);
    const View right(1);
    const Time start = Time::fromInt(0);
    Prm::NumericParameter<double> offset("offset");
    const auto show = [&](const char* when) {
        out << when << ": left " << offset.value(Context(start, left)) << ", right "
            << offset.value(Context(start, right)) << '\n';
    };

    offset.vSetValue(3.0, Context(start, left));
    show("one curve for both");
    const bool shared = !offset.isSplit() && offset.value(Context(start, right)) == 3.0;

    Recorder recorder;
    offset.attachObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&)));
    // [split]
    // A copy of what the right eye has shown. Without it, the next line would start an empty curve there.
    offset.uniquifyView(right);
    offset.vSetValue(-3.0, Context(start, right));
    // [split]
    show("split");
    const bool split =
        offset.isSplit() && offset.value(Context(start, left)) == 3.0 && offset.value(Context(start, right)) == -3.0;

    offset.deleteView(right);
    show("joined again");
    const bool joined = !offset.isSplit() && offset.value(Context(start, right)) == 3.0;

    for (const QString& line : qAsConst(recorder.received))
        out << "    received " << line << '\n';
    const QStringList expected{"VIEW_ADDED in view 1", "VALUE_CHANGED in view 1", "KEYFRAME_CHANGED_VALUE in view 1",
                               "VIEW_REMOVED in view 1"};
    return shared && split && joined && recorder.received == expected ? 0 : 1;
}

#include "stereo_offset.moc"

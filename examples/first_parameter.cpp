// A number over time, and an observer: the first program of the README.

// [first]
#include "prm/NumericParameter.h"

#include <QTextStream>

// Receives every change before the call that makes it returns.
class Observer : public QObject {
    Q_OBJECT
public:
    int received = 0;
public Q_SLOTS:
    void onChanged(Prm::ParameterChange& change) {
        ++received;
        QTextStream(stdout) << "    received " << change.typeToString() << '\n';
    }
};

int main() {
    QTextStream out(stdout);
    Prm::NumericParameter<double> opacity("opacity");
    Observer observer;
    opacity.attachObserver(&observer, SLOT(onChanged(Prm::ParameterChange&)));

    out << "opacity is 0 at frame 0 and 1 at frame 24:" << Qt::endl;
    opacity.vSetValue(0.0, Prm::Time::fromInt(0));
    opacity.vSetValue(1.0, Prm::Time::fromInt(24));

    for (int frame = 0; frame <= 24; frame += 6)
        out << "frame " << frame << ": " << opacity.value(Prm::Time::fromInt(frame)) << '\n';
    return opacity.value(Prm::Time::fromInt(12)) == 0.5 && observer.received == 4 ? 0 : 1;
}

// A class with Q_OBJECT in a source file needs this line, with that file's name.
#include "first_parameter.moc"
// [first]

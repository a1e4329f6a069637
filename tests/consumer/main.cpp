#include "prm/NumericParameter.h"
#include "prm/Parameter.hpp"

#include <QTextStream>

// A value type that has no curve.
struct Fraction {
    int top = 0;
    int bottom = 1;
};
Q_DECLARE_METATYPE(Fraction)

template <> struct Prm::ValueType<Fraction> : Prm::GeneralValueType<Fraction> {
    static bool equal(const Fraction& a, const Fraction& b) { return a.top == b.top && a.bottom == b.bottom; }
    static void write(QString& text, const Fraction& fraction) {
        text += QString::number(fraction.top) + '/' + QString::number(fraction.bottom);
    }
    static Fraction read(const QString& text) {
        return {text.section('/', 0, 0).toInt(), text.section('/', 1, 1).toInt()};
    }
    static void addToHash(Bsc::Hash& hash, const Fraction& fraction) {
        ValueType<int>::addToHash(hash, fraction.top);
        ValueType<int>::addToHash(hash, fraction.bottom);
    }
};

template class Prm::Parameter<Fraction>;

// For the debugger, which reads it from the program without running it.
extern const Prm::Context moment;
const Prm::Context moment(Prm::Time::fromDouble(12.5), Prm::View(1));

int main() {
    Prm::Parameter<Fraction> shutter("shutter");
    shutter.vSetValue({1, 2}, Prm::Time::fromInt(0));
    shutter.vSetValue({1, 4}, Prm::Time::fromInt(10));
    Prm::NumericParameter<double> opacity("opacity");
    opacity.vSetValue(0, Prm::Time::fromInt(0));
    opacity.vSetValue(1, Prm::Time::fromInt(25));

    QTextStream out(stdout);
    shutter.bStreamOut(out, QString(), true);
    const Fraction found = shutter.value(Prm::Time::fromInt(9));
    out << found.top << '/' << found.bottom << ' ' << opacity.value(moment.time) << '\n';
    return found.bottom == 2 && opacity.value(moment.time) == 0.5 ? 0 : 1;
}

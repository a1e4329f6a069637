#include "prm/NumericParameter.h"
#include "prm/Parameter.hpp"

#include <QTextStream>

// A value type that the library does not bring.
template class Prm::Parameter<short>;

int main() {
    Prm::Parameter<short> shutter("shutter");
    shutter.vSetValue(2, Prm::Time::fromInt(0));
    shutter.vSetValue(4, Prm::Time::fromInt(10));
    Prm::NumericParameter<double> opacity("opacity");
    opacity.vSetValue(0, Prm::Time::fromInt(0));

    // Linked from the library.
    Prm::detail::default_Parameter_setVariantValue_impl<double>(opacity, 1, Prm::Time::fromInt(25));

    QTextStream out(stdout);
    shutter.bStreamOut(out, QString(), true);
    out << shutter.value(Prm::Time::fromInt(9)) << ' ' << opacity.value(Prm::Time::fromDouble(12.5)) << '\n';
}

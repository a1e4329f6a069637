#include "prm/NumericParameter.h"
#include "prm/Parameter.hpp"

#include <QTextStream>

// A value type that the library does not bring.
template class Prm::Parameter<short>;

/// A kind of the host's own, and one that derives from it. Neither constructs the virtual base.
struct Dial : Prm::NumericParameter<double> {
    using NumericParameter::NumericParameter;
    Dial(const Dial& other) = default;
};
struct LockedDial : Dial {
    using Dial::Dial;
};

int main() {
    Prm::Parameter<short> shutter("shutter");
    shutter.vSetValue(2, Prm::Time::fromInt(0));
    shutter.vSetValue(4, Prm::Time::fromInt(10));
    Prm::NumericParameter<double> opacity("opacity");
    opacity.vSetValue(0, Prm::Time::fromInt(0));

    // Linked from the library.
    Prm::detail::default_Parameter_setVariantValue_impl<double>(opacity, 1, Prm::Time::fromInt(25));

    QTextStream out(stdout);
    const LockedDial dial("dial", 1.0, Prm::Locked);
    out << LockedDial(dial).scriptName() << ' ' << dial.isLocked() << '\n';
    shutter.bStreamOut(out, QString(), true);
    out << shutter.value(Prm::Time::fromInt(9)) << ' ' << opacity.value(Prm::Time::fromDouble(12.5)) << '\n';
}

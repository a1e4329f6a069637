#include "tests/plugin/Colour.h"

#include "prm/CurveParameter.hpp"

#include <QStringList>

void Prm::ValueType<Colour>::write(QString& text, const Colour& colour) {
    for (int i = 0; i < componentCount; ++i) {
        text += i > 0 ? QStringLiteral(" ") : QString();
        ValueType<double>::write(text, component(colour, i));
    }
}

Colour Prm::ValueType<Colour>::read(const QString& text) {
    const QStringList numbers = text.split(QLatin1Char(' '));
    const auto number = [&](int i) { return ValueType<double>::read(numbers.value(i)); };
    return {number(0), number(1), number(2)};
}

template class Prm::Parameter<Colour>;
template class Prm::CurveParameter<Colour>;

DimmedColour::DimmedColour(const Prm::NumericParameter<double>& brightness) : m_brightness(brightness) {}

Colour DimmedColour::interpolateValue(const Prm::BoundingKeyframes& around, const Prm::Context& context,
                                      Prm::Cache* cache) const {
    const Colour full = CurveParameter::interpolateValue(around, context, cache);
    const double part = m_brightness.value(context);
    return {full.red * part, full.green * part, full.blue * part};
}

/// For a program that knows nothing of the library.
extern "C" Q_DECL_EXPORT double dimmedRed() {
    Prm::NumericParameter<double> brightness;
    brightness.vSetValue(0, Prm::Context(Prm::Time::fromInt(0)));
    brightness.vSetValue(1, Prm::Context(Prm::Time::fromInt(10)));
    DimmedColour dimmed(brightness);
    dimmed.vSetValue({1, 1, 1}, Prm::Context(Prm::Time::fromInt(0)));
    dimmed.vSetValue({1, 1, 1}, Prm::Context(Prm::Time::fromInt(10)));
    return dimmed.value(Prm::Context(Prm::Time::fromInt(5))).red;
}

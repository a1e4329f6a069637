#pragma once

#include "prm/CurveParameter.h"
#include "prm/NumericParameter.h"

#include <QMetaType>

#include <array>

/// Exported, and with it the parameters of it.
struct Q_DECL_EXPORT Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
};
Q_DECLARE_METATYPE(Colour)

inline bool operator==(const Colour& a, const Colour& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

template <> struct Prm::ValueType<Colour> : Prm::GeneralValueType<Colour> {
    static void write(QString& text, const Colour& colour);
    static Colour read(const QString& text);
    static constexpr int componentCount = 3;
    static double component(const Colour& colour, int i) {
        return i == 0 ? colour.red : i == 1 ? colour.green : colour.blue;
    }
    static Colour fromComponents(const double* part) { return {part[0], part[1], part[2]}; }
};

extern template class Prm::Parameter<Colour>;
extern template class Prm::CurveParameter<Colour>;

/// Its curve is dimmed by a number that it asks for inside.
class Q_DECL_EXPORT DimmedColour : public Prm::CurveParameter<Colour> {
public:
    explicit DimmedColour(const Prm::NumericParameter<double>& brightness);
    Colour interpolateValue(const Prm::BoundingKeyframes& around, const Prm::Context& context,
                            Prm::Cache* cache) const override;

private:
    const Prm::NumericParameter<double>& m_brightness;
};

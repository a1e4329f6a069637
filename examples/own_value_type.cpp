// A colour type of the host as the value of a parameter, with curves.

// [include]
#include "prm/CurveParameter.hpp"
// [include]

#include <QStringList>
#include <QTextStream>

#include <array>

// [type]
struct Colour {
    std::array<double, 3> rgb{};
};
Q_DECLARE_METATYPE(Colour)

template <> struct Prm::ValueType<Colour> : Prm::GeneralValueType<Colour> {
    static bool equal(const Colour& a, const Colour& b) { return a.rgb == b.rgb; }

    static void write(QString& text, const Colour& colour) {
        for (std::size_t i = 0; i < colour.rgb.size(); ++i) {
            text += i > 0 ? QStringLiteral(" ") : QString();
            ValueType<double>::write(text, colour.rgb[i]);
        }
    }
    static Colour read(const QString& text) {
        const QStringList numbers = text.split(' ', Qt::SkipEmptyParts);
        Colour colour;
        for (std::size_t i = 0; i < colour.rgb.size(); ++i)
            colour.rgb[i] = ValueType<double>::read(numbers.value(static_cast<int>(i)));
        return colour;
    }
    static void addToHash(Bsc::Hash& hash, const Colour& colour) {
        for (const double number : colour.rgb)
            ValueType<double>::addToHash(hash, number);
    }

    // [blend]
    static constexpr int componentCount = 3;
    static double component(const Colour& colour, int i) { return colour.rgb[static_cast<std::size_t>(i)]; }
    static Colour fromComponents(const double* components) { return {{components[0], components[1], components[2]}}; }
    // [blend]
};
// [type]

// [instantiate]
template class Prm::Parameter<Colour>;
template class Prm::CurveParameter<Colour>;
// [instantiate]

int main() {
    QTextStream out(stdout);
    const Prm::View view;
    Prm::CurveParameter<Colour> tint("tint");
    tint.vSetValue({{0.0, 0.5, 0.25}}, Prm::Time::fromInt(0));
    tint.vSetValue({{1.0, 0.5, 0.75}}, Prm::Time::fromInt(10));

    const QVector<Colour> colours = tint.sampleValues(Prm::Frame::fromInt(0), Prm::Frame::fromInt(10), view);
    for (const Colour& colour : colours) {
        QString text;
        Prm::ValueType<Colour>::write(text, colour);
        out << text << '\n';
    }

    // The same through the untyped interface, and as project text.
    const Prm::ParameterWithoutType& untyped = tint;
    const auto middle = untyped.variantValue(Prm::Time::fromInt(5)).value<Colour>();
    QString lines;
    QTextStream stream(&lines);
    untyped.bStreamOut(stream, "", true);
    out << lines;

    const bool blended = colours.size() == 11 && middle.rgb == std::array<double, 3>{0.5, 0.5, 0.5};
    return blended && lines.contains("tint.keyframes.append( Key( 10, 1 0.5 0.75, Linear ) )") ? 0 : 1;
}

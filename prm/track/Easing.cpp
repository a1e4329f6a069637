#include "prm/Easing.h"

#include <algorithm>
#include <initializer_list>

namespace Prm {

namespace {

constexpr double third = 1.0 / 3.0;
/// The overshoot of the published "back" functions, of one tenth.
constexpr double overshoot = 1.70158;

struct Named {
    const char* name;
    double x1;
    double y1;
    double x2;
    double y2;
};

/// From Cascading Style Sheets, "CSS Easing Functions Level 1". The powers 2 and 3, and "back", are polynomials of the
/// third degree, which a Bezier says exactly. The others are the approximations that easing tables on the web list.
constexpr std::initializer_list<Named> shapes = {
    {"ease", 0.25, 0.1, 0.25, 1},
    {"ease-in", 0.42, 0, 1, 1},
    {"ease-out", 0, 0, 0.58, 1},
    {"ease-in-out", 0.42, 0, 0.58, 1},
    {"sine-in", 0.12, 0, 0.39, 0},
    {"sine-out", 0.61, 1, 0.88, 1},
    {"sine-in-out", 0.37, 0, 0.63, 1},
    {"quad-in", third, 0, 2 * third, third},
    {"quad-out", third, 2 * third, 2 * third, 1},
    {"quad-in-out", 0.45, 0, 0.55, 1},
    {"cubic-in", third, 0, 2 * third, 0},
    {"cubic-out", third, 1, 2 * third, 1},
    {"cubic-in-out", 0.65, 0, 0.35, 1},
    {"quart-in", 0.5, 0, 0.75, 0},
    {"quart-out", 0.25, 1, 0.5, 1},
    {"quart-in-out", 0.76, 0, 0.24, 1},
    {"quint-in", 0.64, 0, 0.78, 0},
    {"quint-out", 0.22, 1, 0.36, 1},
    {"quint-in-out", 0.83, 0, 0.17, 1},
    {"expo-in", 0.7, 0, 0.84, 0},
    {"expo-out", 0.16, 1, 0.3, 1},
    {"expo-in-out", 0.87, 0, 0.13, 1},
    {"circ-in", 0.55, 0, 1, 0.45},
    {"circ-out", 0, 0.55, 0.45, 1},
    {"circ-in-out", 0.85, 0, 0.15, 1},
    {"back-in", third, 0, 2 * third, -overshoot* third},
    {"back-out", third, 1 + overshoot* third, 2 * third, 1},
    {"back-in-out", 0.68, -0.6, 0.32, 1.6},
};

using Parts = std::vector<Easing::Part>;

IType bezier(double x1, double y1, double x2, double y2) {
    return {Interpolation::Bezier, x1, y1, x2, y2};
}

/// Arcs of parabolas, exactly. Each is keyed at its top, because it begins and ends at one value.
Parts bounceOut() {
    const IType falling = bezier(third, 0, 2 * third, third);
    const IType rising = bezier(third, 2 * third, 2 * third, 1);
    return {{4 / 11., 1, falling},  {6 / 11., 0.75, rising},        {8 / 11., 1, falling}, {9 / 11., 0.9375, rising},
            {10 / 11., 1, falling}, {10.5 / 11., 0.984375, rising}, {1, 1, falling}};
}

/// 1 + 2^(-10 x) sin((10 x - 0.75) 2 pi / 3), keyed where it turns: every 0.15, with 2^-1.5 of the height before. So
/// all half waves have one shape; it was fitted, as was that of the first part.
Parts elasticOut() {
    constexpr int turnCount = 6;
    const IType wave = bezier(0.294, 0, 0.5437, 1);
    Parts all;
    double height = 0.3730980450125883;
    for (int i = 0; i < turnCount; ++i, height *= -0.35355339059327379)
        all.push_back({0.1347398856535947 + 0.15 * i, 1.0 + height, i == 0 ? bezier(0.33, 0.25, 0.55, 1) : wave});
    all.push_back({1, 1, wave});
    return all;
}

/// The same that begins with what it ended with: part i leads from the end of the one before it.
Parts turned(const Parts& parts) {
    Parts all;
    for (std::size_t i = parts.size(); i-- > 0;) {
        const IType& shape = parts[i].shape;
        const bool isFirst = i == 0;
        all.push_back({isFirst ? 1.0 : 1.0 - parts[i - 1].time, isFirst ? 1.0 : 1.0 - parts[i - 1].change,
                       bezier(1.0 - shape.x2, 1.0 - shape.y2, 1.0 - shape.x1, 1.0 - shape.y1)});
    }
    return all;
}

/// One after the other, each in half the time and for half the change.
Parts joined(const Parts& first, const Parts& second) {
    Parts all;
    for (const Easing::Part& part : first)
        all.push_back({part.time / 2.0, part.change / 2.0, part.shape});
    for (const Easing::Part& part : second)
        all.push_back({0.5 + part.time / 2.0, 0.5 + part.change / 2.0, part.shape});
    return all;
}

std::vector<Easing> allPresets() {
    std::vector<Easing> all{{QStringLiteral("hold"), {{1, 1, Interpolation::Constant}}},
                            {QStringLiteral("linear"), {{1, 1, Interpolation::Linear}}}};
    for (const Named& one : shapes)
        all.push_back({QString::fromLatin1(one.name), {{1, 1, bezier(one.x1, one.y1, one.x2, one.y2)}}});
    for (const auto& [name, out] : {std::make_pair("bounce", bounceOut()), std::make_pair("elastic", elasticOut())}) {
        const QString start = QString::fromLatin1(name);
        all.push_back({start + QLatin1String("-in"), turned(out)});
        all.push_back({start + QLatin1String("-out"), out});
        all.push_back({start + QLatin1String("-in-out"), joined(turned(out), out)});
    }
    return all;
}

QString plain(const QString& name) {
    QString letters;
    std::copy_if(name.begin(), name.end(), std::back_inserter(letters), [](QChar c) { return c.isLetter(); });
    return letters.toLower();
}

/// "ease-in-out-sine" for "sine-in-out"; the names of Cascading Style Sheets have one form.
QString otherForm(const QString& name) {
    const int hyphen = name.indexOf(QLatin1Char('-'));
    return QLatin1String("ease") + name.mid(std::max(0, hyphen)) + (hyphen < 0 ? QString() : name.left(hyphen));
}

} // namespace

const std::vector<Easing>& Easing::presets() {
    static const std::vector<Easing> all = allPresets();
    return all;
}

const Easing* Easing::find(const QString& name) {
    const QString wanted = plain(name);
    const auto isNamed = [&](const Easing& one) {
        return plain(one.name) == wanted || plain(otherForm(one.name)) == wanted;
    };
    const auto found = std::find_if(presets().begin(), presets().end(), isNamed);
    return found == presets().end() ? nullptr : &*found;
}

} // namespace Prm

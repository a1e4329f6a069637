#include "tool/PlotScale.h"

#include <algorithm>
#include <cmath>

namespace Tool {

namespace {

/// 1, 2 or 5 times a power of ten, not below `least`.
double roundStep(double least) {
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least)
            return factor * power;
    }
    return 10 * power;
}

QString label(double number, double step) {
    constexpr double plainFrom = 1e-5;
    constexpr double plainTo = 1e7;
    if (number == 0)
        return "0";
    const int digits = static_cast<int>(std::ceil(std::log10(std::abs(number) / step) - 1e-9)) + 1;
    const bool isPlain = step >= plainFrom && std::abs(number) < plainTo;
    const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    return isPlain ? QString::number(number, 'f', decimals)
                   : QString::number(number, 'g', std::min(std::max(digits, 1), 17));
}

QVector<PlotTick> ticksAt(const PlotRange& range, double step) {
    const double first = std::ceil(range.first / step - 1e-9);
    const double last = std::floor(range.last / step + 1e-9);
    QVector<PlotTick> found;
    for (int i = 0; i <= static_cast<int>(last - first); ++i)
        found.append({(first + i) * step, label((first + i) * step, step)});
    return found;
}

} // namespace

PlotRange withMargin(double least, double greatest) {
    constexpr double part = 0.05;
    constexpr double narrowest = 1e-9;
    constexpr double zero = 1e-300;
    const double size = std::max(std::abs(least), std::abs(greatest));
    if (size < zero || greatest - least <= size * narrowest) {
        const double room = size < zero ? 1 : size / 2;
        return {least - room, greatest + room};
    }
    const double room = (greatest - least) * part;
    return {least - room, greatest + room};
}

QVector<PlotTick> ticks(const PlotRange& range, int most) {
    constexpr double finer = 0.39;
    // Room for one more, as a range may begin and end on a tick.
    double step = roundStep(range.length() / std::max(most - 1, 1));
    QVector<PlotTick> found = ticksAt(range, step);
    // One alone does not show the scale.
    while (found.size() < 2) {
        step = roundStep(finer * step);
        found = ticksAt(range, step);
    }
    return found;
}

} // namespace Tool

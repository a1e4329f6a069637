#include "prm/track/DecimalNumbers.h"

#include <QtGlobal>

#include <array>
#include <cmath>

namespace Prm::detail {

double decimalSum(double a, double b) {
    constexpr std::array<double, 17> powers{1e0, 1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7, 1e8,
                                            1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};
    constexpr double most = 0x1p53;
    const double plain = a + b;
    for (const double power : powers) {
        const double wholeA = std::nearbyint(a * power);
        const double wholeB = std::nearbyint(b * power);
        if (!(std::abs(wholeA) <= 2.0 * most && std::abs(wholeB) <= 2.0 * most))
            return plain;
        if (wholeA / power != a || wholeB / power != b)
            continue;
        const auto sum = static_cast<qint64>(wholeA) + static_cast<qint64>(wholeB);
        return std::abs(static_cast<double>(sum)) <= most ? static_cast<double>(sum) / power : plain;
    }
    return plain;
}

} // namespace Prm::detail

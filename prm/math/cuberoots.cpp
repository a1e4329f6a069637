#include "prm/math/cuberoots.h"

#include <cmath>

namespace Prm {

namespace {

constexpr double sqrt3 = 1.7320508075688772;
constexpr double halfSqrt3 = 0.8660254037844386;
constexpr double sixth = 0.16666666666666666;

void sineAndCosine(double angle, double& sine, double& cosine) {
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
    ::sincos(angle, &sine, &cosine);
#else
    sine = std::sin(angle);
    cosine = std::cos(angle);
#endif
}

void setRoot(double root[2], double real, double imaginary) {
    root[0] = real;
    root[1] = imaginary;
}

/// x (x^2 + a2 x + a1)
int rootsThroughZero(double a1, double a2, double roots[][2]) {
    const double h = 0.5 * a2;
    const double d = h * h - a1;
    setRoot(roots[0], 0.0, 0.0);
    if (d >= 0.0) {
        const double larger = std::sqrt(d) - h;
        setRoot(roots[1], larger, 0.0);
        setRoot(roots[2], -a2 - larger, 0.0);
        return 3;
    }
    const double imaginary = std::sqrt(-d);
    setRoot(roots[1], -h, imaginary);
    setRoot(roots[2], -h, -imaginary);
    return 1;
}

int threeRealRoots(double q, double r, double d, double a2, double s, double roots[][2]) {
    const double y = std::sqrt(-d);
    const double theta = std::atan2(y, r) / 3.0;
    const double rho = std::pow(r * r - d, sixth);
    double sine = 0.0;
    double cosine = 0.0;
    sineAndCosine(theta, sine, cosine);
    const double c = rho * cosine;
    const double n = rho * sine;
    const double u = c - q * c / (rho * rho);
    const double v = q * n / (rho * rho);
    setRoot(roots[0], u - s, 0.0);
    setRoot(roots[1], -(sqrt3 * (n - v) + u) * 0.5 - s, 0.0);
    setRoot(roots[2], -a2 - roots[0][0] - roots[1][0], 0.0);
    return 3;
}

int oneRealRoot(double q, double r, double d, double s, double roots[][2]) {
    const double a = std::cbrt(std::sqrt(d) + r);
    const double b = -q / a;
    const double real = -(a + b) * 0.5 - s;
    const double imaginary = (a - b) * halfSqrt3;
    setRoot(roots[0], a + b - s, 0.0);
    setRoot(roots[1], real, imaginary);
    setRoot(roots[2], real, -imaginary);
    return 1;
}

} // namespace

int cuberoots(const double* coeffs, double roots[][2]) {
    const double a0 = coeffs[0];
    const double a1 = coeffs[1];
    const double a2 = coeffs[2];
    if (a0 == 0.0)
        return rootsThroughZero(a1, a2, roots);
    const double s = a2 / 3.0;
    const double q = a1 / 3.0 - s * s;
    const double r = 0.5 * (a1 * s - a0) - std::pow(s, 3.0);
    const double d = std::pow(q, 3.0) + std::pow(r, 2.0);
    if (d > 0.0)
        return oneRealRoot(q, r, d, s, roots);
    return threeRealRoots(q, r, d, a2, s, roots);
}

} // namespace Prm

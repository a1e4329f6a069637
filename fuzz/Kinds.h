#pragma once

// Functions for the first custom kinds; the others have none.

#include "prm/CurveKinds.h"

#include <cmath>

inline const bool kindsAreRegistered =
    Prm::registerInterpolation(Prm::Interpolation::Custom0,
                               [](const Prm::IType& shape, double x) { return x * x + shape.x1; }) &&
    Prm::registerExtrapolation(Prm::Extrapolation::Custom0, [](Prm::Time time, Prm::Time first, Prm::Time last) {
        return Prm::Time::fromDouble(std::fmod(time - first, last - first)) + first.toDouble();
    });

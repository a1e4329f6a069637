#pragma once

#include "prm/exchange/Json.h"
#include "prm/exchange/LottieProperty.h"

namespace Prm::document {

/// Whether the components have keyframes at the same times, and hold at the same ones: so one property can have them.
bool areTogether(const std::vector<LottieCurve>& components);

/// Gives all components keyframes at the same times, and keeps the curves: segments are cut. Returns what is not kept,
/// in plain words: what one component holds while others move becomes a ramp at its end.
QStringList bringTogether(std::vector<LottieCurve>& components);

/// An animatable property of components that are together; the writer to `readLottieProperty`. Values, times and
/// handles are finite.
Json lottieProperty(const std::vector<LottieCurve>& components);
/// One without a value: players need it, and readers leave it out.
Json lottiePropertyWithoutValue();

} // namespace Prm::document

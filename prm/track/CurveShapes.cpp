#include "prm/track/CurveShapes.h"

#include "prm/track/BezierEasing.h"

#include <atomic>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace Prm {

namespace {

std::atomic<quint64> registrations{0};

/// The functions that hosts gave to custom kinds. A function that is being called stays alive until it has returned.
template <class Kind, class Function> class CustomKinds {
public:
    bool set(Kind kind, Function function, Kind firstCustom) {
        if (kind < firstCustom)
            return false;
        auto entry = function ? std::make_shared<const Function>(std::move(function)) : nullptr;
        const std::unique_lock<std::shared_mutex> lock(m_mutex);
        std::swap(m_functions[kind], entry);
        ++registrations;
        return true;
    }
    std::shared_ptr<const Function> find(Kind kind) const {
        const std::shared_lock<std::shared_mutex> lock(m_mutex);
        const auto found = m_functions.find(kind);
        return found == m_functions.end() ? nullptr : found->second;
    }

private:
    mutable std::shared_mutex m_mutex;
    std::map<Kind, std::shared_ptr<const Function>> m_functions;
};

CustomKinds<Interpolation, InterpolationFunction>& interpolations() {
    static CustomKinds<Interpolation, InterpolationFunction> kinds;
    return kinds;
}

CustomKinds<Extrapolation, ExtrapolationFunction>& extrapolations() {
    static CustomKinds<Extrapolation, ExtrapolationFunction> kinds;
    return kinds;
}

} // namespace

bool registerInterpolation(Interpolation kind, InterpolationFunction function) {
    return interpolations().set(kind, std::move(function), Interpolation::Custom0);
}

bool registerExtrapolation(Extrapolation kind, ExtrapolationFunction function) {
    return extrapolations().set(kind, std::move(function), Extrapolation::Custom0);
}

namespace detail {

double curvedProgress(const IType& shape, double x) {
    if (shape.interpolation == Interpolation::Bezier)
        return easedProgress(shape, x);
    if (shape.interpolation >= Interpolation::Custom0) {
        if (const auto function = interpolations().find(shape.interpolation))
            return (*function)(shape, x);
    }
    return x;
}

bool isRegistered(Interpolation kind) {
    return kind >= Interpolation::Custom0 && interpolations().find(kind);
}

bool isRegistered(Extrapolation kind) {
    return kind >= Extrapolation::Custom0 && extrapolations().find(kind);
}

quint64 kindRegistrations() {
    return registrations.load();
}

double startSlope(const IType& shape) {
    if (shape.interpolation == Interpolation::Bezier)
        return easingSlopeAtStart(shape);
    return holds(shape) ? 0.0 : 1.0;
}

double endSlope(const IType& shape) {
    if (shape.interpolation == Interpolation::Bezier)
        return easingSlopeAtEnd(shape);
    return holds(shape) ? 0.0 : 1.0;
}

bool mapIntoRange(Extrapolation kind, Time time, Time first, Time last, Time& inside) {
    const auto function = kind >= Extrapolation::Custom0 ? extrapolations().find(kind) : nullptr;
    if (!function)
        return false;
    const Time mapped = (*function)(time, first, last);
    inside = mapped < first ? first : mapped > last ? last : mapped;
    return true;
}

double mixFar(double from, double to, double part) {
    if (std::isfinite(from) && std::isfinite(to))
        return from * (1.0 - part) + to * part;
    return from + (to - from) * part;
}

double continued(double edge, double a, double b, double duration, double slope, double distance) {
    if (!(duration > 0.0))
        return edge;
    const double line = edge + (b - a) / duration * slope * distance;
    return std::isfinite(line) ? line : edge;
}

} // namespace detail

} // namespace Prm

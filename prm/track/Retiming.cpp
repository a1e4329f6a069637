#include "prm/Retiming.h"

#include "prm/track/Place.h"

#include <cmath>

namespace Prm {

Retiming Retiming::shifted(double frames) {
    return {detail::Place::earliest(), Time::LAST, Time(), 1.0, frames};
}

Retiming Retiming::scaled(double factor, Time pivot) {
    return {detail::Place::earliest(), Time::LAST, pivot, factor, 0.0};
}

Retiming Retiming::between(Time from, Time to) const {
    return {from, to, pivot, scale, shift};
}

bool Retiming::isUsable() const {
    return scale > 0.0 && std::isfinite(scale) && std::isfinite(shift) && std::isfinite(pivot.toDouble());
}

Time Retiming::operator()(Time time) const {
    const double about = pivot.toDouble();
    const double scaled = scale == 1.0 ? time.toDouble() : about + scale * (time.toDouble() - about);
    return Time::fromDouble(scaled + shift);
}

Time Retiming::moved(Time time) const {
    return concerns(time) ? (*this)(time) : time;
}

} // namespace Prm

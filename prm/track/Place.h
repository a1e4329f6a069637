#pragma once

#include "prm/Context.h"

#include <limits>
#include <vector>

namespace Prm::detail {

/// Where an edit changes keyframes: a span of times in one view, both ends included. Empty for the invalid time, where
/// only the static value changes.
struct Place {
    static constexpr Time earliest() { return Time::fromDouble(-std::numeric_limits<double>::infinity()); }
    static Place at(const Context& context) { return {context.view, context.time, context.time}; }
    static Place staticValue(const View& view) { return {view, Time(Time::INVALID), Time(Time::INVALID)}; }
    static Place whole(const View& view) { return {view, earliest(), Time(Time::LAST)}; }

    bool hasTimes() const { return first.isValid() && first <= last; }

    View view;
    Time first;
    Time last;
};

/// No place means the whole parameter.
using Places = std::vector<Place>;

} // namespace Prm::detail

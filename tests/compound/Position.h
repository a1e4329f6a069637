#pragma once

#include "tests/support/Library.h"

namespace Prm {

/// Of its keyframes, each followed by a blank.
inline std::string timesOf(const ParameterWithoutType& parameter, quint32 view = 0) {
    std::string text;
    parameter.forEachKeyframeTime(
        [&](const Context& at) { text += std::to_string(static_cast<int>(at.time.toDouble())) + " "; }, View(view));
    return text;
}

/// Keyframes at 1 and 5, and at 5 and 9.
struct Position {
    explicit Position(bool together = false) : whole("position", together) {
        key(*x, {{1, 1.}, {5, 2.}});
        key(*y, {{5, 3.}, {9, 4.}});
        whole.addParameter(x);
        whole.addParameter(y);
    }

    std::string times(quint32 view = 0) const { return timesOf(whole, view); }
    std::string text() const { return lines(static_cast<const ParameterWithoutType&>(whole)); }

    boost::shared_ptr<Number> x{new Number("x")};
    boost::shared_ptr<Number> y{new Number("y")};
    CompoundParameter whole;
};

} // namespace Prm

#pragma once

#include "tests/support/Library.h"

namespace Prm {

/// Keyframes at 1 and 5, and at 5 and 9.
struct Position {
    explicit Position(bool together = false) : whole("position", together) {
        key(*x, {{1, 1.}, {5, 2.}});
        key(*y, {{5, 3.}, {9, 4.}});
        whole.addParameter(x);
        whole.addParameter(y);
    }

    std::string times(quint32 view = 0) const {
        std::string text;
        for (const Context& context : whole.allKeyframesTime(View(view)))
            text += std::to_string(static_cast<int>(context.time.toDouble())) + " ";
        return text;
    }
    std::string text(const QString& prefix = {}) const {
        const ParameterWithoutType& parameter = whole;
        return lines(parameter, prefix);
    }

    boost::shared_ptr<Number> x{new Number("x")};
    boost::shared_ptr<Number> y{new Number("y")};
    CompoundParameter whole;
};

} // namespace Prm

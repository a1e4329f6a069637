#pragma once

#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "tests/parameter/Keying.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <string>

namespace Prm {

using Number = NumericParameter<double>;

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
        QString written;
        QTextStream stream(&written);
        EXPECT_TRUE(whole.streamOut(stream, prefix, true));
        return written.toStdString();
    }

    boost::shared_ptr<Number> x{new Number("x")};
    boost::shared_ptr<Number> y{new Number("y")};
    CompoundParameter whole;
};

} // namespace Prm

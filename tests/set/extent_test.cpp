#include "prm/ChangedSince.h"
#include "prm/CurveKinds.h"
#include "tests/support/Library.h"

#include <QDebug>
#include <gtest/gtest.h>

using namespace Prm;

namespace {

template <class Spans> std::string textOf(const Spans& spans) {
    QString text;
    QDebug(&text) << spans;
    return text.trimmed().toStdString();
}

/// Unites what it receives.
struct Listener : QObject {
    explicit Listener(ParameterWithoutType& parameter) {
        connect(
            &parameter, &ParameterWithoutType::changed, this,
            [this](ParameterChange& change) { extent |= extentOf(change); }, Qt::DirectConnection);
    }
    Extent take() { return std::exchange(extent, {}); }

    Extent extent;
};

/// Four keyframes, of which the third holds its value.
struct Exhibit {
    Exhibit() {
        key(number, {{0, 1.}, {10, 2.}, {20, 4.}, {30, 3.}});
        number.vSetInterpolation(Interpolation::Constant, at(20));
    }

    Number number{QStringLiteral("number")};
    std::unique_ptr<Listener> listener = std::make_unique<Listener>(number);
};

struct Row {
    const char* name;
    std::function<void(Number&)> edit;
    const char* expected;
    /// What the difference of the states shows, if that is less.
    const char* difference = nullptr;
    std::function<void(Number&)> before = [](Number&) {};
};

const auto linearOutside = [](Number& number) {
    number.vSetExtrapolationBefore(Extrapolation::Linear);
    number.vSetExtrapolationAfter(Extrapolation::Linear);
};
const auto customOutside = [](Number& number) { number.vSetExtrapolationAfter(Extrapolation::Custom0); };

TEST(ExtentOfChange, IsBetweenTheNeighbours) {
    const Row rows[] = {
        {"value", [](Number& n) { n.vSetValue(9, at(10)); }, "(0, 20)"},
        {"value after a segment that holds", [](Number& n) { n.vSetValue(9, at(30)); }, "[30, inf)"},
        {"value of the first", [](Number& n) { n.vSetValue(9, at(0)); }, "[-inf, 10)"},
        {"added", [](Number& n) { n.vSetValue(9, at(5)); }, "(0, 10)"},
        {"added where the segment holds", [](Number& n) { n.vSetValue(9, at(25)); }, "[25, 30)"},
        {"appended", [](Number& n) { n.vSetValue(9, at(40)); }, "(30, inf)"},
        {"removed", [](Number& n) { n.vDeleteKeyframe(Context::Explicit(at(10))); }, "(0, 20)"},
        {"removed after a segment that holds", [](Number& n) { n.vDeleteKeyframe(Context::Explicit(at(30))); },
         "[30, inf)"},
        {"kind", [](Number& n) { n.vSetInterpolation(Interpolation::Bezier, at(10)); }, "(10, 20)"},
        {"kind of the last", [](Number& n) { n.vSetInterpolation(Interpolation::Bezier, at(30)); }, "{}"},
        {"kind that it was", [](Number& n) { n.vSetInterpolation(Interpolation::Linear, at(10)); }, "(10, 20)", "{}"},
        {"static value beside keyframes", [](Number& n) { n.vSetValue(9, still()); }, "{}"},
        {"extrapolation", [](Number& n) { n.vSetExtrapolationBefore(Extrapolation::Linear); }, "[-inf, 0)"},
        {"cleared", [](Number& n) { n.vDeleteAllKeyframes(View(0)); }, "[-inf, inf)"},
        {"assigned", [](Number& n) { Bsc::importState(n, n.exportState()); }, "[-inf, inf)", "{}"},
        {"flag", [](Number& n) { n.hide(true); }, "{}"},
        {"beside a linear outside", [](Number& n) { n.vSetValue(9, at(10)); }, "[-inf, 0) + (0, 20)", nullptr,
         linearOutside},
        {"beside a linear outside that is flat", [](Number& n) { n.vSetValue(9, at(30)); }, "[30, inf)", nullptr,
         linearOutside},
        {"appended to one that is flat", [](Number& n) { n.vSetValue(9, at(40)); }, "(30, inf)", nullptr, linearOutside},
        {"shape beside a linear outside",
         [](Number& n) {
             n.vSetInterpolationData({Interpolation::Bezier, 0, 1, 1, 1}, 0, View(0));
         },
         "[-inf, 0) + (0, 10)", nullptr, linearOutside},
        {"custom outside", [](Number& n) { n.vSetValue(9, at(10)); }, "(0, 20) + (30, inf)", nullptr, customOutside},
        {"moved in order",
         [](Number& n) {
             Command command;
             ParameterRetimeEdit::appendToCommand(n, Retiming::shifted(2).between(Time::fromInt(10), Time::fromInt(20)),
                                                  command);
             command.doIt();
         },
         "(0, 30)"},
    };
    for (const Row& row : rows) {
        Exhibit exhibit;
        row.before(exhibit.number);
        exhibit.listener->take();
        const auto former = exhibit.number.exportState();
        row.edit(exhibit.number);
        EXPECT_EQ(textOf(exhibit.listener->take().in(&exhibit.number, View(3))), row.expected) << row.name;
        EXPECT_EQ(textOf(differenceOf(*former, exhibit.number).in(View(3))),
                  row.difference ? row.difference : row.expected)
            << row.name;
    }
}

} // namespace

#include "tests/support/Test.h"

#include <random>

using namespace Prm;

namespace {

TEST(TimeSpans, UniteWhatMeets) {
    const std::tuple<const char*, TimeSpans, const char*> rows[] = {
        {"nothing", {TimeSpan::none(), {1, 1, true, false}, {2, 1, true, true}, {NAN, 1, true, true}}, "{}"},
        {"one time", {TimeSpan::at(Time::fromInt(3))}, "[3, 3]"},
        {"apart at a time that neither has", {{1, 2, true, false}, {2, 3, false, true}}, "[1, 2) + (2, 3]"},
        {"meeting at a time that one has", {{2, 3, false, true}, {1, 2, true, true}}, "[1, 3]"},
        {"closing a gap", {{1, 2, false, false}, {2, 3, false, false}, TimeSpan::at(Time::fromInt(2))}, "(1, 3)"},
        {"covering others", {{1, 2, true, true}, {5, 6, true, true}, {1, 6, false, false}}, "[1, 6]"},
        {"without end", {{4, infinity, true, false}, {-infinity, 2, true, false}}, "[-inf, 2) + [4, inf)"},
        {"all", {{4, infinity, true, false}, TimeSpan::all()}, "[-inf, inf)"},
    };
    for (const auto& [name, spans, expected] : rows)
        EXPECT_EQ(debugText(spans), expected) << name;
}

/// Sets of times drawn from few ends, compared with plain lists of the times in them.
TEST(TimeSpans, HoldTheTimesOfTheirParts) {
    std::mt19937 random(7);
    const auto end = [&] {
        const double number = static_cast<double>(random() % 8) - 1.0;
        return number < 0 ? -infinity : number > 5 ? infinity : number;
    };
    const auto drawn = [&] {
        const double to = end();
        return TimeSpan{end(), to, random() % 2 != 0, to < infinity && random() % 2 != 0};
    };
    std::vector<Time> times{Time::fromDouble(-infinity), Time(Time::INVALID)};
    for (int i = -1; i < 14; ++i)
        times.push_back(Time::fromDouble(i / 2.0));
    for (int round = 0; round < 2000; ++round) {
        TimeSpans spans[2];
        std::vector<TimeSpan> parts;
        for (int i = 0; i < 4; ++i)
            spans[i / 2].add(parts.emplace_back(drawn()));
        const TimeSpans all = TimeSpans(spans[0]) |= spans[1];
        const TimeSpan asked = drawn();
        bool anyInBoth = false;
        for (const Time time : times) {
            const bool isIn =
                std::any_of(parts.begin(), parts.end(), [=](const TimeSpan& part) { return part.contains(time); });
            const bool isInBoth = isIn && asked.contains(time);
            anyInBoth = anyInBoth || isInBoth;
            ASSERT_EQ(all.contains(time), isIn) << debugText(all) << time.toDouble();
            ASSERT_EQ(all.intersected(asked).contains(time), isInBoth) << debugText(all) << debugText(asked);
        }
        ASSERT_EQ(all.intersects(asked), anyInBoth) << debugText(all) << debugText(asked);
        ASSERT_EQ(all.intersected(asked).isEmpty(), !anyInBoth);
        ASSERT_EQ(all, TimeSpans(all) |= all);
    }
}

} // namespace

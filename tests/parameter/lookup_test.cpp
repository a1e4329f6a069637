#include "tests/support/Library.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

/// The position of the time in the list, -1 if it was not found.
int found(const Number& number, bool isFound, const Context& place) {
    return isFound ? static_cast<int>(number.keyframeIndexForTime(place)) : -1;
}

/// The keyframe there, the nearest, the next and the previous one.
std::string answersAt(const Number& number, const Context& place) {
    unsigned int nearest = 0;
    Context next;
    Context previous;
    const bool hasNearest = number.bNearestKeyframeIndex(place, nearest);
    const int all[] = {static_cast<int>(number.keyframeIndexForTime(place)),
                       hasNearest ? static_cast<int>(nearest) : -1,
                       found(number, number.bNextKeyframe(place, next), next),
                       found(number, number.bPreviousKeyframe(place, previous), previous)};
    EXPECT_EQ(number.bKeyframeAt(Context::Explicit(place)), all[0] >= 0);
    return QString("%1 %2 %3 %4").arg(all[0]).arg(all[1]).arg(all[2]).arg(all[3]).toStdString();
}

TEST(Lookup, EveryQuestionAtATime) {
    Number number;
    key(number, {{-4.5, 0.}, {0, 1.}, {1, 2.}, {10, 3.}, {20, 4.}});
    const std::tuple<const char*, double, const char*> rows[] = {
        {"tie goes to the later one", 15, "-1 4 4 3"}, {"no tolerance", std::nextafter(20.0, 0.0), "-1 4 4 3"},
        {"zero has no sign", -0.0, "1 1 2 0"},         {"the invalid time is after all", NAN, "-1 4 -1 4"},
        {"before all", -HUGE_VAL, "-1 0 0 -1"},
    };
    for (const auto& [name, time, expected] : rows)
        EXPECT_EQ(answersAt(number, at(time)), expected) << name;
}

TEST(Lookup, OfEveryLength) {
    Number number;
    for (int last = 0; last < 40; ++last) {
        number.vSetValue(last, at(2 * last));
        for (int time = -1; time <= 2 * last + 1; ++time) {
            const int after = std::min((time + 1) / 2, last);
            const int next = time < 0 ? 0 : time / 2 + 1;
            const int exact = time >= 0 && time % 2 == 0 ? time / 2 : -1;
            const QString expected = QString("%1 %2 %3 %4").arg(exact).arg(after).arg(next > last ? -1 : next);
            EXPECT_EQ(answersAt(number, at(time)),
                      expected.arg(time < 0 ? -1 : (time - 1) / 2 - (time == 0)).toStdString())
                << last << ' ' << time;
        }
    }
}

TEST(Lookup, OfManyViewsThatComeAndGoInAnyOrder) {
    constexpr int count = 20000;
    for (const int step : {1, count - 1, 7919}) {
        Number number;
        for (int i = 0; i < count; ++i) {
            const int view = static_cast<int>(static_cast<qint64>(i) * step % count);
            number.vSetValue(view, still(static_cast<quint32>(view)));
        }
        EXPECT_EQ(number.numViews(), count);
        for (int view = 0; view < count; ++view) {
            ASSERT_EQ(number.staticValue(View(static_cast<quint32>(view))), view) << step;
            EXPECT_TRUE(view % 16 == 5 || number.deleteView(View(static_cast<quint32>(view))));
        }
        EXPECT_EQ(number.viewList().size(), count / 16u);
        EXPECT_EQ(number.staticValue(View(4)), 5) << "shows the first";
        EXPECT_EQ(detail::verify(number), QString());
    }
}

} // namespace

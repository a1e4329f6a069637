#include "prm/Parameter.h"
#include "prm/detail/KeyframeInsertion.h"
#include "prm/detail/KeyframeSearch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using namespace Prm;

namespace {

using Times = std::vector<double>;

/// Keyframes at these times; each one's value is its position.
QVector<KeyframeData<int>> keyframesAt(const Times& times) {
    QVector<KeyframeData<int>> keyframes;
    for (const double time : times)
        keyframes.append({Time::fromDouble(time), keyframes.size(), Interpolation::Linear});
    return keyframes;
}

const double infinity = HUGE_VAL;

TEST(KeyframeSearch, EveryQuestionAtATime) {
    const Times two{10, 20};
    const Times four{10, 20, 30, 40};
    const Times five{-4.5, 0, 1, 2, 9};
    const std::tuple<const char*, Times, double, int, int, int, int, int, int> rows[] = {
        {"before all", two, 5, 0, -1, 0, 0, -1, 0},
        {"on the first", two, 10, 0, 0, 0, 1, 0, 0},
        {"just before the middle", two, 14.9, 1, -1, 0, 1, 0, 1},
        {"tie goes to the later one", two, 15, 1, -1, 1, 1, 0, 1},
        {"on the last", two, 20, 1, 1, 1, -1, 1, 1},
        {"behind all", two, 25, 2, -1, 1, -1, 1, -1},
        {"no tolerance", two, std::nextafter(20.0, 0.0), 1, -1, 1, 1, 0, 1},
        {"four, on an inner one", four, 30, 2, 2, 2, 3, 2, 2},
        {"zero has no sign", five, -0.0, 1, 1, 1, 2, 1, 1},
        {"NaN is the invalid time, behind all", five, NAN, 5, -1, 4, -1, 4, -1},
        {"negative infinity is before all", five, -infinity, 0, -1, 0, 0, -1, 0},
        {"a keyframe at negative infinity", {-infinity, 3}, -infinity, 0, 0, 0, 1, 0, 0},
        {"twice at the last time", {10, 20, 20}, 20, 1, 1, 2, 2, 2, 2},
        {"twice at the first time", {10, 10, 20}, 10, 0, 0, 1, 1, 0, 0},
    };
    for (const auto& [name, times, time, bound, exact, nearest, next, before, after] : rows) {
        SCOPED_TRACE(name);
        detail::PVData<int> data;
        data.keyframes = keyframesAt(times);
        const Time at = Time::fromDouble(time);
        EXPECT_EQ(detail::lowerBound(data.keyframes, at), bound);
        EXPECT_EQ(detail::nearestPosition(data.keyframes, at), nearest);
        EXPECT_EQ(detail::nextPosition(data.keyframes, at), next);
        KeyframeData<int> found(at, -1);
        EXPECT_EQ(detail::findKeyframeAtTime<int>(data.keyframes, at, &found), exact >= 0);
        EXPECT_EQ(found.value, exact);
        EXPECT_EQ(detail::findKeyframeAtTime<int>(data.keyframes, at, nullptr), exact >= 0);
        const Parameter<int> owner;
        const auto named = [&](int position) {
            return position < 0 ? KeyframeIndex(nullptr, View::INVALID(), 0) : KeyframeIndex(&owner, View(3), position);
        };
        const detail::LockedKeyframes<int> locked(&data);
        EXPECT_EQ(detail::findClosestKeyframes(locked, at, View(3), owner).before, named(before));
        EXPECT_EQ(detail::findClosestKeyframes(locked, at, View(3), owner).after, named(after));
        EXPECT_EQ(owner.insertionIndex(at, locked), static_cast<unsigned int>(bound));
        EXPECT_EQ(owner.keyframeIndexForTime(at, locked), static_cast<unsigned int>(exact));
    }
}

TEST(KeyframeSearch, AgreesWithALinearSearchForEveryLength) {
    for (int count = 1; count <= 40; ++count) {
        Times times;
        for (int i = 0; i < count; ++i)
            times.push_back(2 * i);
        const auto keyframes = keyframesAt(times);
        for (int at = -1; at <= 2 * count; ++at) {
            const Time time = Time::fromInt(at);
            EXPECT_EQ(detail::lowerBound(keyframes, time), std::min(std::max(0, (at + 1) / 2), count));
            const detail::Bracket around = detail::bracket(keyframes.constData(), count, time);
            EXPECT_EQ(around.before, at < 0 ? -1 : std::min(at / 2, count - 1)) << count << ' ' << at;
            EXPECT_EQ(around.after, at > 2 * count - 2 ? -1 : (at + 1) / 2) << count << ' ' << at;
        }
    }
}

TEST(KeyframeSearch, AnswersArePositionsOfAnyList) {
    EXPECT_EQ(detail::lowerBound(keyframesAt({}), Time()), 0);
    EXPECT_EQ(detail::positionAt(keyframesAt({}), Time()), -1);
    const auto keyframes = keyframesAt({5, 1, 9, 9, -3, 4, 4, 0});
    for (int at = -10; at <= 22; ++at) {
        const Time time = Time::fromDouble(0.5 * at);
        const detail::Bracket around = detail::bracket(keyframes.constData(), keyframes.size(), time);
        EXPECT_LT(std::max(around.before, around.after), keyframes.size());
        EXPECT_GE(std::max(around.before, around.after), 0);
        EXPECT_LT(detail::nearestPosition(keyframes, time), keyframes.size());
    }
}

/// "3:Linear(9)" is a keyframe at 3 whose first shape number is 9.
QString text(const QVector<KeyframeData<int>>& keyframes) {
    QStringList parts;
    for (const auto& [time, value, shape] : keyframes)
        parts += QStringLiteral("%1:%2(%3)")
                     .arg(time.toDouble())
                     .arg(qstrInterpolationTypeString(shape.interpolation))
                     .arg(shape.x1);
    return parts.join(' ');
}

TEST(KeyframeInsertion, ShapesTheSegmentsOfTheRule) {
    // The lists' keyframes are Linear with 9; new shapes are 1; the default is Custom0.
    const std::tuple<const char*, Times, bool, const char*, const char*> rows[] = {
        {"the first one takes the default", {}, false, "5:Custom0(0)", ""},
        {"before all takes the default, shaped", {6}, false, "5:Custom0(1) 6:Linear(9)", "5-6 Custom0"},
        {"between inherits", {4, 6}, false, "4:Linear(9) 5:Linear(1) 6:Linear(9)", "5-6 Linear"},
        {"appending shapes the former last", {3, 4}, false, "3:Linear(9) 4:Linear(1) 5:Linear(0)", "4-5 Linear"},
        {"appending while reading leaves it", {3, 4}, true, "3:Linear(9) 4:Linear(9) 5:Linear(0)", ""},
        {"inserting while reading shapes", {4, 6}, true, "4:Linear(9) 5:Linear(1) 6:Linear(9)", "5-6 Linear"},
    };
    for (const auto& [name, times, readingIn, becomes, calls] : rows) {
        auto keyframes = keyframesAt(times);
        for (auto& keyframe : keyframes)
            keyframe.interpolationData.x1 = 9;
        const QString before = text(keyframes);
        QString called;
        const auto fails = [](const auto&, const auto&, Interpolation) -> IType { throw std::runtime_error("hook"); };
        const auto shapes = [&](const KeyframeData<int>& from, const KeyframeData<int>& to, Interpolation kind) {
            called += QStringLiteral("%1-%2 ").arg(from.time.toDouble()).arg(to.time.toDouble());
            called += qstrInterpolationTypeString(kind);
            return IType(kind, 1);
        };
        const KeyframeData<int> added(Time::fromInt(5), 0);
        if (*calls) {
            EXPECT_THROW(detail::insertKeyframe(keyframes, added, Interpolation::Custom0, readingIn, fails),
                         std::runtime_error);
            EXPECT_EQ(text(keyframes), before) << name;
        }
        const int position = detail::insertKeyframe(keyframes, added, Interpolation::Custom0, readingIn, shapes);
        EXPECT_EQ(keyframes.at(position).time, added.time) << name;
        EXPECT_EQ(text(keyframes), becomes) << name;
        EXPECT_EQ(called, calls) << name;
    }
}

} // namespace

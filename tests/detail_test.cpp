#include "prm/CompoundParameter.h"
#include "prm/NumericParameter.h"
#include "prm/Parameter.h"
#include "prm/project/Invariants.h"
#include "prm/thread/HazardPointers.h"
#include "prm/track/KeyframeInsertion.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/track/SourceViews.h"
#include "tests/parameter/Keying.h"
#include "tests/support/Errors.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <set>
#include <stdexcept>
#include <thread>

using namespace Prm;
using namespace Prm::detail;

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
    const Times five{-4.5, 0, 1, 2, 9};
    const std::tuple<const char*, Times, double, int, int, int, int, int, int> rows[] = {
        {"tie goes to the later one", two, 15, 1, -1, 1, 1, 0, 1},
        {"no tolerance", two, std::nextafter(20.0, 0.0), 1, -1, 1, 1, 0, 1},
        {"zero has no sign", five, -0.0, 1, 1, 1, 2, 1, 1},
        {"NaN is the invalid time, behind all", five, NAN, 5, -1, 4, -1, 4, -1},
        {"a keyframe at negative infinity", {-infinity, 3}, -infinity, 0, 0, 0, 1, 0, 0},
        {"twice at the last time", {10, 20, 20}, 20, 1, 1, 2, 2, 2, 2},
        {"twice at the first time", {10, 10, 20}, 10, 0, 0, 1, 1, 0, 0},
    };
    for (const auto& [name, times, time, bound, exact, nearest, next, before, after] : rows) {
        SCOPED_TRACE(name);
        PVData<int> data;
        data.keyframes = keyframesAt(times);
        const Time at = Time::fromDouble(time);
        EXPECT_EQ(nearestPosition(data.keyframes, at), nearest);
        EXPECT_EQ(nextPosition(data.keyframes, at), next);
        KeyframeData<int> found(at, -1);
        EXPECT_EQ(findKeyframeAtTime<int>(data.keyframes, at, &found), exact >= 0);
        EXPECT_EQ(found.value, exact);
        EXPECT_EQ(findKeyframeAtTime<int>(data.keyframes, at, nullptr), exact >= 0);
        const Parameter<int> owner;
        const auto named = [&](int position) {
            return position < 0 ? KeyframeIndex(nullptr, View::INVALID(), 0) : KeyframeIndex(&owner, View(3), position);
        };
        const LockedKeyframes<int> locked(&data);
        EXPECT_EQ(findClosestKeyframes(locked, at, View(3), owner).before, named(before));
        EXPECT_EQ(findClosestKeyframes(locked, at, View(3), owner).after, named(after));
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
            EXPECT_EQ(lowerBound(keyframes, time), std::min(std::max(0, (at + 1) / 2), count));
            const Bracket around = bracket(keyframes.constData(), count, time);
            EXPECT_EQ(around.before, at < 0 ? -1 : std::min(at / 2, count - 1)) << count << ' ' << at;
            EXPECT_EQ(around.after, at > 2 * count - 2 ? -1 : (at + 1) / 2) << count << ' ' << at;
        }
    }
}

// Which segment takes which shape is the model's matter; here, what else the rule asks.
TEST(KeyframeInsertion, ShapesNothingWhileReadingAndSurvivesAHook) {
    const auto shapes = [](const auto&, const auto&, Interpolation kind) { return IType(kind, 1); };
    const auto fails = [](const auto&, const auto&, Interpolation) -> IType { throw std::runtime_error("hook"); };
    const auto former = keyframesAt({3, 4});
    const auto insert = [&](auto& keyframes, double time, bool readingIn, const auto& hook) {
        KeyframeInsertion<int> insertion(keyframes, Time::fromDouble(time), 0, Interpolation::Custom0, readingIn);
        if (insertion.shapesSegment())
            insertion.shape(hook);
        return insertion.insertInto(keyframes);
    };
    auto keyframes = former;
    for (const double time : {2., 3.5, 5.}) {
        EXPECT_THROW(insert(keyframes, time, false, fails), std::runtime_error);
        EXPECT_EQ(keyframes.size(), 2);
        EXPECT_EQ(keyframes.last().interpolationData, former.last().interpolationData);
    }
    EXPECT_EQ(insert(keyframes, 5, true, shapes), 2);
    EXPECT_EQ(keyframes.at(1).interpolationData, IType(Interpolation::Linear)) << "appended while reading";
    EXPECT_EQ(insert(keyframes, 4.5, true, shapes), 2);
    EXPECT_EQ(keyframes.at(2).interpolationData, IType(Interpolation::Linear, 1)) << "inserted while reading";
}

using Map = Parameter<int>::FastViewMap;
using Ids = std::vector<quint32>;

/// Every view that was written holds its id, the template 7.
Map mapOf(const Ids& written) {
    Map map(7);
    for (const quint32 id : written)
        map[View(id)].staticValue = static_cast<int>(id);
    return map;
}

TEST(FastViewMap, InitSourceDataTakesTheNumberOfSlots) {
    Map map = mapOf({0, 2, 5});
    for (const auto& [slots, two, five] :
         {std::tuple(Ids{2}, true, false), {Ids{}, false, false}, {Ids{5}, true, true}}) {
        map.initSourceData(mapOf(slots));
        EXPECT_EQ(map.findRealViewData(View(2)) != nullptr, two) << slots.size();
        EXPECT_EQ(map.findRealViewData(View(5)) != nullptr, five) << slots.size();
    }
    Map empty;
    EXPECT_NO_THROW(empty.initSourceData(Map()));
    // One slot has nothing to show.
    EXPECT_EQ(errorOf([&] { empty.initSourceData(mapOf({0})); }), "'at()' out of bounds");
}

/// A value of which some copy fails.
struct Fragile {
    explicit Fragile(int of = 0) : number(of) { ++alive; }
    Fragile(const Fragile& other) : number(other.number) {
        countDown();
        ++alive;
    }
    Fragile& operator=(const Fragile& other) {
        countDown();
        number = other.number;
        return *this;
    }
    ~Fragile() { --alive; }
    static void countDown() {
        if (copiesLeft > 0 && --copiesLeft == 0)
            throw std::runtime_error("copy");
    }
    int number;
    static inline int copiesLeft = 0;
    static inline int alive = 0;
};

TEST(FastViewMap, AnAssignmentThatFailsLeavesTheViews) {
    const auto fill = [](FastViewMap<Fragile>& map, const Ids& views) {
        for (const quint32 id : views)
            map[View(id)].staticValue.number = static_cast<int>(id);
    };
    for (const auto& [former, assigned] : {std::pair(Ids{0}, Ids{0, 4}), {Ids{0, 2}, Ids{0}}, {Ids{}, Ids{0, 1, 9}}}) {
        int copies = 1;
        for (bool failed = true; failed; ++copies) {
            FastViewMap<Fragile> source;
            FastViewMap<Fragile> map;
            fill(source, assigned);
            fill(map, former);
            Fragile::copiesLeft = copies;
            failed = errorOf([&] { map = source; }) == "copy";
            Fragile::copiesLeft = 0;
            EXPECT_EQ(map.brokenInvariant(), nullptr);
            EXPECT_EQ(map.viewList().size(), failed ? former.size() : assigned.size()) << copies;
            for (const View view : map.viewList())
                EXPECT_EQ(map.findRealViewData(view)->staticValue.number, static_cast<int>(view.id()));
        }
        EXPECT_GT(copies, 2);
        EXPECT_EQ(Fragile::alive, 0);
    }
}

/// Ids in the order of a list that is turned into views in a scattered one.
Ids scattered(int count, int step) {
    Ids ids;
    for (int i = 0; i < count; ++i)
        ids.push_back(static_cast<quint32>(static_cast<qint64>(i) * step % count));
    return ids;
}

TEST(FastViewMap, ManyViewsInAnyOrder) {
    constexpr int count = 50000;
    for (const int step : {1, count - 1, 7919}) {
        const Ids ids = scattered(count, step);
        Map map = mapOf(ids);
        EXPECT_EQ(map.brokenInvariant(), nullptr) << step;
        EXPECT_TRUE(map.viewList().size() == count && map.viewList().back() == View(count - 1));
        for (const quint32 id : ids) {
            EXPECT_EQ(map.findRealViewData(View(id))->staticValue, static_cast<int>(id));
            if (id % 16 != 5)
                map.remove(View(id));
        }
        EXPECT_EQ(map.brokenInvariant(), nullptr) << step;
        EXPECT_EQ(map.viewList().size(), static_cast<std::size_t>(count / 16));
        EXPECT_EQ(map.findRealViewData(View(4)), nullptr);
    }
}

TEST(SourceViews, AreThoseAroundTheView) {
    using Mode = MVInterpolationParams::Mode;
    const Ids views{2, 4, 8, 20};
    const std::tuple<const char*, Mode, quint32, Ids, Ids> rows[] = {
        {"off", Mode::Off, 4, views, {}},
        {"no views", Mode::Linear, 4, {}, {}},
        {"the invalid view", Mode::Nearest, ~0u, views, {}},
        {"one of them", Mode::Smooth, 4, views, {4}},
        {"below all", Mode::Smooth, 1, views, {2}},
        {"above all", Mode::Linear, 21, views, {20}},
        {"nearest, a tie", Mode::Nearest, 6, views, {4}},
        {"nearest, above", Mode::Nearest, 7, views, {8}},
        {"linear", Mode::Linear, 9, views, {8, 20}},
        {"smooth, one more below", Mode::Smooth, 9, views, {4, 8, 20}},
        {"smooth, one more above", Mode::Smooth, 3, views, {2, 4, 8}},
        {"smooth, between two", Mode::Smooth, 3, {2, 4}, {2, 4}},
    };
    for (const auto& [name, mode, view, ids, expected] : rows) {
        Ids found;
        for (const View source : interpolationSourceViews({mode}, View(view), {ids.begin(), ids.end()}))
            found.push_back(source.id());
        EXPECT_EQ(found, expected) << name;
    }
}

class Block : public Protected {
public:
    explicit Block(std::atomic<bool>& gone) : m_gone(gone) {}
    ~Block() override { m_gone = true; }

private:
    std::atomic<bool>& m_gone;
};

TEST(HazardPointers, ARetiredBlockOutlivesItsReaders) {
    std::atomic<bool> gone{false};
    retire(new Block(gone));
    EXPECT_TRUE(gone.exchange(false)) << "not read";

    auto* const block = new Block(gone);
    Protection reading;
    EXPECT_TRUE(reading.protect(*block));
    std::thread other([&] { retire(block); });
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(gone) << "read by another thread";
    reading.release();
    other.join();
    EXPECT_TRUE(gone);
}

TEST(HazardPointers, ThreadsTakeOverTheRecordsOfThoseThatEnded) {
    struct Late {
        ~Late() {
            Protected block;
            Protection reading;
            EXPECT_TRUE(reading.protect(block));
        }
    };
    std::set<const HazardPointers*> records;
    for (int i = 0; i < 20; ++i)
        std::thread([&] { records.insert(&HazardPointers::ofThisThread()); }).join();
    EXPECT_EQ(records.size(), 1u);
    // A thread may read until its very end.
    std::thread([] {
        static thread_local Late late;
        static_cast<void>(late);
        HazardPointers::ofThisThread();
    }).join();
}

// By the few ways in which they can be broken from outside.
TEST(Invariants, AreSeenToBeBroken) {
    NumericParameter<double> x("x");
    CompoundParameter position("position");
    ParameterSet set("set");
    ParameterSet above("above");
    position.addParameter(x);
    set.addParameter(position);
    above.addParameterSet(set);
    key(x, {{0, 1.}, {4, 2.}, {6, 3.}});
    const auto broken = [](const auto& what) { return verify(what).toStdString(); };
    EXPECT_EQ(broken(above), "");
    EXPECT_EQ(broken(x), "");

    x.adjustKeyframesTime([](Time time) { return time > Time::fromInt(4) ? time : Time::fromInt(4); });
    EXPECT_EQ(broken(above), "x: keyframes are not in ascending order of valid times");
    x.adjustKeyframesTime([](Time) { return Time::INVALID; });
    EXPECT_EQ(broken(x), "x: keyframes are not in ascending order of valid times");
    x.clearViewData();
    position.setUpstreamParameters({});
    EXPECT_EQ(broken(above), "position: the compound does not listen to one of its parts");
    EXPECT_EQ(broken(position), broken(set));

    FastViewMap<double> map;
    static_cast<void>(map[View(3)]);
    EXPECT_EQ(map.brokenInvariant(), nullptr);
    FastViewMap<double> fewer;
    static_cast<void>(fewer[View(0)]);
    map.initSourceData(fewer);
    EXPECT_STREQ(map.brokenInvariant(), "a real view does not find its own data");
}

} // namespace

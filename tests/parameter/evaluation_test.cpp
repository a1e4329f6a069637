#include "prm/CurveKinds.h"
#include "tests/support/Allocations.h"
#include "tests/support/Test.h"

#include <deque>
#include <set>

using namespace Prm;
using Mode = MVInterpolationParams::Mode;

namespace {

TEST(Evaluation, ATypeThatDoesNotBlendStepsAndHolds) {
    Parameter<QPoint> parameter;
    parameter.vSetExtrapolationAfter(Extrapolation::Linear);
    for (const int view : {0, 4, 10})
        key(parameter, {{10, QPoint(1, view)}, {20, QPoint(2, view)}}, static_cast<quint32>(view));
    for (const auto& [time, x] : {std::pair(-HUGE_VAL, 1), {10., 1}, {19.9, 1}, {20., 2}, {NAN, 2}, {HUGE_VAL, 2}})
        EXPECT_EQ(parameter.value(at(time, 6)), QPoint(x, 0)) << time;
    for (const Mode mode : {Mode::Nearest, Mode::Linear, Mode::Smooth}) {
        parameter.setViewInterpolation({mode});
        for (const auto& [view, y] : {std::pair(2u, 0), {3u, 4}, {7u, 4}, {8u, 10}, {11u, 10}})
            EXPECT_EQ(parameter.value(at(5, view)), QPoint(1, y)) << mode << ' ' << view;
    }
}

TEST(Evaluation, OfTwoViewsEquallyFarTheLowerOneIsBlended) {
    Number number;
    number.setViewInterpolation({Mode::Smooth});
    for (const quint32 view : {0u, 2u, 4u, 6u})
        key(number, {{0, view == 0 ? 8. : 0.}}, view);
    EXPECT_EQ(number.value(at(0, 3)), -1);
}

TEST(Evaluation, DisorderedKeyframesGiveValuesWithinReach) {
    NumericParameter<double> parameter;
    key(parameter, {{1, 1.}, {2, 2.}, {3, 3.}, {4, 4.}, {5, 5.}, {6, 6.}});
    parameter.vSetExtrapolationBefore(Extrapolation::Linear);
    parameter.adjustKeyframesTime([](Time time) { return Time::fromDouble(std::fmod(4 * time.toDouble(), 5)); });
    for (int quarter = -8; quarter <= 32; ++quarter)
        EXPECT_LE(std::abs(parameter.value(at(0.25 * quarter))), 20) << quarter;
    parameter.adjustKeyframesTime([](Time) { return Time(); });
    Context next = at(-1);
    EXPECT_TRUE(parameter.bNextKeyframe(next, next));
    EXPECT_FALSE(parameter.bNextKeyframe(next, next)) << "all are at one time";
}

/// Adds something to what a master's value is.
struct OneMore : Parameter<double> {
    double value(const Context& context, Cache* cache = nullptr) const override {
        return Parameter<double>::value(context, cache) + 1;
    }
};
struct OfAHosts : NumericParameter<double> {};

/// What the last of a chain of masters shows, which are tied in steps through the chain; the first one shows 5.
template <class Kind> double shownByLast(int count, int step) {
    std::deque<Kind> chain(static_cast<std::size_t>(count));
    Kind& first = chain.front();
    Kind& last = chain.back();
    key(first, {{0, 5.}, {10, 5.}});
    first.vSetInterpolationData(IType(Interpolation::Bezier, 1), 0, View(0));
    first.vSetExtrapolationBefore(Extrapolation::Linear);
    first.vSetExtrapolationAfter(Extrapolation::Custom0);
    key(last, {{3, 1.}});
    Kind another;
    EXPECT_TRUE(first.bAddConstrainedParameter(&another));
    for (int i = 0; i < count; ++i) {
        const auto master = static_cast<std::size_t>(static_cast<qint64>(i) * step % count);
        EXPECT_TRUE(master + 1 == chain.size() || chain[master].bAddConstrainedParameter(&chain[master + 1]));
    }
    EXPECT_EQ(last.interpolation(at(3)), Interpolation::Bezier);
    EXPECT_EQ(last.interpolationData({&last, View(), 0}), IType(Interpolation::Bezier, 1));
    EXPECT_EQ(last.extrapolationBefore(), Extrapolation::Linear);
    EXPECT_EQ(last.extrapolationAfter(), Extrapolation::Custom0);
    const auto sampled = [&] { return last.sampleValues(Frame::fromInt(3), Frame::fromInt(3), View()); };
    EXPECT_EQ(sampled(), QVector<double>{5});
    EXPECT_EQ(last.keyframeValue(0, View(0)), 1) << "its own";
    EXPECT_FALSE(last.bAddConstrainedParameter(&first)) << "a circle";
    const double shown = last.value(at(3));
    EXPECT_EQ(explain(last, at(3)).value.toDouble(), shown);
    Parameter<int> other;
    EXPECT_TRUE(other.bAddConstrainedParameter(&last));
    EXPECT_EQ(sampled(), QVector<double>{1}) << "a master of another type";
    return shown;
}

TEST(Evaluation, ChainsOfMastersMayBeLong) {
    const Warnings warnings;
    constexpr int count = 30011;
    for (const int step : {1, count - 1, 7919}) {
        EXPECT_EQ(shownByLast<NumericParameter<double>>(count, step), 5);
        EXPECT_EQ(shownByLast<OfAHosts>(count, step), 5);
    }
    EXPECT_EQ(shownByLast<OneMore>(20, 1), 25) << "each of them is asked";
    EXPECT_GE(shownByLast<OneMore>(count, 1), 100);
}

/// Shows what reaches the hooks, which may ask again.
struct Hooked : Parameter<double> {
    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override {
        seen = cache;
        return keyframe(around.before.index, around.before.view).value + 100 * context.view.id() +
               keyframe(around.after.index, around.after.view).value;
    }
    double extrapolateValue(const BoundingKeyframes& around, const Context&, Cache* cache) const override {
        seen = cache;
        return around.before.parameter ? 1 : around.after.parameter ? -1 : 0.5;
    }
    bool supportsExtrapolationFromNoKeys() const override { return isKnownWithoutKeys; }
    bool hasViewData(const View& view) const override { return view == View(1); }
    bool isKnownWithoutKeys = false;
    mutable const Cache* seen = nullptr;
};

TEST(Evaluation, HooksGetTheirKeyframesContextAndCache) {
    char place = 0;
    auto* const cache = reinterpret_cast<Cache*>(&place);
    Hooked parameter;
    EXPECT_EQ(parameter.value(at(1)), 0);
    parameter.isKnownWithoutKeys = true;
    EXPECT_EQ(parameter.value(at(1)), 0.5);
    key(parameter, {{10, 30.}, {20, 40.}});
    const std::tuple<Context, double, bool> rows[] = {{at(9), -1, true},      {at(10), 30, false}, {at(12), 70, true},
                                                      {at(12, 2), 270, true}, {at(20), 40, false}, {still(), 1, true}};
    for (const auto& [context, value, hooked] : rows) {
        parameter.seen = nullptr;
        EXPECT_EQ(parameter.value(context, cache), value) << context.time.toDouble();
        EXPECT_EQ(parameter.seen == cache, hooked);
    }
    EXPECT_EQ(parameter.keyframeCount(View(0)), 0u);
    EXPECT_EQ(parameter.keyframeCount(View(1)), 2u);
    EXPECT_EQ(parameter.sampleValues(Frame::fromInt(9), Frame::fromInt(10), View()), (QVector<double>{-1, 30}));
    EXPECT_TRUE(parameter.sampleValues(Frame::fromInt(3), Frame::fromInt(2), View()).isEmpty());
}

template <class Kind, class T> int allocationsWith(const T& a, const T& b, Mode mode) {
    Kind parameter;
    parameter.setViewInterpolation({mode});
    parameter.vSetDefaultInterpolation(Interpolation::Bezier);
    for (const quint32 view : {0u, 4u, 10u})
        key<T>(parameter, {{0, a}, {2, b}, {4, a}, {8, b}}, view);
    parameter.vSetExtrapolationBefore(Extrapolation::Linear);
    parameter.value(at(0));
    const int before = Allocations::made();
    for (const quint32 view : {0u, 2u, 4u, 7u, 12u}) {
        for (int half = -2; half <= 18; ++half)
            parameter.value(at(0.5 * half, view));
    }
    return Allocations::made() - before;
}

TEST(Evaluation, NothingIsAllocated) {
    if (!Allocations::areCounted())
        GTEST_SKIP() << "allocations are not counted in this build";
    for (const Mode mode : {Mode::Off, Mode::Nearest, Mode::Linear, Mode::Smooth}) {
        SCOPED_TRACE(mode);
        EXPECT_EQ((allocationsWith<NumericParameter<int>>(1, 2, mode)), 0);
        EXPECT_EQ((allocationsWith<NumericParameter<double>>(1., 2., mode)), 0);
        EXPECT_EQ((allocationsWith<PointParameter>(QPointF(1, 2), QPointF(2, 3), mode)), 0);
        EXPECT_EQ((allocationsWith<Parameter<QString>>(QString::number(1e8), QString::number(1e9), mode)), 0);
    }
}

/// How many different hashes the rows of values have.
template <class T> std::size_t hashes(std::initializer_list<std::vector<T>> rows) {
    std::set<QString> found;
    for (const std::vector<T>& values : rows)
        found.insert(hashOf([&](Bsc::Hash& hash) {
            for (const T& value : values)
                ValueType<T>::addToHash(hash, value);
        }));
    return found.size();
}

TEST(Evaluation, DifferentValuesHashApart) {
    EXPECT_EQ(hashes<bool>({{false}, {true}}), 2u);
    EXPECT_EQ(hashes<int>({{0}, {1}, {-1}, {256}, {1 << 24}, {0, 0}}), 6u);
    EXPECT_EQ(hashes<unsigned int>({{0}, {1}, {~0u}, {256}, {1u << 24}}), 5u);
    EXPECT_EQ(hashes<double>({{0}, {1}, {-1}, {std::nextafter(1, 2)}, {HUGE_VAL}, {NAN}}), 6u);
    EXPECT_EQ(hashes<QPointF>({{{0, 0}}, {{0, 1}}, {{1, 0}}, {{-1, 0}}}), 4u);
    EXPECT_EQ(hashes<QPoint>({{{0, 0}}, {{0, 1}}, {{1, 0}}, {{-1, 0}}}), 4u);
    EXPECT_EQ(hashes<QString>({{"ab", "c"}, {"a", "bc"}, {"abc", ""}, {"abc"}, {"abd"}, {}}), 6u);
    EXPECT_EQ(hashes<short>({{1, 23}, {12, 3}, {123}}), 3u) << "a type of a host's";
}

TEST(Evaluation, TheHashIsThatOfTheValue) {
    Parameter<bool> parameter;
    parameter.vSetValue(true, still());
    parameter.vSetValue(false, still(2));
    key(parameter, {{3, false}});
    // Where the time is no frame, the static value of view 0 in every view.
    for (const auto& [time, value] : {std::pair(3., false), {-0.5, false}, {-1., true}, {NAN, true}}) {
        const Context where = at(time, 2);
        EXPECT_EQ(hashOf([&](Bsc::Hash& hash) { parameter.calculateHash(hash, where); }),
                  hashOf([&, &theValue = value](Bsc::Hash& hash) { ValueType<bool>::addToHash(hash, theValue); }));
    }
}

TEST(Evaluation, MetaTypesMakeParameters) {
    for (const char* const name : {"QPoint", "QPointF", "QString", "double", "unsigned int", "int", "bool"}) {
        const int id = QMetaType::type(QByteArray("Prm::Parameter<") + name + '>');
        void* const made = QMetaType::create(id);
        ASSERT_NE(made, nullptr) << name;
        QMetaType::destroy(id, made);
    }
}

TEST(Lookup, OfManyViewsThatComeAndGoInAnyOrder) {
    constexpr quint32 count = 20000;
    for (const quint32 step : {1u, count - 1, 7919u}) {
        Number number;
        for (quint32 i = 0; i < count; ++i)
            number.vSetValue(i * step % count, still(i * step % count));
        EXPECT_EQ(number.numViews(), static_cast<int>(count));
        for (quint32 view = 0; view < count; ++view) {
            ASSERT_EQ(number.staticValue(View(view)), view) << step;
            EXPECT_TRUE(view % 16 == 5 || number.deleteView(View(view)));
        }
        EXPECT_EQ(number.viewList().size(), count / 16);
        EXPECT_EQ(number.staticValue(View(4)), 5) << "shows the first";
        EXPECT_EQ(detail::verify(number), QString());
    }
}

const auto custom = [](quint32 k) { return static_cast<Interpolation>(4 + k); };
const auto customOutside = [](quint32 k) { return static_cast<Extrapolation>(3 + k); };

/// Registers kinds for as long as it lives.
struct CustomKinds {
    CustomKinds() {
        registerInterpolation(custom(1), [](const IType& shape, double x) { return x * shape.y2; });
        registerInterpolation(custom(2), [](const IType&, double) { return NAN; });
        const auto cycle = [](Time time, Time first, Time last) {
            return time + (time < first ? last - first : first - last);
        };
        registerExtrapolation(customOutside(0), cycle);
        registerExtrapolation(customOutside(2), [](Time, Time, Time) { return Time(Time::INVALID); });
    }
    ~CustomKinds() {
        for (const quint32 k : {0u, 1u, 2u})
            registerInterpolation(custom(k), {}), registerExtrapolation(customOutside(k), {});
    }
    Q_DISABLE_COPY(CustomKinds)
};

// What edits of all kinds that a plain model knows give is compared in fuzz/edits_fuzz.cpp.
TEST(Curves, KindsThatTheModelDoesNotKnow) {
    const CustomKinds kinds;
    NumericParameter<double> parameter;
    key(parameter, {{1, 5.}, {2, 6.}, {3, 20.}, {4, 18.}});
    parameter.vSetInterpolationData(IType(), 0, View());
    parameter.vSetInterpolationData({custom(1), 0, 0, 0, 2}, 2, View());
    const std::tuple<const char*, Extrapolation, double, double> rows[] = {
        {"no named kind of segment is constant", Extrapolation::Linear, 1.5, 5},
        {"nor does it continue", Extrapolation::Linear, -1, 5},
        {"a registered one", Extrapolation::Linear, 3.25, 19},
        {"is continued by its chord", Extrapolation::Linear, 5, 16},
        {"no finite line", Extrapolation::Linear, -INFINITY, 5},
        {"no named kind outside", Extrapolation{}, 0, 5},
        {"a registered one, before", customOutside(0), -1, 6},
        {"after", customOutside(0), 6, 20},
        {"held to the range", customOutside(2), 0, 18},
    };
    for (const auto& [name, kind, time, value] : rows) {
        parameter.vSetExtrapolationBefore(kind);
        parameter.vSetExtrapolationAfter(kind);
        EXPECT_NEAR(parameter.value(at(time)), value, 1e-12) << name;
    }
    EXPECT_FALSE(registerInterpolation(Interpolation::Bezier, [](const IType&, double) { return 0.0; }));
    EXPECT_FALSE(registerExtrapolation(Extrapolation::Linear, [](Time time, Time, Time) { return time; }));
}

/// The value at a time of a straight line from time 0 to 10.
template <class T> T straight(T first, T second, double time) {
    NumericParameter<T> parameter;
    key<T>(parameter, {{0, first}, {10, second}});
    parameter.vSetExtrapolationBefore(Extrapolation::Linear);
    parameter.vSetExtrapolationAfter(Extrapolation::Linear);
    return parameter.value(at(time));
}

TEST(Curves, NumbersAreRoundedAndHeldToTheirRange) {
    constexpr double largest = std::numeric_limits<double>::max();
    constexpr int top = std::numeric_limits<int>::max();
    constexpr int bottom = std::numeric_limits<int>::min();
    constexpr unsigned int most = std::numeric_limits<unsigned int>::max();
    const std::tuple<const char*, double, double> rows[] = {
        {"half rounds up", straight(0, 5, 1), 1},
        {"half rounds away from zero", straight(0, -5, 1), -1},
        {"less than a half", straight(0, -5, 0.9), 0},
        {"whole range", straight(bottom, top, 5), -1},
        {"above", straight(bottom, top, 1000), top},
        {"below", straight(bottom, top, -1000), bottom},
        {"unsigned, downwards", straight(most, 0u, 1), 3865470566.},
        {"unsigned, above", straight(0u, most, 11), most},
        {"unsigned, below", straight(5u, most, -1), 0},
        {"no overflow on the way", straight(-largest, largest, 5), 0},
        {"past the largest number", straight(-largest, largest, 20), largest},
        {"infinity", straight(0., static_cast<double>(INFINITY), 5), INFINITY},
        {"beside infinity", straight(0., static_cast<double>(INFINITY), 20), INFINITY},
    };
    for (const auto& [name, value, expected] : rows)
        EXPECT_EQ(value, expected) << name;
    EXPECT_TRUE(std::isnan(straight(std::nan(""), 1., 5)));
    const CustomKinds kinds;
    NumericParameter<int> parameter;
    key(parameter, {{0, 1}, {10, 2}, {-INFINITY, 4}});
    parameter.vSetInterpolation(custom(2), at(0));
    EXPECT_EQ(parameter.value(at(5)), 0) << "NaN";
    EXPECT_EQ(parameter.value(at(-1e300)), 4);
}

TEST(Curves, AHostsFunctionMayEditTheListThatItIsAskedAbout) {
    const CustomKinds kinds;
    NumericParameter<double> parameter;
    parameter.vSetDefaultInterpolation(custom(0));
    parameter.vSetExtrapolationAfter(customOutside(1));
    registerInterpolation(custom(0), [&](const IType& shape, double x) {
        parameter.vDeleteAllKeyframes(View());
        return shape.interpolation == custom(0) ? x : NAN;
    });
    registerExtrapolation(customOutside(1), [&](Time, Time first, Time) {
        parameter.clearViewData();
        return first + 2.5;
    });
    for (const auto& [time, value] : {std::pair(15, 6), {30, 4}}) {
        key(parameter, {{10, 2.}, {20, 10.}});
        EXPECT_EQ(parameter.value(at(time)), value);
    }
}

} // namespace

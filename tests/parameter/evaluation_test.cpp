#include "host/bsc/Hash.h"
#include "prm/NumericParameter.h"
#include "tests/parameter/Keying.h"
#include "tests/support/Allocations.h"

#include <QMetaType>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

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

TEST(Evaluation, DisorderedKeyframesGiveValuesWithinReach) {
    NumericParameter<double> parameter;
    key(parameter, {{1, 1.}, {2, 2.}, {3, 3.}, {4, 4.}, {5, 5.}, {6, 6.}});
    parameter.vSetExtrapolationBefore(Extrapolation::Linear);
    parameter.adjustKeyframesTime([](Time time) { return Time::fromDouble(std::fmod(4 * time.toDouble(), 5)); });
    for (int quarter = -8; quarter <= 32; ++quarter)
        EXPECT_LE(std::abs(parameter.value(at(0.25 * quarter))), 20) << quarter;
}

TEST(Evaluation, AConstrainedParameterShowsItsMaster) {
    Parameter<double> first;
    Parameter<double> second;
    Parameter<double> third;
    Parameter<int> other;
    key(first, {{10, 5.}});
    key(third, {{10, 1.}});
    first.vSetInterpolationData(IType(Interpolation::Bezier, 1), 0, View(0));
    first.vSetExtrapolationBefore(Extrapolation::Linear);
    first.vSetExtrapolationAfter(Extrapolation::Custom0);
    ASSERT_TRUE(first.bAddConstrainedParameter(&second) && second.bAddConstrainedParameter(&third));
    EXPECT_EQ(third.value(at(10)), 5);
    EXPECT_EQ(third.sampleValues(Frame::fromInt(10), Frame::fromInt(10), View()), QVector<double>{5});
    EXPECT_EQ(third.interpolation(at(10)), Interpolation::Bezier);
    EXPECT_EQ(third.interpolationData({&third, View(0), 0}), IType(Interpolation::Bezier, 1));
    EXPECT_EQ(third.extrapolationBefore(), Extrapolation::Linear);
    EXPECT_EQ(third.extrapolationAfter(), Extrapolation::Custom0);
    EXPECT_EQ(third.keyframeValue(0, View(0)), 1);
    ASSERT_TRUE(other.bAddConstrainedParameter(&third));
    EXPECT_EQ(third.value(at(10)), 1) << "a master of another type";
}

/// Shows what reaches the hooks, which may ask again.
class Hooked : public Parameter<double> {
public:
    explicit Hooked(bool fromNoKeys) : ParameterWithoutType(false, false, nullptr), m_fromNoKeys(fromNoKeys) {}
    double interpolateValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const override {
        seen = cache;
        return keyframe(around.before.index, around.before.view).value + 100 * context.view.id() +
               keyframe(around.after.index, around.after.view).value;
    }
    double extrapolateValue(const BoundingKeyframes& around, const Context&, Cache* cache) const override {
        seen = cache;
        return around.before.parameter ? 1 : around.after.parameter ? -1 : 0.5;
    }
    bool supportsExtrapolationFromNoKeys() const override { return m_fromNoKeys; }
    mutable const Cache* seen = nullptr;

private:
    bool m_fromNoKeys;
};

TEST(Evaluation, HooksGetTheirKeyframesContextAndCache) {
    char place = 0;
    auto* const cache = reinterpret_cast<Cache*>(&place);
    EXPECT_EQ(Hooked(false).value(at(1)), 0);
    EXPECT_EQ(Hooked(true).value(at(1)), 0.5);
    Hooked parameter(false);
    key(parameter, {{10, 30.}, {20, 40.}});
    const std::tuple<Context, double, bool> rows[] = {{at(9), -1, true},      {at(10), 30, false}, {at(12), 70, true},
                                                      {at(12, 2), 270, true}, {at(20), 40, false}, {still(), 1, true}};
    for (const auto& [context, value, hooked] : rows) {
        parameter.seen = nullptr;
        EXPECT_EQ(parameter.value(context, cache), value) << context.time.toDouble();
        EXPECT_EQ(parameter.seen == cache, hooked);
    }
}

class Redefined : public Parameter<int> {
public:
    Redefined() : ParameterWithoutType(false, false, nullptr) {}
    bool hasViewData(const View& view) const override { return view == View(1); }
};

TEST(Evaluation, SubclassesMayRedefineTheGuardsAndTheViews) {
    Redefined parameter;
    key(parameter, {{10, 1}});
    EXPECT_EQ(parameter.keyframeCount(View(0)), 0u);
    EXPECT_EQ(parameter.keyframeCount(View(1)), 1u);
}

TEST(Evaluation, SampledValuesAreTheSameBitForBit) {
    NumericParameter<double> parameter;
    parameter.setViewInterpolation({Mode::Smooth});
    parameter.vSetValue(5, at(1, 10));
    for (int i = 0; i < 40; ++i)
        parameter.vSetValue(std::sin(i), at(1.7 * i - 5, i % 2 ? 4 : 0));
    parameter.vSetExtrapolationAfter(Extrapolation::Linear);
    std::vector<Time> times{Time::INVALID};
    for (int i = 0; i < 400; ++i)
        times.push_back(Time::fromDouble(i < 300 ? 0.25 * i - 7 : (i * 7919) % 71));
    for (const quint32 view : {0u, 2u, 4u, 12u, ~0u, 4u}) {
        std::vector<double> sampled(times.size(), -1);
        parameter.sampleValues(times.data(), static_cast<int>(times.size()), View(view), sampled.data());
        for (std::size_t i = 0; i < times.size(); ++i) {
            const double value = parameter.value({times[i], View(view)});
            EXPECT_EQ(std::memcmp(&value, &sampled[i], sizeof value), 0) << view << " at " << times[i].toDouble();
        }
        // The second time view 4 is asked, its own data do not count.
        parameter.setSplittable(view != ~0u);
    }
    const QVector<double> frames = parameter.sampleValues(Frame::fromInt(3), Frame::fromInt(9), View(2));
    EXPECT_EQ(frames.size(), 7);
    EXPECT_EQ(frames.last(), parameter.value(at(9, 2)));
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

TEST(Evaluation, TheHashIsThatOfTheValue) {
    Parameter<bool> parameter;
    parameter.vSetValue(true, still());
    parameter.vSetValue(false, still(2));
    key(parameter, {{3, false}});
    // Where the time is no frame, the static value of view 0 in every view.
    const std::pair<double, char> rows[] = {{3, 0}, {-0.5, 0}, {-1, 1}, {NAN, 1}};
    for (const auto& [time, byte] : rows) {
        Bsc::Hash hash;
        parameter.calculateHash(hash, at(time, 2));
        Bsc::Hash expected;
        expected.addData(&byte, 1);
        EXPECT_EQ(hash.result(), expected.result()) << time;
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

} // namespace

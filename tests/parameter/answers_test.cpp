#include "prm/Answers.h"
#include "prm/RangeHash.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Prm;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

const IType held(Interpolation::Constant);
const IType line(Interpolation::Linear);
const IType ease(Interpolation::Bezier, 1 / 3., 0, 2 / 3., 1);

template <class Kind, class T>
std::unique_ptr<Kind> made(std::initializer_list<KeyframeData<T>> keyframes,
                           Extrapolation after = Extrapolation::Constant) {
    auto parameter = std::make_unique<Kind>(QStringLiteral("any"));
    for (const KeyframeData<T>& keyframe : keyframes)
        parameter->vSetValue(keyframe.value, keyframe.time);
    unsigned int index = 0;
    for (const KeyframeData<T>& keyframe : keyframes)
        parameter->vSetInterpolationData(keyframe.interpolationData, index++, View());
    parameter->vSetExtrapolationAfter(after);
    return parameter;
}

KeyframeData<double> keyOf(double time, double value, const IType& shape = line) {
    return {Time::fromDouble(time), value, shape};
}

std::string textOf(const TimeSpan& span) {
    return QString("%1%2 %3%4")
        .arg(span.withFrom ? '[' : '(')
        .arg(span.from)
        .arg(span.to)
        .arg(span.withTo ? ']' : ')')
        .toStdString();
}

TEST(Answers, WhileTheValueIsTheSame) {
    const auto steps =
        made<Number, double>({keyOf(0, 1, held), keyOf(10, 5, held), keyOf(20, 5), keyOf(30, 5), keyOf(40, 6)});
    const auto whole = made<NumericParameter<int>, int>({{Time::fromInt(0), 0, line}, {Time::fromInt(10), 5, line}});
    const auto sloped = made<Number, double>({keyOf(0, 1), keyOf(10, 2)}, Extrapolation::Linear);
    const Number still;
    const std::tuple<const char*, const BasicParameter*, double, const char*> rows[] = {
        {"before all", steps.get(), -3, "[-inf 10)"},    {"in a step", steps.get(), 9.5, "[-inf 10)"},
        {"equal keyframes", steps.get(), 25, "[10 30]"}, {"a line", steps.get(), 33, "[33 33]"},
        {"after all", steps.get(), 50, "[40 inf)"},      {"rounded", whole.get(), 2, "[1 3]"},
        {"a line outside", sloped.get(), 50, "[50 50]"}, {"no keyframes", &still, 3, "[-inf inf)"},
    };
    for (const auto& [name, parameter, time, expected] : rows)
        EXPECT_EQ(textOf(constantAround(*parameter, at(time))), expected) << name;
}

TEST(Answers, BoundsAndSlopes) {
    const auto eased = made<Number, double>({keyOf(0, 0, ease), keyOf(10, 10)}, Extrapolation::Linear);
    const auto over = made<Number, double>({keyOf(0, 0, {Interpolation::Bezier, 1 / 3., 2, 2 / 3., 2}), keyOf(10, 10)});
    const auto sharp = made<Number, double>(
        {keyOf(0, 0, {Interpolation::Bezier, 0, 1, 1, 0}), keyOf(10, 10, held), keyOf(20, 0)}, Extrapolation::Linear);
    const auto zigzag = made<Number, double>({keyOf(0, 0), keyOf(10, 10), keyOf(20, -5)}, Extrapolation::Linear);
    const std::tuple<const char*, const Number*, TimeSpan, double, double> rows[] = {
        {"an ease", eased.get(), {0, 10, true, true}, 0, 10},
        {"a part of it", eased.get(), {0, 5, true, true}, 0, 5},
        {"beyond its keyframes", over.get(), {0, 10, true, true}, 0, 40 * (std::sqrt(2.) - 1)},
        {"before a step", sharp.get(), {10, 20, true, false}, 10, 10},
        {"with the step", sharp.get(), {10, 20, true, true}, 0, 10},
        {"endless", zigzag.get(), TimeSpan::all(), -infinity, 10},
        {"no time", zigzag.get(), {4, 4, true, false}, 4, 4},
    };
    for (const auto& [name, parameter, span, least, greatest] : rows) {
        const auto found = bounds(*parameter, View(), span);
        EXPECT_TRUE(found.first == least || std::abs(found.first - least) < 1e-6) << name << ' ' << found.first;
        EXPECT_TRUE(found.second == greatest || std::abs(found.second - greatest) < 1e-6)
            << name << ' ' << found.second;
    }
    const std::tuple<const char*, const Number*, double, double> slopes[] = {
        {"flat start", eased.get(), 0, 0},      {"middle", eased.get(), 5, 1.5},     {"outside", eased.get(), 11, 0},
        {"corner", zigzag.get(), 10, -1.5},     {"last", zigzag.get(), 20, -1.5},    {"held", sharp.get(), 10, 0},
        {"vertical", sharp.get(), 0, infinity}, {"before all", zigzag.get(), -1, 0},
    };
    for (const auto& [name, parameter, time, expected] : slopes)
        EXPECT_DOUBLE_EQ(slope(*parameter, at(time)), expected) << name;
}

TEST(Answers, AHostsHooksAreNotGuessed) {
    struct Hooked : Number {
        using Number::Number;
        double extrapolateValue(const BoundingKeyframes&, const Context&, Cache*) const override { return 7; }
    };
    const auto hooked = made<Hooked, double>({keyOf(0, 1), keyOf(10, 1)});
    EXPECT_EQ(constantAround(*hooked, at(5)), TimeSpan::at(Time::fromInt(5)));
    EXPECT_FALSE(isConstant(*hooked, View(), {0, 1, true, true}));
    EXPECT_EQ(bounds(*hooked, View(), {0, 1, true, true}).second, infinity);
    EXPECT_EQ(polyline(*hooked, View(), {0, 1, true, true}, 1).size(), 1025);
    EXPECT_EQ(slope(*hooked, at(20)), 0);
}

TEST(Answers, CurvesAreReducedToWhatCanBeSeen) {
    const auto steps = made<Number, double>({keyOf(0, 0, held), keyOf(10, 5), keyOf(20, 10), keyOf(30, 15)});
    QVector<CurvePoint<double>> expected{
        {Time(), 0.0}, {Time::fromInt(10), 0.0}, {Time::fromInt(10), 5.0}, {Time::fromInt(30), 15.0}};
    EXPECT_EQ(polyline(*steps, View(), TimeSpan::all(), 0.1), expected);
    Number many;
    for (int i = 0; i < 10000; ++i)
        many.vSetValue(i % 7, at(i));
    EXPECT_GE(polyline(many, View(), TimeSpan::all(), 0.1).size(), 2800);
    EXPECT_LE(polyline(many, View(), TimeSpan::all(), 0.1, 100).size(), 401);
    EXPECT_EQ(sampleValues(many, View(), Time::fromInt(-2), 1, 5), (QVector<double>{0, 0, 0, 1, 2}));
    for (const double handle : {std::numeric_limits<double>::quiet_NaN(), 1.7e308, -infinity, 1e201}) {
        const auto wild = made<Number, double>({keyOf(0, 0, {Interpolation::Bezier, 1e-9, handle, 0, 0}), keyOf(9, 1)});
        EXPECT_LE(polyline(*wild, View(), TimeSpan::all(), 0.1).size(), 3) << handle;
    }
}

TEST(Answers, HashesOfSetsAreOfAllThatTheyHold) {
    Number number(QStringLiteral("number"), 3);
    CompoundParameter pair(QStringLiteral("pair"));
    NumericParameter<int> part(QStringLiteral("part"), 4);
    OwnedStaticParameter<unsigned int> count(QStringLiteral("count"), 5);
    ParameterSet set(QStringLiteral("set"));
    ParameterSet root;
    pair.addParameter(part);
    set.addBasicParameter(count);
    root.addParameter(pair);
    root.addParameter(number);
    root.addParameterSet(set);
    QString seen;
    root.forEachBasicParameter([&](const BasicParameter* member) { seen += member->scriptName() + ' '; });
    EXPECT_EQ(seen, "pair part number count ");
    const auto hashes = [&] {
        Bsc::Hash range;
        Bsc::Hash moment;
        hashRange(range, root, View(), {-5, 5, true, true});
        hashAt(moment, root, at(-2.5));
        return range.result().toString() + moment.result().toString();
    };
    QStringList all{hashes()};
    number.setScriptName(QStringLiteral("other"));
    EXPECT_EQ(hashes(), all.last()) << "names";
    count.setValue(6);
    all << hashes();
    part.vSetValue(5, at(-2.5));
    all << hashes();
    part.setSplittable(false);
    EXPECT_EQ(hashes(), all.last()) << "where values are stored";
    key(number, {{-5, 3.}, {5, 4.}});
    all << hashes();
    set.addParameter(number);
    all << hashes();
    EXPECT_EQ(all.size(), 5);
    EXPECT_EQ(all.removeDuplicates(), 0);
}

} // namespace

#include "tests/parameter/EditTable.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

constexpr quint32 none = 4294967295u;

TEST(Lookup, GuardsAndBorrowedData) {
    // Name, options, data, view; whether questions about the view's keyframes are answered, and whether it shows some,
    // its own or borrowed: 1 at 10 and 2 at 20.
    const std::tuple<const char*, const char*, const char*, quint32, bool, bool> rows[] = {
        {"own data", "ks", "0 10=1 20=2", 0, true, true},
        {"own data of another view", "ks", "0; 3 10=1 20=2", 3, true, true},
        {"borrowed data", "ks", "0 10=1 20=2; 3", 2, false, true},
        {"beyond all views", "ks", "0 10=1 20=2", 2147483646, false, true},
        {"invalid view", "ks", "0 10=1 20=2", none, false, true},
        {"unsplittable", "k", "0 10=1 20=2", 7, true, true},
        {"unsplittable, invalid view", "k", "0 10=1 20=2", none, true, true},
        {"not keyframed", "s", "0(2)", 0, false, false},
        {"no keyframes", "ks", "0(2)", 0, false, false}};
    for (const auto& [name, options, state, id, answers, keyed] : rows) {
        SCOPED_TRACE(name);
        const auto parameter = made(options, state);
        const View view(id);
        EXPECT_EQ(parameter->keyframeCount(view), answers ? 2u : 0u);
        EXPECT_EQ(parameter->bKeyframeAt(Context::Explicit(at(10, id))), answers);
        EXPECT_FALSE(parameter->bKeyframeAt(Context::Explicit(at(15, id))));
        const Context untouched = at(-1, 77);
        Context found = untouched;
        EXPECT_EQ(parameter->bNextKeyframe(at(10, id), found), answers);
        EXPECT_EQ(found, answers ? at(20, id) : untouched);
        EXPECT_FALSE(parameter->bNextKeyframe(at(20, id), found));
        EXPECT_EQ(parameter->bPreviousKeyframe(at(20, id), found), answers);
        EXPECT_EQ(found, answers ? at(10, id) : untouched);
        EXPECT_FALSE(parameter->bPreviousKeyframe(at(10, id), found));
        unsigned int index = 77;
        EXPECT_EQ(parameter->bNearestKeyframeIndex(at(15, id), index), answers);
        EXPECT_EQ(index, answers ? 1u : 77u);
        EXPECT_EQ(parameter->bNearestKeyframeTime(at(14.9, id), found.time), answers);
        EXPECT_EQ(found.time, Time::fromInt(answers ? 10 : -1));
        // The others answer from borrowed data too, without keyframes from the static value.
        EXPECT_EQ(parameter->keyframeTime(0, view), at(keyed ? 10 : 0, id));
        EXPECT_EQ(parameter->keyframeTime(7, view), at(0, id));
        EXPECT_EQ(parameter->keyframeIndexForTime(at(10, id)), keyed ? 0 : none);
        EXPECT_EQ(parameter->keyframeIndexForTime(at(15, id)), none);
        for (const unsigned int beyond : {1u, 7u, none}) {
            EXPECT_EQ(parameter->keyframe(beyond, view).time, keyed ? Time::fromInt(20) : Time(Time::INVALID));
            EXPECT_EQ(parameter->keyframe(beyond, view).value, 2);
            EXPECT_EQ(parameter->keyframe(beyond, view).interpolationData, IType(parameter->defaultInterpolation()));
            EXPECT_EQ(parameter->keyframeValue(beyond, view), 2);
        }
    }
}

class Redefined : public Parameter<int> {
public:
    Redefined() : ParameterWithoutType(false, false, nullptr) {}
    bool hasViewData(const View& view) const override { return view == View(1); }
};

TEST(Lookup, SubclassesMayRedefineTheGuardsAndTheViews) {
    Redefined parameter;
    key(parameter, {{10, 1}});
    EXPECT_EQ(parameter.keyframeCount(View(0)), 0u);
    EXPECT_EQ(parameter.keyframeCount(View(1)), 1u);
}

TEST(Lookup, AllKeyframesInTheOrderOfViewsAndTimes) {
    EXPECT_EQ(made("ks", "0 5=1; 4 7=1 -3=1")->allKeyframes(), (QVector<Context>{at(5), at(-3, 4), at(7, 4)}));
    EXPECT_TRUE(made("ks", {})->allKeyframes().isEmpty());
}

} // namespace

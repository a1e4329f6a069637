#pragma once

// The edits that a parameter and its model are both put through, and what must be the same afterwards.

#include "prm/project/Invariants.h"
#include "tests/parameter/Keying.h"
#include "tests/parameter/Model.h"
#include "tests/support/ChangeRecorder.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace Modelled {

// --- edits of both ---------------------------------------------------------------------------------------------------

inline const IViewsProvider* threeViews() {
    static Views views;
    views.setViewNames({{"left", "l"}, {"middle", "m"}, {"right", "r"}});
    views.setCurrentView(View(1));
    return &views;
}

inline void resetAround(View hero, Model& model) {
    model.resetAll(hero);
}

inline void resetAround(View hero, P& parameter) {
    Parameter<bool> selector(QStringLiteral("selector"), false, Splittable);
    selector.vSetValue(true, still());
    if (hero.isValid())
        selector.vSetValue(false, still(hero.id()));
    parameter.setViewSelector(&selector);
    parameter.resetAll();
}

struct Step {
    int act, own, view, from, time, value, kind;

    View at() const { return View(static_cast<quint32>(view)); }
    View other() const { return View(static_cast<quint32>(from)); }
    Context where() const { return {time > 20 ? Time(Time::INVALID) : Time::fromDouble(time / 2.), at()}; }
    Context elsewhere() const { return {Time::fromInt(time / 3 + value), at()}; }
    Context::Explicit exactly() const { return Context::Explicit(where()); }
    Frame frame() const { return time > 20 ? Frame(Frame::INVALID) : Frame::fromInt(time + 4); }
    AnimationState animation() const {
        AnimationFlags flags;
        flags.setAllViews(kind > 1);
        return {flags, kind == 0 ? nullptr : threeViews()};
    }
    Interpolation segment() const { return static_cast<Interpolation>(1 + kind); }
    Extrapolation outside() const { return static_cast<Extrapolation>(1 + kind % 3); }
    IType shape() const { return value < 0 ? IType(segment()) : IType(segment(), 0.2, 0.1 * value, 0.7, 2); }
    Time moved(Time old) const { return old + (kind > 0 ? value / 4. : old < Time::fromInt(4) ? -3. : 3.); }
};

struct Pair {
    explicit Pair(ParameterOptions options) : real(QStringLiteral("random"), 0, options) {
        model.keyframed = options.testFlag(Keyframed);
        model.splittable = options.testFlag(Splittable);
        recorder.then = [this](const ParameterChange& change) {
            if (change.type == ParameterChange::KEYFRAME_REMOVED)
                recorder.lines += "at " + std::to_string(change.context.time.toDouble()) + "\n";
        };
    }
    P real;
    Model model;
    ChangeRecorder recorder{&real};
    /// Asked for at first, it shows the present views.
    const std::vector<View>& views = real.viewList();
};

template <class A, class B> void same(const char* what, const A& real, const B& model) {
    if (!(real == static_cast<A>(model)))
        throw Difference(std::string(what) + ": " + std::to_string(real) + " instead of " + std::to_string(model));
}

inline void near(const char* what, double real, double model) {
    if (!(std::abs(real - model) <= 1e-9 * std::max(1., std::abs(model))))
        same(what, real, model);
}

struct Act {
    template <class Do>
    Act(const char* called, const Do& act)
        : name(called), run([called, act](Pair& own, Pair& other, const Step& s) {
              static_cast<void>(called);
              if constexpr (std::is_void_v<decltype(act(own.real, other.real, s))>)
                  act(own.real, other.real, s), act(own.model, other.model, s);
              else
                  same(called, act(own.real, other.real, s), act(own.model, other.model, s));
          }) {}
    const char* name;
    std::function<void(Pair& own, Pair& other, const Step& step)> run;
};

#define ACT(...)                                                                                                       \
#__VA_ARGS__, [](auto& own, [[maybe_unused]] auto& other, [[maybe_unused]] const Step& s) { return __VA_ARGS__; }
inline const Act acts[] = {
    {ACT(own.vSetValue(s.value, s.where()))},
    {ACT(own.vSetValue(s.value, s.elsewhere()))},
    {ACT(own.setVariantValue(QVariant(s.value), s.where(), std::nothrow))},
    {ACT(own.iAddKeyframe(s.where()))},
    {ACT(own.iAddKeyframe(s.frame(), s.animation()))},
    {ACT(own.vDeleteKeyframe(s.exactly()))},
    {ACT(own.vDeleteAllKeyframes(s.at()))},
    {ACT(own.vReset(s.where()))},
    {ACT(resetAround(s.at(), own))},
    {ACT(own.vSetInterpolation(s.segment(), s.where()))},
    {ACT(own.vSetInterpolationData(s.shape(), static_cast<unsigned>(s.from), s.at()))},
    {ACT(own.vSetExtrapolationBefore(s.outside()))},
    {ACT(own.vSetExtrapolationAfter(s.outside()))},
    {ACT(own.vSetDefault(s.value))},
    {ACT(own.vSetDefaultInterpolation(s.segment()))},
    {ACT(own.setSplittable(s.kind > 0))},
    {ACT(own.setViewInterpolation({static_cast<Mode>(s.kind)}))},
    {ACT(own.adjustKeyframesTime([&](Time time) { return s.moved(time); }))},
    {ACT(own.vCopyKeyframeDataFrom(&other))},
    {ACT(own.assignFrom(other))},
    {ACT(own.doImportState(other.exportState()))},
    {ACT(own.copyViewData(s.other(), s.at(), s.kind > 1 ? nullptr : &other))},
    {ACT(own.uniquifyView(s.at()))},
    {ACT(own.initialiseHeroView(s.at(), s.other()))},
    {ACT(own.deleteView(s.at()))},
    {ACT(own.clearViewData())},
};

inline void showValue(const Step& s, std::ostream& out) {
    out << acts[s.act].name << " of " << s.own << ": view " << s.view << ", from " << s.from << ", time " << s.time / 2.
        << ", value " << s.value << ", kind " << s.kind << "\n";
}

// --- comparison ------------------------------------------------------------------------------------------------------

inline void compareKeys(const P& real, Model& model, View view) {
    const Data held = model.read(view);
    const Data read = model.keyframed ? held : Data{held.still, {}};
    const std::size_t count = read.keys.size();
    const Key beyond = count > 0 ? read.keys.back() : Key(Time::INVALID, read.still, IType(model.first));
    same("has data", real.hasViewData(view), model.owns(view));
    near("static value", real.staticValue(view), read.still);
    same("count", real.keyframeCount(view), model.shown(view).keys.size());
    for (unsigned i = 0; i <= count; ++i) {
        const Key& expected = i < count ? read.keys[i] : beyond;
        const Key key = real.keyframe(i, view);
        HOLDS(real.keyframeTime(i, view) == Context(i < count ? expected.time : Time(), view));
        same("time", key.time.toDouble(), expected.time.toDouble());
        near("value", key.value, expected.value);
        same("key's value", real.keyframeValue(i, view), key.value);
        HOLDS(key.interpolationData == expected.interpolationData);
        HOLDS(real.interpolationData({&real, view, i}) ==
              (i < held.keys.size() ? held.keys[i].interpolationData : IType(model.first)));
        // Rounding must not decide later whether a value is new.
        if (model.owns(view) && i < count)
            model.views[view.id()].keys[i].value = key.value;
    }
}

inline void compareLookup(const P& real, const Data& shown, const Context& at) {
    const auto count = static_cast<int>(shown.keys.size());
    const auto there = static_cast<int>(shown.find(at.time));
    const auto bound = static_cast<int>(shown.bound(at.time));
    const auto check = [&](auto find, int position) {
        const bool exists = position >= 0 && position < count;
        Context found(Time::fromInt(-1), View(77));
        const Context expected = exists ? Context(shown.keys[static_cast<unsigned>(position)].time, at.view) : found;
        same("found", (real.*find)(at, found), exists);
        HOLDS(found == expected);
    };
    using Found = bool (ParameterWithoutType::*)(const Context&, Context&) const;
    same("there", real.bKeyframeAt(Context::Explicit(at)), there < count);
    check(static_cast<Found>(&ParameterWithoutType::bPreviousKeyframe), bound - 1);
    check(static_cast<Found>(&ParameterWithoutType::bNextKeyframe), there < count ? there + 1 : bound);
    unsigned nearest = 77;
    Time time;
    same("nearest", real.bNearestKeyframeIndex(at, nearest), count > 0);
    same("nearest", real.bNearestKeyframeTime(at, time), count > 0);
    const auto distance = [&](const Key& key) { return std::abs(key.time - at.time); };
    for (const Key& key : shown.keys) {
        const Key& found = shown.keys[nearest];
        HOLDS(distance(found) < distance(key) || (distance(found) == distance(key) && found.time >= key.time));
    }
    same("nearest", nearest, count > 0 ? nearest : 77);
    same("nearest", time.toDouble(), count > 0 ? shown.keys[nearest].time.toDouble() : 0);
}

inline void compare(Pair& pair) {
    const P& real = pair.real;
    Model& model = pair.model;
    HOLDS(pair.recorder.take() == std::exchange(model.told, {}));
    same("keyframed", real.isKeyframed(), model.keyframed);
    same("splittable", real.splittable(), model.splittable);
    same("split", real.isSplit(), model.isSplit);
    HOLDS(pair.views == model.viewList());
    HOLDS(detail::verify(real).isEmpty());
    same("default", real.defaultValue(), model.standard.still);
    const auto kept = [&](Extrapolation kind) { return model.keyframed ? kind : Extrapolation::Constant; };
    HOLDS(real.extrapolationBefore() == kept(model.before));
    HOLDS(real.extrapolationAfter() == kept(model.after));
    for (const quint32 id : {0u, 1u, 2u, 3u, 4u, 5u, 7u, largest, ~0u}) {
        compareKeys(real, model, View(id));
        for (double time = -4; time < 12; time += 0.75) {
            const Context where = at(time, id);
            const Data& data = model.read(where.view);
            const int index = data.find(where.time) < data.keys.size() ? static_cast<int>(data.find(where.time)) : -1;
            near("value", real.value(where), model.value(where));
            same("index", static_cast<int>(real.keyframeIndexForTime(where)), index);
            HOLDS(real.interpolation(where) == model.interpolation(where));
            compareLookup(real, model.shown(where.view), where);
        }
    }
}

} // namespace Modelled

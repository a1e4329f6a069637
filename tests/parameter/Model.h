#pragma once

// A plain, slow model of a parameter, the edits that both are put through, and what must be the same afterwards.

#include "prm/AnimationState.h"
#include "prm/NumericParameter.h"
#include "prm/Views.h"
#include "prm/detail/BezierEasing.h"
#include "prm/detail/Invariants.h"
#include "tests/parameter/Keying.h"
#include "tests/support/ChangeRecorder.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <ostream>
#include <stdexcept>

namespace Modelled {

using namespace Prm;
using Mode = MVInterpolationParams::Mode;
using Key = KeyframeData<double>;
using P = NumericParameter<double>;

/// Parameter and model are not the same.
struct Difference : std::runtime_error {
    using runtime_error::runtime_error;
};
#define HOLDS(condition) ((condition) ? void() : throw Modelled::Difference(#condition))

constexpr quint32 largest = 2147483646;

// --- curves ----------------------------------------------------------------------------------------------------------

inline IType shaped(const IType& present, Interpolation kind) {
    const bool hasNumbers = present != IType(present.interpolation);
    if (present.interpolation == kind && hasNumbers && kind >= Interpolation::Bezier)
        return present;
    return kind == Interpolation::Bezier ? IType(kind, 1. / 3, 0, 2. / 3, 1) : IType(kind);
}

inline double progress(const IType& shape, double x) {
    if (shape.interpolation == Interpolation::Constant)
        return 0;
    return shape.interpolation == Interpolation::Bezier ? detail::easedProgress(shape, x) : x;
}

inline double endSlope(const IType& shape, bool atStart) {
    if (shape.interpolation != Interpolation::Bezier)
        return shape.interpolation == Interpolation::Constant ? 0 : 1;
    return atStart ? detail::easingSlopeAtStart(shape) : detail::easingSlopeAtEnd(shape);
}

// --- the model -------------------------------------------------------------------------------------------------------

struct Data {
    double still = 0;
    std::vector<Key> keys;

    /// The position of the first key at the time, or the number of keys.
    std::size_t find(Time time) const {
        std::size_t i = 0;
        while (i < keys.size() && keys[i].time != time)
            ++i;
        return i;
    }
    /// The position of the first key that is not earlier.
    std::size_t bound(Time time) const {
        const auto isEarlier = [=](const Key& key) { return key.time < time; };
        return static_cast<std::size_t>(std::find_if_not(keys.begin(), keys.end(), isEarlier) - keys.begin());
    }
};

/// Its edits are called as the parameter's are.
struct Model {
    bool keyframed = true;
    bool splittable = true;
    bool isSplit = false;
    Extrapolation before = Extrapolation::Constant;
    Extrapolation after = Extrapolation::Constant;
    Interpolation first = Interpolation::Linear;
    Mode mode = Mode::Off;
    Data standard;
    std::map<quint32, Data> views;
    std::string told;

    bool owns(View view) const { return views.count(view.id()) > 0; }
    bool hides(View view) const { return !keyframed || (splittable && !owns(view)); }
    const Data& read(View view) const {
        return owns(view) ? views.at(view.id()) : views.empty() ? standard : views.begin()->second;
    }
    Data shown(View view) const { return hides(view) ? Data() : read(view); }

    double outside(const std::vector<Key>& keys, Time time) const {
        const bool early = time < keys.front().time;
        const Key& edge = early ? keys.front() : keys.back();
        if (keys.size() < 2 || (early ? before : after) != Extrapolation::Linear)
            return edge.value;
        const Key& a = early ? keys[0] : keys[keys.size() - 2];
        const Key& b = early ? keys[1] : keys.back();
        const double change = (b.value - a.value) * endSlope(a.interpolationData, early) * (time - edge.time);
        return a.time < b.time ? edge.value + change / (b.time - a.time) : edge.value;
    }

    double valueIn(const Data& data, Time time) const {
        if (data.keys.empty())
            return data.still;
        if (data.find(time) < data.keys.size())
            return data.keys[data.find(time)].value;
        if (time < data.keys.front().time || time > data.keys.back().time)
            return outside(data.keys, time);
        const Key& b = data.keys[data.bound(time)];
        const Key& a = data.keys[data.bound(time) - 1];
        return a.value + (b.value - a.value) * progress(a.interpolationData, (time - a.time) / (b.time - a.time));
    }

    std::vector<double> sources(double view) const {
        std::vector<double> from;
        for (const auto& [id, data] : views)
            from.push_back(id);
        const auto nearer = [=](double a, double b) { return std::abs(a - view) < std::abs(b - view); };
        const auto above = std::upper_bound(from.begin(), from.end(), view);
        if (mode == Mode::Nearest || above == from.begin() || above == from.end())
            return {*std::min_element(from.begin(), from.end(), nearer)};
        // The neighbours come first.
        std::rotate(from.begin(), above - 1, above + 1);
        std::stable_sort(from.begin() + 2, from.end(), nearer);
        from.resize(std::min<std::size_t>(from.size(), mode == Mode::Smooth ? 3 : 2));
        return from;
    }

    double value(const Context& context) const {
        const View view = context.view;
        if (!splittable && !views.empty())
            return keyframed ? valueIn(views.begin()->second, context.time) : views.begin()->second.still;
        if (!keyframed)
            return read(view).still;
        if (owns(view) || !view.isValid() || mode == Mode::Off || views.empty())
            return valueIn(read(view), context.time);
        double sum = 0;
        const std::vector<double> from = sources(view.id());
        for (const double id : from) {
            double weight = 1;
            for (const double other : from)
                weight *= id == other ? 1 : (view.id() - other) / (id - other);
            sum += weight * valueIn(views.at(static_cast<quint32>(id)), context.time);
        }
        return sum;
    }

    Interpolation interpolation(const Context& context) const {
        const Data& data = read(context.view);
        if (!keyframed || data.keys.empty())
            return keyframed ? first : Interpolation::Constant;
        const std::size_t i = data.bound(context.time);
        const bool governs = i == 0 || data.find(context.time) == i;
        return data.keys[governs && i < data.keys.size() ? i : i - 1].interpolationData.interpolation;
    }

    void tell(const char* type, std::size_t index = 0, View view = View()) {
        told +=
            std::string(type) + " " + std::to_string(static_cast<int>(index)) + " " + std::to_string(view.id()) + "\n";
    }

    Data& make(View view) {
        if (views.empty())
            views[0] = standard;
        return view.isValid() ? views.try_emplace(view.id(), standard).first->second : views.begin()->second;
    }

    Data& target(View view) {
        const bool mayGain = !owns(view) && (!views.empty() || view != View(0));
        Data& data = make(splittable ? view : View(0));
        isSplit = views.size() > 1;
        if (mayGain && owns(view))
            tell("VIEW_ADDED", 0, view);
        return data;
    }

    std::size_t insert(Data& data, Time time, double value) {
        const std::size_t i = data.bound(time);
        IType* const behind = i > 0 ? &data.keys[i - 1].interpolationData : nullptr;
        const Interpolation kind = behind ? behind->interpolation : first;
        if (behind && i == data.keys.size())
            *behind = shaped(*behind, kind);
        const IType shape = i < data.keys.size() ? shaped({}, kind) : IType(kind);
        data.keys.insert(data.keys.begin() + static_cast<int>(i), Key(time, value, shape));
        return i;
    }

    int vSetValue(double value, const Context& at) {
        Data& data = target(at.view);
        if (!keyframed || !at.time.isValid()) {
            if (std::exchange(data.still, value) != value)
                tell("KEYFRAME_CHANGED_VALUE", ~0u, at.view);
            return -1;
        }
        std::size_t i = data.find(at.time);
        const bool isNew = i == data.keys.size();
        if (isNew)
            tell("KEYFRAME_ADDED", i = insert(data, at.time, value), at.view);
        if (std::exchange(data.keys[i].value, value) != value || isNew)
            tell("KEYFRAME_CHANGED_VALUE", i, at.view);
        return static_cast<int>(i);
    }

    void setVariantValue(const QVariant& value, const Context& at, const std::nothrow_t&) {
        if (keyframed && at.time.isValid() && at.time > Time::fromInt(-1))
            vSetValue(value.toDouble(), at);
        else if (std::exchange(target(at.view).still, value.toDouble()) != value.toDouble())
            tell("VALUE_CHANGED", 0, at.view);
    }

    int iAddKeyframe(const Context& at) {
        if (!keyframed || !at.time.isValid())
            return -1;
        const double present = value(at);
        Data& data = target(at.view);
        if (data.find(at.time) < data.keys.size())
            return -1;
        const std::size_t i = insert(data, at.time, present);
        tell("KEYFRAME_ADDED", i, at.view);
        return static_cast<int>(i);
    }

    int iAddKeyframe(const Frame& frame, const AnimationState& state) {
        int last = keyframed ? -1 : 0;
        for (const View view : state.views()) {
            const int added = iAddKeyframe(Context(Time::fromUInt(frame.toUInt()), view));
            last = added >= 0 ? added : last;
        }
        return last;
    }

    void vDeleteKeyframe(const Context::Explicit& at) {
        if (hides(at.view))
            return;
        Data& data = target(at.view);
        const std::size_t i = data.find(at.time);
        if (i == data.keys.size())
            return;
        data.still = data.keys.size() == 1 ? data.keys[0].value : data.still;
        data.keys.erase(data.keys.begin() + static_cast<int>(i));
        tell("KEYFRAME_REMOVED", i, at.view);
        told += "at " + std::to_string(at.time.toDouble()) + "\n";
    }

    void vDeleteAllKeyframes(View view) {
        if (!hides(view) && !std::exchange(target(view).keys, {}).empty())
            tell("VIEW_CLEARED");
    }

    void vReset(const Context& at) {
        const Data data = shown(at.view);
        if (data.find(at.time) < data.keys.size())
            vDeleteKeyframe(Context::Explicit(at));
        if (!data.keys.empty())
            return;
        target(at.view).still = standard.still;
        tell("VIEW_RESET", 0, at.view);
    }

    /// Of several views the last goes first, in place of the hero the first one, once.
    void resetAll(View hero) {
        for (const View view : viewList()) {
            vDeleteAllKeyframes(view);
            vReset(Context(Time(), view));
        }
        const View lowest = views.empty() ? View() : viewList().front();
        while (hero.isValid() && !views.empty() && deleteView(viewList().back() == hero ? lowest : viewList().back())) {
        }
    }

    bool vSetInterpolation(Interpolation kind, const Context& at) {
        if (!keyframed || (splittable && !owns(at.view)))
            return false;
        const Data& data = target(at.view);
        const std::size_t i = data.find(at.time);
        if (i == data.keys.size())
            return false;
        IType shape = data.keys[i].interpolationData;
        shape.interpolation = kind;
        reshape(at.view, i, i + 1 < data.keys.size() ? shaped(data.keys[i].interpolationData, kind) : shape);
        return true;
    }

    void vSetInterpolationData(const IType& shape, unsigned index, View view) {
        if (keyframed && (!splittable || owns(view)))
            reshape(view, index, shape);
    }

    void reshape(View view, std::size_t index, const IType& shape) {
        Data& data = target(view);
        if (index >= data.keys.size())
            return;
        data.keys[index].interpolationData = shape;
        tell("KEYFRAME_CHANGED_INTERPOLATION", index, view);
    }

    void vSetExtrapolationBefore(Extrapolation kind) {
        before = keyframed ? kind : before;
        told += keyframed ? "PARAMETER_CHANGED_EXTRAPOLATION_BEFORE 0 0\n" : "";
    }
    void vSetExtrapolationAfter(Extrapolation kind) {
        after = keyframed ? kind : after;
        told += keyframed ? "PARAMETER_CHANGED_EXTRAPOLATION_AFTER 0 0\n" : "";
    }
    void vSetDefault(double value) { standard.still = value; }
    void vSetDefaultInterpolation(Interpolation kind) { first = kind; }
    void setSplittable(bool value) { splittable = value; }
    void setViewInterpolation(const MVInterpolationParams& params) { mode = params.mode; }

    template <class Map> void adjustKeyframesTime(const Map& map) {
        for (auto& [id, data] : views) {
            for (Key& key : data.keys)
                key.time = keyframed ? map(key.time) : key.time;
        }
    }

    void take(const Model& other, bool withDefaults) {
        const Model former = std::exchange(*this, other);
        standard = former.standard;
        told = former.told;
        first = withDefaults ? first : former.first;
        mode = withDefaults ? mode : former.mode;
        tell("PARAMETER_ASSIGNED");
    }
    void vCopyKeyframeDataFrom(const Model* other) { take(*other, false); }
    void assignFrom(const Model& other) { take(other, true); }
    const Model& exportState() const { return *this; }
    void doImportState(const Model& other) { take(other, true); }

    void give(View to, Data contents) {
        target(to) = std::move(contents);
        tell("VALUE_CHANGED", 0, to);
    }
    void copyViewData(View from, View to, const Model* source) {
        if (splittable)
            give(to, (source ? source : this)->read(from));
    }
    void uniquifyView(View view) { initialiseHeroView(view, view); }
    bool initialiseHeroView(View hero, View from) {
        if (!splittable || !hero.isValid() || owns(hero))
            return false;
        give(hero, read(from));
        return true;
    }

    bool deleteView(View view) {
        if (views.size() < 2 || !owns(view))
            return false;
        views.erase(view.id());
        isSplit = views.size() > 1;
        tell("VIEW_REMOVED", 0, view);
        return true;
    }

    void clearViewData() {
        isSplit = false;
        for (const auto& [id, data] : std::exchange(views, {}))
            tell("VIEW_REMOVED", 0, View(id));
    }

    std::vector<View> viewList() const {
        std::vector<View> list;
        for (const auto& [id, data] : views)
            list.emplace_back(id);
        return list;
    }
};

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
        : name(called), edit([act](P& own, P& other, const Step& s) { act(own, other, s); }),
          run([called, act](Pair& own, Pair& other, const Step& s) {
              static_cast<void>(called);
              if constexpr (std::is_void_v<decltype(act(own.real, other.real, s))>)
                  act(own.real, other.real, s), act(own.model, other.model, s);
              else
                  same(called, act(own.real, other.real, s), act(own.model, other.model, s));
          }) {}
    const char* name;
    std::function<void(P& own, P& other, const Step& step)> edit;
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
    const Data read = model.read(view);
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
        HOLDS(real.interpolationData({&real, view, i}) == (i < count ? key.interpolationData : IType(model.first)));
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

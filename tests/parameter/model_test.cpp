// A parameter beside a plain, slow model of it: both are put through the same random edits, and after each must give
// the same answers and have sent the same changes.

#include "prm/NumericParameter.h"
#include "tests/parameter/Keying.h"
#include "tests/support/ChangeRecorder.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

using namespace Prm;
using Mode = MVInterpolationParams::Mode;
using Key = KeyframeData<double>;

namespace {

// --- curves ----------------------------------------------------------------------------------------------------------

bool isStraight(const IType& shape) {
    return shape.interpolation != Interpolation::Bezier || shape == IType(Interpolation::Bezier);
}

IType shaped(const IType& present, Interpolation kind) {
    const bool hasNumbers = present != IType(present.interpolation);
    if (present.interpolation == kind && hasNumbers && kind >= Interpolation::Bezier)
        return present;
    return kind == Interpolation::Bezier ? IType(kind, 1. / 3, 0, 2. / 3, 1) : IType(kind);
}

double bezier(double a, double b, double s) {
    return 3 * (1 - s) * (1 - s) * s * a + 3 * (1 - s) * s * s * b + s * s * s;
}

double progress(const IType& shape, double x) {
    if (isStraight(shape))
        return shape.interpolation == Interpolation::Constant ? 0 : x;
    double low = 0;
    double high = 1;
    for (int i = 0; i < 60; ++i)
        (bezier(shape.x1, shape.x2, (low + high) / 2) < x ? low : high) = (low + high) / 2;
    return bezier(shape.y1, shape.y2, low);
}

double endSlope(const IType& shape, bool atStart) {
    if (isStraight(shape))
        return shape.interpolation == Interpolation::Constant ? 0 : 1;
    return atStart ? shape.y1 / shape.x1 : (1 - shape.y2) / (1 - shape.x2);
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
    std::vector<Key> shown(View view) const { return hides(view) ? std::vector<Key>() : read(view).keys; }
    double outside(const std::vector<Key>& keys, Time time) const;
    double valueIn(const Data& data, Time time) const;
    std::vector<double> sources(double view) const;
    double value(const Context& context) const;

    void tell(const char* type, std::size_t index = 0, View view = View()) {
        told +=
            std::string(type) + " " + std::to_string(static_cast<int>(index)) + " " + std::to_string(view.id()) + "\n";
    }
    Data& make(View view);
    Data& target(View view);
    std::size_t insert(Data& data, Time time, double value);
    void reshape(View view, std::size_t index, const IType& shape);
    void give(View to, Data contents);
    void take(const Model& other, bool withDefaults);

    int vSetValue(double value, const Context& at);
    void setVariantValue(const QVariant& value, const Context& at, const std::nothrow_t&);
    int iAddKeyframe(const Context& at);
    void vDeleteKeyframe(const Context::Explicit& at);
    void vDeleteAllKeyframes(View view);
    void vReset(const Context& at);
    bool vSetInterpolation(Interpolation kind, const Context& at);
    void vSetInterpolationData(const IType& shape, unsigned index, View view) {
        if (keyframed && (!splittable || owns(view)))
            reshape(view, index, shape);
    }
    void setExtrapolation(Extrapolation& side, Extrapolation kind, const char* type) {
        side = keyframed ? kind : side;
        if (keyframed)
            tell(type);
    }
    void vSetExtrapolationBefore(Extrapolation kind) {
        setExtrapolation(before, kind, "PARAMETER_CHANGED_EXTRAPOLATION_BEFORE");
    }
    void vSetExtrapolationAfter(Extrapolation kind) {
        setExtrapolation(after, kind, "PARAMETER_CHANGED_EXTRAPOLATION_AFTER");
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
    void vCopyKeyframeDataFrom(const Model* other) { take(*other, false); }
    void assignFrom(const Model& other) { take(other, true); }
    const Model& exportState() const { return *this; }
    void doImportState(const Model& other) { take(other, true); }
    void copyViewData(View from, View to, const Model* source) {
        if (splittable)
            give(to, (source ? source : this)->read(from));
    }
    void uniquifyView(View view) { initialiseHeroView(view, view); }
    bool initialiseHeroView(View hero, View from);
    bool deleteView(View view);
    void clearViewData();
};

double Model::outside(const std::vector<Key>& keys, Time time) const {
    const bool early = time < keys.front().time;
    const Key& edge = early ? keys.front() : keys.back();
    if (keys.size() < 2 || (early ? before : after) != Extrapolation::Linear)
        return edge.value;
    const Key& a = early ? keys[0] : keys[keys.size() - 2];
    const Key& b = early ? keys[1] : keys.back();
    const double change = (b.value - a.value) * endSlope(a.interpolationData, early) * (time - edge.time);
    return a.time < b.time ? edge.value + change / (b.time - a.time) : edge.value;
}

double Model::valueIn(const Data& data, Time time) const {
    const std::vector<Key>& keys = data.keys;
    if (keys.empty())
        return data.still;
    if (data.find(time) < keys.size())
        return keys[data.find(time)].value;
    if (time < keys.front().time || time > keys.back().time)
        return outside(keys, time);
    const auto b = std::find_if(keys.begin(), keys.end(), [=](const Key& key) { return key.time > time; });
    const auto a = b - 1;
    return a->value + (b->value - a->value) * progress(a->interpolationData, (time - a->time) / (b->time - a->time));
}

std::vector<double> Model::sources(double view) const {
    std::vector<double> nearest;
    for (const auto& [id, data] : views)
        nearest.push_back(id);
    const auto above = std::upper_bound(nearest.begin(), nearest.end(), view);
    const bool between = above != nearest.begin() && above != nearest.end();
    if (between && (mode == Mode::Linear || (mode == Mode::Smooth && nearest.size() == 2)))
        return {*(above - 1), *above};
    std::stable_sort(nearest.begin(), nearest.end(),
                     [=](double a, double b) { return std::abs(a - view) < std::abs(b - view); });
    nearest.resize(between && mode == Mode::Smooth ? 3 : 1);
    return nearest;
}

double Model::value(const Context& context) const {
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

Data& Model::make(View view) {
    if (views.empty())
        views[0] = standard;
    return views.try_emplace(view.id(), standard).first->second;
}

Data& Model::target(View view) {
    const bool mayGain = !owns(view) && (!views.empty() || view != View(0));
    Data& data = make(splittable ? view : View(0));
    isSplit = views.size() > 1;
    if (mayGain && owns(view))
        tell("VIEW_ADDED", 0, view);
    return data;
}

std::size_t Model::insert(Data& data, Time time, double value) {
    const auto place =
        std::find_if(data.keys.begin(), data.keys.end(), [=](const Key& key) { return key.time >= time; });
    const auto i = static_cast<std::size_t>(place - data.keys.begin());
    IType* const behind = i > 0 ? &data.keys[i - 1].interpolationData : nullptr;
    const Interpolation kind = behind ? behind->interpolation : first;
    if (behind && i == data.keys.size())
        *behind = shaped(*behind, kind);
    data.keys.insert(place, Key(time, value, i < data.keys.size() ? shaped({}, kind) : IType(kind)));
    return i;
}

int Model::vSetValue(double value, const Context& at) {
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

void Model::setVariantValue(const QVariant& value, const Context& at, const std::nothrow_t&) {
    if (keyframed && at.time.isValid() && at.time > Time::fromInt(-1))
        vSetValue(value.toDouble(), at);
    else if (std::exchange(target(at.view).still, value.toDouble()) != value.toDouble())
        tell("VALUE_CHANGED", 0, at.view);
}

int Model::iAddKeyframe(const Context& at) {
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

void Model::vDeleteKeyframe(const Context::Explicit& at) {
    if (hides(at.view))
        return;
    Data& data = target(at.view);
    const std::size_t i = data.find(at.time);
    if (i == data.keys.size())
        return;
    data.still = data.keys.size() == 1 ? data.keys[0].value : data.still;
    data.keys.erase(data.keys.begin() + static_cast<int>(i));
    tell("KEYFRAME_REMOVED", i, at.view);
}

void Model::vDeleteAllKeyframes(View view) {
    if (!hides(view) && !std::exchange(target(view).keys, {}).empty())
        tell("VIEW_CLEARED");
}

void Model::vReset(const Context& at) {
    if (!shown(at.view).empty())
        return vDeleteKeyframe(Context::Explicit(at));
    target(at.view).still = standard.still;
    tell("VIEW_RESET", 0, at.view);
}

bool Model::vSetInterpolation(Interpolation kind, const Context& at) {
    if (!keyframed || (splittable && !owns(at.view)))
        return false;
    const std::vector<Key>& keys = target(at.view).keys;
    const std::size_t i = target(at.view).find(at.time);
    if (i == keys.size())
        return false;
    IType shape = keys[i].interpolationData;
    shape.interpolation = kind;
    reshape(at.view, i, i + 1 < keys.size() ? shaped(keys[i].interpolationData, kind) : shape);
    return true;
}

void Model::reshape(View view, std::size_t index, const IType& shape) {
    Data& data = target(view);
    if (index >= data.keys.size())
        return;
    data.keys[index].interpolationData = shape;
    tell("KEYFRAME_CHANGED_INTERPOLATION", index, view);
}

void Model::give(View to, Data contents) {
    target(to) = std::move(contents);
    tell("VALUE_CHANGED", 0, to);
}

void Model::take(const Model& other, bool withDefaults) {
    const Model former = std::exchange(*this, other);
    standard = former.standard;
    told = former.told;
    first = withDefaults ? first : former.first;
    mode = withDefaults ? mode : former.mode;
    tell("PARAMETER_ASSIGNED");
}

bool Model::initialiseHeroView(View hero, View from) {
    if (!splittable || owns(hero))
        return false;
    give(hero, read(from));
    return true;
}

bool Model::deleteView(View view) {
    if (!owns(view) || views.size() < 2)
        return false;
    views.erase(view.id());
    isSplit = views.size() > 1;
    tell("VIEW_REMOVED", 0, view);
    return true;
}

void Model::clearViewData() {
    isSplit = false;
    for (const auto& [id, data] : std::exchange(views, {}))
        tell("VIEW_REMOVED", 0, View(id));
}

// --- edits of both ---------------------------------------------------------------------------------------------------

struct Step {
    int act, own, view, from, time, value, kind;

    View at() const { return View(static_cast<quint32>(view)); }
    View other() const { return View(static_cast<quint32>(from)); }
    Context where() const { return {time > 20 ? Time(Time::INVALID) : Time::fromDouble(time / 2.), at()}; }
    Context elsewhere() const { return {Time::fromInt(time / 3 + value), at()}; }
    Context::Explicit exactly() const { return Context::Explicit(where()); }
    Interpolation segment() const { return static_cast<Interpolation>(1 + kind); }
    Extrapolation outside() const { return static_cast<Extrapolation>(1 + kind % 3); }
    IType shape() const { return value < 0 ? IType(segment()) : IType(segment(), 0.2, 0.1 * value, 0.7, 2); }
    Time moved(Time old) const { return kind > 0 ? old + value / 4. : Time::fromDouble(std::floor(old.toDouble())); }
};

struct Pair {
    explicit Pair(ParameterOptions options) : real(QStringLiteral("random"), 0, options) {
        model.keyframed = options.testFlag(Keyframed);
        model.splittable = options.testFlag(Splittable);
    }
    NumericParameter<double> real;
    Model model;
    ChangeRecorder recorder{&real};
};

template <class A, class B> void same(const char* what, const A& real, const B& model) {
    if (!(real == static_cast<A>(model)))
        RC_FAIL(std::string(what) + ": " + std::to_string(real) + " instead of " + std::to_string(model));
}

void near(const char* what, double real, double model) {
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

#define ACT(call)                                                                                                      \
#call, [](auto& own, [[maybe_unused]] auto& other, [[maybe_unused]] const Step& s) { return own.call; }
const Act acts[] = {
    {ACT(vSetValue(s.value, s.where()))},
    {ACT(vSetValue(s.value, s.elsewhere()))},
    {ACT(setVariantValue(QVariant(s.value), s.where(), std::nothrow))},
    {ACT(iAddKeyframe(s.where()))},
    {ACT(vDeleteKeyframe(s.exactly()))},
    {ACT(vDeleteAllKeyframes(s.at()))},
    {ACT(vReset(s.where()))},
    {ACT(vSetInterpolation(s.segment(), s.where()))},
    {ACT(vSetInterpolationData(s.shape(), static_cast<unsigned>(s.from), s.at()))},
    {ACT(vSetExtrapolationBefore(s.outside()))},
    {ACT(vSetExtrapolationAfter(s.outside()))},
    {ACT(vSetDefault(s.value))},
    {ACT(vSetDefaultInterpolation(s.segment()))},
    {ACT(setSplittable(s.kind > 0))},
    {ACT(setViewInterpolation({static_cast<Mode>(s.kind)}))},
    {ACT(adjustKeyframesTime([&](Time time) { return s.moved(time); }))},
    {ACT(vCopyKeyframeDataFrom(&other))},
    {ACT(assignFrom(other))},
    {ACT(doImportState(other.exportState()))},
    {ACT(copyViewData(s.other(), s.at(), s.kind > 1 ? nullptr : &other))},
    {ACT(uniquifyView(s.at()))},
    {ACT(initialiseHeroView(s.at(), s.other()))},
    {ACT(deleteView(s.at()))},
    {ACT(clearViewData())},
};

void showValue(const Step& s, std::ostream& out) {
    out << acts[s.act].name << " of " << s.own << ": view " << s.view << ", from " << s.from << ", time " << s.time / 2.
        << ", value " << s.value << ", kind " << s.kind << "\n";
}

// --- comparison ------------------------------------------------------------------------------------------------------

void compareKeys(const NumericParameter<double>& real, Model& model, View view) {
    const Data read = model.read(view);
    same("has data", real.hasViewData(view), model.owns(view));
    near("static value", real.staticValue(view), read.still);
    same("count", real.keyframeCount(view), model.shown(view).size());
    for (unsigned i = 0; model.keyframed && i < read.keys.size(); ++i) {
        const Key key = real.keyframe(i, view);
        same("time", key.time.toDouble(), read.keys[i].time.toDouble());
        same("key's time", real.keyframeTime(i, view).time.toDouble(), key.time.toDouble());
        near("key's value", key.value, read.keys[i].value);
        same("shape", key.interpolationData == read.keys[i].interpolationData, true);
        // Rounding must not decide later whether a value is new.
        if (model.owns(view))
            model.views[view.id()].keys[i].value = key.value;
    }
}

void compareLookup(const NumericParameter<double>& real, const std::vector<Key>& keys, const Context& at) {
    using Found = bool (ParameterWithoutType::*)(const Context&, Context&) const;
    const auto check = [&](const char* what, Found find, std::vector<Key>::const_iterator key) {
        Context found;
        same(what, (real.*find)(at, found), key != keys.end());
        if (key != keys.end())
            same(what, found.time.toDouble(), key->time.toDouble());
    };
    const auto there = std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.time == at.time; });
    const auto behind = std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.time >= at.time; });
    const auto ahead = std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.time > at.time; });
    same("there", real.bKeyframeAt(Context::Explicit(at)), there != keys.end());
    check("previous", &ParameterWithoutType::bPreviousKeyframe, behind == keys.begin() ? keys.end() : behind - 1);
    check("next", &ParameterWithoutType::bNextKeyframe, there == keys.end() ? ahead : there + 1);
    const bool laterIsNearer =
        ahead != keys.end() && (ahead == keys.begin() || ahead->time - at.time <= at.time - (ahead - 1)->time);
    Time nearest;
    same("nearest", real.bNearestKeyframeTime(at, nearest), !keys.empty());
    if (!keys.empty())
        same("nearest", nearest.toDouble(), (laterIsNearer ? ahead : ahead - 1)->time.toDouble());
}

void compare(Pair& pair) {
    const NumericParameter<double>& real = pair.real;
    Model& model = pair.model;
    RC_ASSERT(pair.recorder.take() == std::exchange(model.told, {}));
    same("keyframed", real.isKeyframed(), model.keyframed);
    same("splittable", real.splittable(), model.splittable);
    same("split", real.isSplit(), model.isSplit);
    same("views", real.viewList().size(), model.views.size());
    same("default", real.defaultValue(), model.standard.still);
    const auto kept = [&](Extrapolation kind) { return model.keyframed ? kind : Extrapolation::Constant; };
    RC_ASSERT(real.extrapolationBefore() == kept(model.before));
    RC_ASSERT(real.extrapolationAfter() == kept(model.after));
    for (const quint32 id : {0u, 1u, 2u, 3u, 4u, 5u, 7u, ~0u}) {
        compareKeys(real, model, View(id));
        for (double time = -4; time < 12; time += 0.75) {
            near("value", real.value(at(time, id)), model.value(at(time, id)));
            compareLookup(real, model.shown(View(id)), at(time, id));
        }
    }
}

TEST(Model, RandomEditsDoWhatTheModelDoes) {
    using namespace rc;
    const auto views = gen::element(0, 0, 1, 2, 5);
    const auto step = gen::construct<Step>(gen::inRange(0, static_cast<int>(std::size(acts))), gen::inRange(0, 2),
                                           views, views, gen::inRange(-4, 23), gen::inRange(-3, 9), gen::inRange(0, 4));
    const auto property = [&] {
        Pair first(Keyframed | Splittable);
        Pair second(*gen::elementOf(std::vector<ParameterOptions>{Keyframed | Splittable, Keyframed, Splittable, {}}));
        for (const Step& s : *gen::container<std::vector<Step>>(step)) {
            acts[s.act].run(s.own == 0 ? first : second, s.own == 0 ? second : first, s);
            compare(s.own == 0 ? first : second);
        }
        compare(first);
        compare(second);
    };
    // The same each time, whatever the environment says.
    rc::detail::TestParams params;
    params.seed = 20;
    const auto result = rc::detail::checkTestable(property, rc::detail::TestMetadata(), params);
    std::ostringstream text;
    rc::detail::printResultMessage(result, text);
    EXPECT_TRUE(result.template is<rc::detail::SuccessResult>()) << text.str();
}

} // namespace

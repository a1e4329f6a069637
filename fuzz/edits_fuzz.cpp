// Sequences of edits of two parameters beside a plain model of each.

#include "fuzz/Fuzz.h"
#include "tests/world/Acts.h"

#include <cstring>

using namespace Worlds;

namespace {

struct Both {
    explicit Both(ParameterOptions options) : real(QStringLiteral("random"), 0, options) {
        model.keyframed = options.testFlag(Keyframed);
        model.splittable = options.testFlag(Splittable);
        recorder.then = [this](const ParameterChange& change) {
            if (change.type == ParameterChange::KEYFRAME_REMOVED)
                recorder.lines += "at " + std::to_string(change.context.time.toDouble()) + "\n";
        };
    }
    Number real;
    Model model;
    ChangeRecorder recorder{&real};
    /// Asked for at first, it shows the present views.
    const std::vector<View>& views = real.viewList();
};

const char* lastAct = "";

template <class Real, class Modelled> void alike(const char* what, const Real& real, const Modelled& model) {
    if (!(real == static_cast<Real>(model)))
        Fuzz::fail(what, QStringLiteral("%1 instead of %2 after %3").arg(real).arg(model).arg(lastAct));
}

void near(const char* what, double real, double model) {
    if (!(std::abs(real - model) <= 1e-9 * std::max(1., std::abs(model))))
        alike(what, real, model);
}

void compareKeys(const Number& real, Model& model, View view) {
    const Data held = model.read(view);
    const Data read = model.keyframed ? held : Data{held.still, {}};
    const std::size_t count = read.keys.size();
    const Key beyond = count > 0 ? read.keys.back() : Key(Time::INVALID, read.still, IType(model.first));
    alike("has data", real.hasViewData(view), model.owns(view));
    near("static value", real.staticValue(view), read.still);
    alike("count", real.keyframeCount(view), model.shown(view).keys.size());
    for (unsigned i = 0; i <= count; ++i) {
        const Key& expected = i < count ? read.keys[i] : beyond;
        const Key key = real.keyframe(i, view);
        HOLD(real.keyframeTime(i, view) == Context(i < count ? expected.time : Time(), view));
        alike("time", key.time.toDouble(), expected.time.toDouble());
        near("value", key.value, expected.value);
        alike("key's value", real.keyframeValue(i, view), key.value);
        HOLD(key.interpolationData == expected.interpolationData);
        HOLD(real.interpolationData({&real, view, i}) ==
             (i < held.keys.size() ? held.keys[i].interpolationData : IType(model.first)));
        // Rounding must not decide later whether a value is new.
        if (model.owns(view) && i < count)
            model.views[view.id()].keys[i].value = key.value;
    }
}

void compareLookup(const Number& real, const Data& shown, const Context& at) {
    const auto count = static_cast<int>(shown.keys.size());
    const auto there = static_cast<int>(shown.find(at.time));
    const auto bound = static_cast<int>(shown.bound(at.time));
    const auto check = [&](auto find, int position) {
        const bool exists = position >= 0 && position < count;
        Context found(Time::fromInt(-1), View(77));
        const Context expected = exists ? Context(shown.keys[static_cast<unsigned>(position)].time, at.view) : found;
        alike("found", (real.*find)(at, found), exists);
        HOLD(found == expected);
    };
    alike("there", real.bKeyframeAt(Context::Explicit(at)), there < count);
    check(&Number::bPreviousKeyframe, bound - 1);
    check(&Number::bNextKeyframe, there < count ? there + 1 : bound);
    unsigned nearest = 77;
    Time time;
    alike("nearest", real.bNearestKeyframeIndex(at, nearest), count > 0);
    alike("nearest", real.bNearestKeyframeTime(at, time), count > 0);
    const auto distance = [&](const Key& key) { return std::abs(key.time - at.time); };
    for (const Key& key : shown.keys) {
        const Key& found = shown.keys[nearest];
        HOLD(distance(found) < distance(key) || (distance(found) == distance(key) && found.time >= key.time));
    }
    alike("nearest", nearest, count > 0 ? nearest : 77);
    alike("nearest", time.toDouble(), count > 0 ? shown.keys[nearest].time.toDouble() : 0);
}

/// In the order of time and against it, and at no time.
void compareSamples(const Number& real, View view) {
    std::vector<Time> times{Time::INVALID};
    for (int i = 0; i < 60; ++i)
        times.push_back(Time::fromDouble(i < 40 ? 0.375 * i - 4 : (i * 7919) % 17));
    std::vector<double> sampled(times.size(), -1);
    real.sampleValues(times.data(), static_cast<int>(times.size()), view, sampled.data());
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double value = real.value({times[i], view});
        HOLD(std::memcmp(&value, &sampled[i], sizeof value) == 0);
    }
}

void compare(Both& pair) {
    const Number& real = pair.real;
    Model& model = pair.model;
    Fuzz::same("changes", QByteArray::fromStdString(std::exchange(model.told, {}) + lastAct),
               QByteArray::fromStdString(pair.recorder.take() + lastAct));
    alike("keyframed", real.isKeyframed(), model.keyframed);
    alike("splittable", real.splittable(), model.splittable);
    alike("split", real.isSplit(), model.isSplit);
    HOLD(pair.views == model.viewList());
    Fuzz::intact(detail::verify(real));
    alike("default", real.defaultValue(), model.standard.still);
    const auto kept = [&](Extrapolation kind) { return model.keyframed ? kind : Extrapolation::Constant; };
    HOLD(real.extrapolationBefore() == kept(model.before));
    HOLD(real.extrapolationAfter() == kept(model.after));
    for (const quint32 id : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 2147483646u, ~0u}) {
        compareKeys(real, model, View(id));
        compareSamples(real, View(id));
        const double odd[] = {NAN, -0., std::nextafter(1., 0.), -1e6};
        for (int i = 0; i < 26; ++i) {
            const double time = i < 4 ? odd[i] : 0.75 * i - 7;
            const Context where = at(time, id);
            const Data& data = model.read(where.view);
            const int index = data.find(where.time) < data.keys.size() ? static_cast<int>(data.find(where.time)) : -1;
            near("value", real.value(where), model.value(where));
            alike("index", static_cast<int>(real.keyframeIndexForTime(where)), index);
            HOLD(real.interpolation(where) == model.interpolation(where));
            compareLookup(real, model.shown(where.view), where);
        }
    }
}

std::vector<Act> modelled() {
    std::vector<Act> rows;
    std::copy_if(edits.begin(), edits.end(), std::back_inserter(rows), [](const Act& row) { return row.model; });
    return rows;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<Act> rows = modelled();
    const ParameterOptions options[] = {Keyframed | Splittable, Keyframed, Splittable, {}};
    Choices choose(data, std::min<std::size_t>(size, 12 * 30));
    Both first(Keyframed | Splittable);
    Both second(options[choose.below(4)]);
    Command none;
    while (!choose.atEnd()) {
        const Act& act = chosen(rows, choose);
        const bool isFirst = choose.yes();
        Both& own = isFirst ? first : second;
        Both& other = isFirst ? second : first;
        A a(choose);
        a.aim(own.real, choose.below(16));
        lastAct = act.name;
        const int outcome = act.run(none, own.real, other.real, a);
        alike("outcome", outcome, act.model(own.model, other.model, a));
        compare(own);
    }
    compare(first);
    compare(second);
    return 0;
}

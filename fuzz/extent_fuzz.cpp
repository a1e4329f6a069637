// No value differs outside the extents of the changes that a turn of a play emits, nor outside what ChangedSince finds.
// The extent of one edited keyframe is the stretch between its neighbours.

#include "fuzz/Play.h"
#include "prm/ChangedSince.h"

#include <map>

using namespace Worlds;

namespace {

unsigned int singleEdits = 0;
unsigned int exactOnes = 0;

/// Where values are asked for: at quarters, where keyframes are, and between, in any three views. With PRM_FUZZ_TIMES,
/// at so many times in all views.
struct Places {
    explicit Places(std::minstd_rand& random) {
        static const View all[] = {View(0), View(1), View(2),          View(3),
                                   View(4), View(5), View(2147483646), View(4294967295)};
        static const int wanted = qEnvironmentVariableIntValue("PRM_FUZZ_TIMES");
        for (int i = 0, pairs = wanted > 0 ? wanted / 2 : 24; i < pairs; ++i) {
            times.push_back(Time::fromDouble(static_cast<int>(random() % 80) / 4. - 6));
            times.push_back(Time::fromDouble(static_cast<double>(random() % 10007) / 500. - 6));
        }
        if (wanted > 0)
            views.assign(std::begin(all), std::end(all));
        for (int i = 0; i < 3 && wanted == 0; ++i)
            views.push_back(all[random() % std::size(all)]);
    }

    std::vector<Time> times{Time::fromDouble(-1e6), Time::INVALID};
    std::vector<View> views;
};

template <class T> bool sample(const Parameter<T>& parameter, const Places& places, std::vector<double>& numbers) {
    QVector<T> values(static_cast<int>(places.times.size()));
    for (const View& view : places.views) {
        parameter.sampleValues(places.times.data(), values.size(), view, values.data());
        for (const T& value : qAsConst(values)) {
            if constexpr (std::is_same_v<T, QPointF>)
                numbers.push_back(value.x() + 1e6 * value.y());
            else if constexpr (std::is_same_v<T, QString>)
                numbers.push_back(qHash(value));
            else
                numbers.push_back(static_cast<double>(value));
        }
    }
    return true;
}

/// The times between the keyframes beside the one that a change names, in a view that is constant outside.
TimeSpans stretchOf(const Number& number, const ParameterChange& change) {
    const View view = change.context.view;
    const unsigned int own = change.affectedIndex;
    const bool isGone = change.type == ParameterChange::KEYFRAME_REMOVED;
    const unsigned int next = isGone ? own : own + 1;
    const double time = (isGone ? change.context : number.keyframeTime(own, view)).time.toDouble();
    TimeSpan span = TimeSpan::all();
    if (next < number.keyframeCount(view))
        span.to = number.keyframeTime(next, view).time.toDouble();
    if (change.type == ParameterChange::KEYFRAME_CHANGED_INTERPOLATION)
        return std::isinf(span.to) ? TimeSpans() : TimeSpan{time, span.to, false, false};
    if (own > 0) {
        const KeyframeData<double> former = number.keyframe(own - 1, view);
        span.withFrom = former.interpolationData.interpolation <= Interpolation::Constant;
        span.from = span.withFrom ? time : former.time.toDouble();
    }
    return span;
}

class Extents : public Play {
public:
    Extents(const std::uint8_t* data, std::size_t size) : Play(data, size, true) {
        madeMissing();
        m_since.emplace(m_root);
        m_late.emplace(m_root);
        m_first = samples(m_places);
    }
    void compareAll() { compare("asked late", m_first, m_places, m_late->take(), true); }

private:
    using Samples = std::map<const P*, std::vector<double>>;
    static constexpr int outside = 4;

    /// One is outside the set, if only as a master.
    void madeMissing() override {
        for (P* const own : m_world->parameters())
            if (own != m_world->parameter(outside))
                m_root.addParameter(*own);
        for (int i = 0; i < setCount; ++i) {
            if (ParameterSet* const set = m_world->set(i))
                m_root.addParameterSet(*set);
        }
    }

    void receive(const ParameterChange& change) override {
        const Extent extent = extentOf(change);
        m_told |= extent;
        const auto* const number = dynamic_cast<const Number*>(change.parameter);
        const bool namesOne = change.type <= ParameterChange::KEYFRAME_CHANGED_INTERPOLATION &&
                              change.type != ParameterChange::KEYFRAME_CHANGED_TIME_VALUE;
        const auto isConstant = [](Extrapolation kind) { return kind <= Extrapolation::Constant; };
        if (!namesOne || !number || typeid(*number) != typeid(Number) || number->masterParameter() ||
            !isUndisturbed() || change.affectedIndex > number->keyframeCount(change.context.view) ||
            !isConstant(number->extrapolationBefore()) || !isConstant(number->extrapolationAfter()))
            return;
        ++singleEdits;
        exactOnes += extent.in(number, change.context.view) == stretchOf(*number, change) ? 1 : 0;
        HOLD(singleEdits % 200 != 0 || exactOnes * 100 >= singleEdits * 95);
    }

    void turn(const std::function<void()>& happens) override {
        const Places places(m_random);
        const Samples before = samples(places);
        m_isSilent = gainsViewsSilently();
        m_told = {};
        happens();
        // Commands may have removed members of the set.
        madeMissing();
        if (!m_isSilent)
            compare("announced", before, places, m_told, false);
        compare("asked", before, places, m_since->take(), true);
        Fuzz::intact(m_world->broken());
    }

    /// Edits of an unsplittable parameter with data, but none in view 0, give that view data, and emit nothing for it.
    bool gainsViewsSilently() const {
        const std::vector<P*> all = m_world->parameters(m_world->options.plainCount);
        return std::any_of(all.begin(), all.end(), [](const P* own) {
            return !own->splittable() && own->numViews() > 0 && own->viewList().front() != View(0);
        });
    }

    Samples samples(const Places& places) const {
        Samples all;
        for (const P* const own : m_world->parameters(m_world->options.plainCount))
            asTyped(*own, [&](const auto& typed) { return sample(typed, places, all[own]); });
        return all;
    }

    void compare(const char* what, const Samples& before, const Places& places, const Extent& extent,
                 bool isOfSet) const {
        for (const auto& [own, numbers] : samples(places)) {
            const auto former = before.find(own);
            if (former == before.end() || (isOfSet && own == m_world->parameter(outside)))
                continue;
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                if (former->second[i] == numbers[i] || (std::isnan(former->second[i]) && std::isnan(numbers[i])))
                    continue;
                const std::size_t each = places.times.size();
                expectTouched(what, *own, Context(places.times[i % each], places.views[i / each]), extent);
            }
        }
    }
    void expectTouched(const char* what, const P& own, const Context& at, const Extent& extent) const {
        if (!extent.touches(&own, at) || !extent.touches(at) || !extent.in(&own, at.view).contains(at.time)) {
            const auto text = debugText(own.scriptName(), "differs at", at, "outside", extent.in(&own, at.view));
            Fuzz::fail(what, QString::fromStdString(text));
        }
        for (const P* const parameter : m_world->parameters()) {
            const auto* const compound = dynamic_cast<const CompoundParameter*>(parameter);
            if (compound && compound->subparameters().contains(const_cast<P*>(&own)))
                expectTouched(what, *compound, at, extent);
        }
    }

    ParameterSet m_root;
    std::optional<ChangedSince> m_since;
    /// Asked once, at the end.
    std::optional<ChangedSince> m_late;
    const Places m_places{m_random};
    Samples m_first;
    Extent m_told;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Extents extents(data, size);
    extents.run();
    extents.compareAll();
    return 0;
}

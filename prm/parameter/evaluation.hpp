#pragma once

// The value at a time in a view, and the kinds of curve that lead to it.

#include "prm/Parameter.h"
#include "prm/parameter/StepNotes.h"
#include "prm/parameter/reshaping.hpp"
#include "prm/track/Evaluation.h"
#include "prm/untyped/Differences.h"
#include "prm/untyped/Masters.h"
#include "prm/untyped/UntypedAnswers.h"

#include <QVarLengthArray>

#include <algorithm>
#include <utility>

namespace Prm {

template <class T>
typename detail::HookGate<T>::Overridden detail::HookGate<T>::learn(const Parameter<T>& parameter) const {
    using P = Parameter<T>;
    using OfContext = Interpolation (P::*)(const Context&) const;
    using OfIndex = Interpolation (P::*)(const KeyframeIndex&) const;
    const auto overridesAny = [&](auto... operations) { return (overrides(parameter, operations) || ...); };
    const bool hooks = overridesAny(
        &P::value, &P::interpolateValue, &P::extrapolateValue, &P::supportsExtrapolationFromNoKeys,
        &P::extrapolationBefore, &P::extrapolationAfter, &P::keyframeValue, &P::hasViewData, &P::defaultInterpolation,
        static_cast<OfContext>(&P::interpolation), static_cast<OfIndex>(&P::interpolation), &P::interpolationData);
    const Overridden found = overridesAny(&P::isKeyframed, &P::splittable) ? HooksAndTraits : hooks ? Hooks : Nothing;
    const auto table = reinterpret_cast<std::uintptr_t>(virtualTableOf(&parameter));
    m_evaluatedAs.store(table + found, std::memory_order_relaxed);
    return found;
}

template <class T> const void* Parameter<T>::asTyped(const std::type_info& valueType) const {
    // Types that differ are compared by name, which takes long: these are asked in every slot, and in every evaluation
    // with a master of another class.
    if (&valueType == &typeid(T))
        return this;
    if (&valueType == &typeid(detail::Differences))
        return &Differences::ofType();
    if (valueType == typeid(T))
        return this;
    if (valueType == typeid(detail::Differences))
        return &Differences::ofType();
    if (valueType == typeid(detail::ReshaperFactory))
        return &Reshaper::ofType();
    return valueType == typeid(detail::UntypedAnswers) ? &detail::UntypedAnswers::ofType<T>() : nullptr;
}

/// The parameter whose animation this one shows: the last one in the chain of masters with values of this type, or the
/// first one of a class that overrides evaluation. The chain is walked in a loop, not by recursion; in a very long
/// chain of classes of a host, overrides are ignored from a certain depth on.
template <class T> const Parameter<T>& Parameter<T>::shownParameter() const {
    const Parameter* shown = this;
    while (const ParameterWithoutType* const master = shown->masterParameter()) {
        const Parameter* const typed = shown->sameType(*master);
        if (!typed)
            break;
        shown = typed;
        if (shown->asksHooks() && !detail::MasterScope::isDeep())
            break;
    }
    return *shown;
}

/// Another parameter as one with values of this type; null if it has others. In one of the same class, as most masters
/// are, this part lies at the same place.
template <class T> const Parameter<T>* Parameter<T>::sameType(const ParameterWithoutType& other) const {
    const ParameterWithoutType* const own = this;
    const auto place = reinterpret_cast<const char*>(this) - reinterpret_cast<const char*>(own);
    if (detail::areOfOneClass(own, &other))
        return reinterpret_cast<const Parameter*>(reinterpret_cast<const char*>(&other) + place);
    return static_cast<const Parameter*>(other.asTyped(typeid(T)));
}

/// The result of `own` for the parameter whose animation this one shows, or of `general` if its class overrides
/// evaluation. Repeated if masters change meanwhile, because the former master may by then show what this parameter
/// never did; not without end, because a hook may change masters each time.
template <class T>
template <class Own, class General>
auto Parameter<T>::askShown(const Own& own, const General& general) const
    -> decltype(own(std::declval<const Parameter&>())) {
    constexpr int patience = 8;
    const auto askMaster = [&](const Parameter& master) {
        const detail::MasterScope scope;
        return general(master);
    };
    for (int attempt = 0;; ++attempt) {
        const quint64 before = detail::masterChanges.load();
        const Parameter& shown = shownParameter();
        auto answer = &shown == this || !shown.asksHooks() ? own(shown) : askMaster(shown);
        if (detail::masterChanges.load() == before || attempt == patience)
            return answer;
    }
}

template <class T> template <class Question> auto Parameter<T>::ask(const View& view, const Question& question) const {
    if (asksHooks())
        return askHeld(view, question);
    detail::Protection protection;
    const PVData& data = m_views.protect(protection, [&](const FastViewMap&) { return view; });
    return question(static_cast<const detail::Track<T>&>(data), data.view);
}

template <class T>
template <class Question>
auto Parameter<T>::askHeld(const View& view, const Question& question) const {
    if (const HeldTrack* const held = HeldTrack::find(m_views, view))
        return question(held->track, held->view);
    const HeldTrack held = hold(view, [&](const FastViewMap&) { return view; });
    return question(held.track, held.view);
}

/// A copy of the data of the chosen view; within an evaluation of that view, the copy with which it began.
template <class T>
template <class Choose>
auto Parameter<T>::hold(const View& view, const Choose& choose) const -> HeldTrack {
    detail::Protection protection;
    if (const HeldTrack* const around = HeldTrack::find(m_views, view))
        return HeldTrack(*around, view, protection);
    const PVData& data = m_views.protect(protection, choose);
    return HeldTrack(m_views, data, view, {m_keyframed, m_splittable, outside()}, protection);
}

/// The first of the source views of a view; `sources` has all of them with view interpolation.
template <class T>
View Parameter<T>::sourceView(const FastViewMap& map, const View& view, Traits traits,
                              detail::SourceViews& sources) const {
    sources = {};
    if (!traits.splittable)
        return View::INVALID();
    MVInterpolationParams params = viewInterpolation();
    // Static values are never made from several views.
    if (params.mode == MVInterpolationParams::Off || !traits.keyframed)
        return view;
    if (!blends<T>)
        params.mode = MVInterpolationParams::Nearest;
    sources = detail::interpolationSourceViews(params, view, map.viewsAround(view));
    return sources.empty() ? view : sources[0];
}

/// Values of one parameter without its master, wherever they come from: several views, hooks, a host's functions. They
/// are made from copies of the data, so that other code may run meanwhile.
template <class T> class Parameter<T>::Evaluation {
public:
    using StepNotes = detail::StepNotes<T>;

    /// The notes, unless null, are for a single time. The context is copied member by member, as the caller stored it:
    /// to read the whole at once, the processor would wait until all its parts are written.
    Evaluation(const Parameter& parameter, const Context& context, Cache* cache, StepNotes* notes = nullptr)
        : m_parameter(parameter), m_context(context.time, context.view, context.flags), m_cache(cache),
          m_overridden(parameter.m_gate.overridden(parameter)), m_notes(notes) {}

    void operator()(const Time* times, int count, T* out) {
        for (int attempt = 0; !isFromOneState(times, count, out, attempt < patience); ++attempt) {
        }
    }

private:
    static constexpr int patience = 8;

    /// False where an assignment has changed meanwhile what a class of a host's says of itself.
    bool isFromOneState(const Time* times, int count, T* out, bool mayAskAgain) {
        const Traits asked = askedTraits();
        detail::SourceViews sources;
        {
            bool isOneOfSeveral = false;
            const HeldTrack held = m_parameter.hold(m_context.view, [&](const FastViewMap& map) {
                isOneOfSeveral = true;
                return m_parameter.sourceView(map, m_context.view, asksTraits() ? asked : Traits(m_parameter), sources);
            });
            if (asksTraits() && mayAskAgain && !(askedTraits() == asked))
                return false;
            const Traits traits = asksTraits() ? asked : Traits(held.settings.keyframed, held.settings.splittable);
            if (m_notes)
                noteSource(held, traits.splittable, isOneOfSeveral, sources);
            if (!traits.keyframed)
                std::fill_n(out, count, staticValue(held, false));
            else if (sources.size() < 2)
                evaluate(held, times, count, out);
        }
        if (sources.size() > 1)
            blend(sources, times, count, out);
        return true;
    }

    PRM_NEVER_INLINE void noteSource(const HeldTrack& held, bool isSplittable, bool isOneOfSeveral,
                                     const detail::SourceViews& sources) const {
        m_notes->restart();
        if (sources.size() < 2)
            m_notes->reads(held.view, m_context.view, isSplittable, isOneOfSeveral, !sources.empty());
    }

    bool asksTraits() const { return m_overridden == HookGate::HooksAndTraits; }
    Traits askedTraits() const {
        return asksTraits() ? Traits(m_parameter.isKeyframed(), m_parameter.splittable()) : Traits(false, false);
    }

    /// One view after the other: each contributes values that it had meanwhile.
    PRM_NEVER_INLINE void blend(const detail::SourceViews& sources, const Time* times, int count, T* out) {
        if constexpr (blends<T>) {
            const auto weights = detail::sourceWeights(sources, m_context.view);
            QVarLengthArray<detail::WeightedSum<T>, 4> sums(count);
            for (int s = 0; s < sources.size(); ++s) {
                evaluate(holdAgain(sources[s]), times, count, out);
                for (int i = 0; i < count; ++i)
                    sums[i].add(out[i], weights[static_cast<std::size_t>(s)]);
                if (m_notes)
                    m_notes->endSource(sources[s], weights[static_cast<std::size_t>(s)], *out);
            }
            std::transform(sums.begin(), sums.end(), out, [](const auto& sum) { return sum.value(); });
            if (m_notes)
                m_notes->endBlend(*out);
        }
    }

    HeldTrack holdAgain(View view) const {
        return m_parameter.hold(view, [=](const FastViewMap&) { return view; });
    }

    PRM_ALWAYS_INLINE void evaluate(const HeldTrack& held, const Time* times, int count, T* out) {
        if (m_overridden != HookGate::Nothing)
            return evaluateByHooks(held, times, count, out);
        if (m_notes)
            *out = m_notes->evaluate(held, *times);
        else
            detail::evaluate(held.track, held.settings.outside, times, count, out);
    }

    PRM_ALWAYS_INLINE void evaluateByHooks(const HeldTrack& held, const Time* times, int count, T* out) {
        for (int done = askHooks(held, times, count, out); done < count;)
            done += askHooks(holdAgain(held.asked), times + done, count - done, out + done);
    }

    /// Returns after how many times a hook has edited the keyframes, so that the others need a new copy.
    PRM_ALWAYS_INLINE int askHooks(const HeldTrack& held, const Time* times, int count, T* out) {
        int& cursor = held.thread().cursor();
        int done = 0;
        while (done < count && (done == 0 || held.isTrue())) {
            m_context.time = times[done];
            out[done++] = askHooks(held, cursor);
        }
        return done;
    }

    PRM_ALWAYS_INLINE T askHooks(const HeldTrack& held, int& cursor) const {
        const KeyframeVector& keyframes = held.track.keyframes;
        if (keyframes.isEmpty())
            return m_parameter.supportsExtrapolationFromNoKeys() ? askHook(held, {}) : staticValue(held, true);
        const detail::Bracket at = detail::bracketNear(keyframes.constData(), keyframes.size(), m_context.time, cursor);
        if (at.before != at.after)
            return askHook(held, at);
        const KeyframeData<T>& keyframe = keyframes.at(detail::firstAtTime(keyframes, at.before));
        if (m_notes)
            m_notes->isAt(keyframe);
        return keyframe.value;
    }

    PRM_ALWAYS_INLINE T askHook(const HeldTrack& held, detail::Bracket at) const {
        const BoundingKeyframes around = detail::named(at, held.view, m_parameter);
        T value = at.before < 0 || at.after < 0 ? m_parameter.extrapolateValue(around, m_context, m_cache)
                                                : m_parameter.interpolateValue(around, m_context, m_cache);
        if (m_notes)
            m_notes->asksHook(held.track.keyframes, at, value);
        return value;
    }

    T staticValue(const HeldTrack& held, bool isKeyframed) const {
        if (m_notes)
            m_notes->readsStaticValue(held, isKeyframed);
        return held.track.staticValue;
    }

    const Parameter& m_parameter;
    Context m_context;
    Cache* const m_cache;
    const typename HookGate::Overridden m_overridden;
    StepNotes* const m_notes;
};

namespace detail {

/// The value in protected data; false where a function that a host registered is needed for it.
template <class T>
PRM_ALWAYS_INLINE bool isEvaluated(const Track<T>& track, bool isKeyframed, Outside around, Time time,
                                   const Protection& protection, T& value) {
    const QVector<KeyframeData<T>>& keyframes = track.keyframes;
    if (!isKeyframed || keyframes.isEmpty()) {
        value = track.staticValue;
        return true;
    }
    const Bracket at = bracketNear(keyframes.constData(), keyframes.size(), time, protection.thread().cursor());
    if (asksHost(keyframes, at, around))
        return false;
    value = valueAround(keyframes, at, around, time);
    return true;
}

} // namespace detail

/// Nearly every evaluation is of a parameter without a master, or of one with a master that is no class of a host's. It
/// is tried first: what the general way calls has to save registers, and what is saved has to be written before a block
/// can be protected.
template <class T> T Parameter<T>::value(const Context& context, Cache* cache) const {
    const quint64 before = detail::masterChanges.load();
    T value{};
    return shownParameter().isEvaluated(context, before, value) ? value : generalValue(context, cache);
}

/// The value in the block that all views read, or in the own data of one of several; false where it is not found there,
/// or masters have changed since they were counted.
template <class T> bool Parameter<T>::isEvaluated(const Context& context, quint64 before, T& value) const {
    if (runsOtherCode())
        return false;
    detail::Protection protection;
    const PVData* data = m_views.protectShared(protection);
    if (!data && Parameter::splittable())
        data = m_views.protectOwn(protection, context.view);
    return data &&
           detail::isEvaluated<T>(*data, Parameter::isKeyframed(), outside(), context.time, protection, value) &&
           detail::masterChanges.load() == before;
}

template <class T> T Parameter<T>::generalValue(const Context& context, Cache* cache) const {
    return askShown([&](const Parameter& shown) { return shown.ownValue(context, cache); },
                    [&](const Parameter& shown) { return shown.value(context, cache); });
}

template <class T> T Parameter<T>::ownValue(const Context& context, Cache* cache) const {
    T value{};
    if (!runsOtherCode()) {
        detail::SourceViews sources;
        detail::Protection protection;
        const PVData& data = m_views.protect(
            protection, [&](const FastViewMap& map) { return sourceView(map, context.view, Traits(*this), sources); });
        if (sources.size() < 2 &&
            detail::isEvaluated<T>(data, Parameter::isKeyframed(), outside(), context.time, protection, value))
            return value;
    }
    Evaluation(*this, context, cache)(&context.time, 1, &value);
    return value;
}

/// Whether evaluation may run code of a host's: hooks, or a value type that blends by functions of its own.
template <class T> bool Parameter<T>::runsOtherCode() const {
    return (blends<T> && !isPlain<T>) || asksHooks();
}

template <class T>
void Parameter<T>::sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache) const {
    askShown(
        [&](const Parameter& shown) {
            Evaluation(shown, Context(Time(), view), cache)(times, count, out);
            return true;
        },
        [&](const Parameter& shown) {
            shown.sampleValues(times, count, view, out, cache);
            return true;
        });
}

template <class T>
QVector<T> Parameter<T>::sampleValues(const Frame& first, const Frame& last, const View& view, Cache* cache) const {
    if (!first.isValid() || !last.isValid() || last < first)
        return {};
    const int count = static_cast<int>(std::min<quint32>(last.toUInt() - first.toUInt(), 2147483646u)) + 1;
    QVector<Time> times(count);
    for (int i = 0; i < count; ++i)
        times[i] = Time::fromUInt(first.toUInt() + static_cast<quint32>(i));
    QVector<T> values(count);
    sampleValues(times.constData(), count, view, values.data(), cache);
    return values;
}

template <class T> T Parameter<T>::interpolateValue(const BoundingKeyframes& keyframes, const Context&, Cache*) const {
    return keyframeValue(keyframes.before.index, keyframes.before.view);
}

template <class T> T Parameter<T>::extrapolateValue(const BoundingKeyframes& keyframes, const Context&, Cache*) const {
    const KeyframeIndex& edge = keyframes.before.view == View::INVALID() ? keyframes.after : keyframes.before;
    return keyframeValue(edge.index, edge.view);
}

template <class T> bool Parameter<T>::supportsExtrapolationFromNoKeys() const {
    return false;
}

template <class T>
IType Parameter<T>::initialiseInterpolation(const KeyframeData<T>&, const KeyframeData<T>&, Interpolation kind) const {
    return {kind};
}

template <class T> Extrapolation Parameter<T>::extrapolationBefore() const {
    return askShown(
        [](const Parameter& shown) { return shown.isKeyframed() ? shown.outside().before : Extrapolation::Constant; },
        [](const Parameter& shown) { return shown.extrapolationBefore(); });
}

template <class T> Extrapolation Parameter<T>::extrapolationAfter() const {
    return askShown(
        [](const Parameter& shown) { return shown.isKeyframed() ? shown.outside().after : Extrapolation::Constant; },
        [](const Parameter& shown) { return shown.extrapolationAfter(); });
}

template <class T> Interpolation Parameter<T>::interpolation(const Context& context) const {
    const auto governing = [&](const Parameter& shown, const KeyframeVector& keyframes) {
        if (keyframes.isEmpty())
            return shown.defaultInterpolation();
        const int position = detail::lowerBound(keyframes, context.time);
        const bool governs =
            position == 0 || (position < keyframes.size() && keyframes.at(position).time == context.time);
        return keyframes.at(governs ? position : position - 1).interpolationData.interpolation;
    };
    return askShown(
        [&](const Parameter& shown) {
            return shown.ask(context.view, [&](const auto& track, View) {
                return shown.isKeyframed() ? governing(shown, track.keyframes) : Interpolation::Constant;
            });
        },
        [&](const Parameter& shown) { return shown.interpolation(context); });
}

template <class T> Interpolation Parameter<T>::interpolation(const KeyframeIndex& keyframe) const {
    return interpolationData(keyframe).interpolation;
}

template <class T> IType Parameter<T>::interpolationData(const KeyframeIndex& keyframe) const {
    return askShown(
        [&](const Parameter& shown) {
            return shown.ask(keyframe.view, [&](const auto& track, View) {
                return keyframe.index < static_cast<quint32>(track.keyframes.size())
                           ? track.keyframes.at(static_cast<int>(keyframe.index)).interpolationData
                           : IType(shown.defaultInterpolation());
            });
        },
        [&](const Parameter& shown) { return shown.interpolationData(keyframe); });
}

template <class T> void Parameter<T>::calculateHash(Bsc::Hash& hash, const Context& context) const {
    const bool atFrame = Frame(context).isValid();
    ValueType<T>::addToHash(hash, atFrame ? value(context, nullptr) : staticValue(View(View::defaultViewId())));
}

template <class T> MVInterpolationParams Parameter<T>::viewInterpolation() const {
    return {static_cast<MVInterpolationParams::Mode>(m_viewInterpolation.load(std::memory_order_relaxed))};
}

template <class T> void Parameter<T>::setViewInterpolation(const MVInterpolationParams& params) {
    m_viewInterpolation.store(static_cast<quint8>(params.mode));
    ++m_changes;
}

} // namespace Prm

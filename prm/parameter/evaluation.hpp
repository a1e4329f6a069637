#pragma once

// The value at a time in a view, and the kinds of curve that lead to it.

#include "prm/Parameter.h"
#include "prm/track/Evaluation.h"
#include "prm/untyped/Masters.h"

#include <QVarLengthArray>

#include <algorithm>
#include <utility>

namespace Prm {

/// The table of the class whose hooks do what `detail::evaluate` does: `CurveParameter<T>` for types that blend.
template <class T> std::atomic<const char*>& Parameter<T>::evaluatedTable() {
    static std::atomic<const char*> table{nullptr};
    return table;
}

/// Whether this object's class, and not that of `evaluatedTable`, says what a virtual operation does.
template <class T> template <class Operation> bool Parameter<T>::overrides(Operation operation) const {
    const char* const table = evaluatedTable().load(std::memory_order_relaxed);
    const void* const evaluated = detail::implementationIn<Parameter>(table, operation);
    return !evaluated || detail::implementationOf<Parameter>(*this, operation) != evaluated;
}

/// The gate between `detail::evaluate` and the hooks of a host's class.
template <class T> bool Parameter<T>::asksHooks() const {
    const auto table = reinterpret_cast<std::uintptr_t>(detail::virtualTableOf(this));
    const std::uintptr_t known = m_evaluatedAs.load(std::memory_order_relaxed);
    return known != table && (known == table + 1 || learnsToAskHooks());
}

template <class T> bool Parameter<T>::learnsToAskHooks() const {
    using OfContext = Interpolation (Parameter::*)(const Context&) const;
    using OfIndex = Interpolation (Parameter::*)(const KeyframeIndex&) const;
    const bool asks =
        overrides(&Parameter::value) || overrides(&Parameter::interpolateValue) ||
        overrides(&Parameter::extrapolateValue) || overrides(&Parameter::supportsExtrapolationFromNoKeys) ||
        overrides(&Parameter::isKeyframed) || overrides(&Parameter::splittable) ||
        overrides(&Parameter::extrapolationBefore) || overrides(&Parameter::extrapolationAfter) ||
        overrides(&Parameter::keyframeValue) || overrides(&Parameter::hasViewData) ||
        overrides(&Parameter::defaultInterpolation) || overrides(static_cast<OfContext>(&Parameter::interpolation)) ||
        overrides(static_cast<OfIndex>(&Parameter::interpolation)) || overrides(&Parameter::interpolationData);
    const auto table = reinterpret_cast<std::uintptr_t>(detail::virtualTableOf(this));
    m_evaluatedAs.store(asks ? table + 1 : table, std::memory_order_relaxed);
    return asks;
}

template <class T> const void* Parameter<T>::asTyped(const std::type_info& valueType) const {
    return valueType == typeid(T) ? this : nullptr;
}

/// The parameter that answers for this one: up the chain of masters with values of this type to the last, or to the
/// first of a class that overrides the question. A chain is walked here, not by recursion; so of very many masters of a
/// host's own classes, one asking the other, the rest are not asked what they override.
template <class T> const Parameter<T>& Parameter<T>::shownParameter() const {
    const Parameter* shown = this;
    while (const ParameterWithoutType* const master = shown->masterParameter()) {
        const void* const typed = master->asTyped(typeid(T));
        if (!typed)
            break;
        shown = static_cast<const Parameter*>(typed);
        if (shown->asksHooks() && !detail::MasterScope::isDeep())
            break;
    }
    return *shown;
}

/// What `own` says of this parameter, or of the one that answers for it; `general` asks a class that overrides the
/// question. Where masters change meanwhile they are asked again: the former master may show what this parameter never
/// did. Not without end, for a hook may change them each time.
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
    if (asksHooks()) {
        if (const HeldTrack* const held = HeldTrack::find(m_views, view))
            return question(held->track, held->view);
        const HeldTrack held = hold(view, [&](const FastViewMap&) { return view; });
        return question(held.track, held.view);
    }
    detail::Protection protection;
    const PVData& data = m_views.protect(protection, [&](const FastViewMap&) { return view; });
    return question(static_cast<const detail::Track<T>&>(data), data.view);
}

/// A copy of the data of the view that is chosen, or that with which an evaluation of the view around this one began.
template <class T>
template <class Choose>
auto Parameter<T>::hold(const View& view, const Choose& choose) const -> HeldTrack {
    detail::Protection protection;
    if (const HeldTrack* const around = HeldTrack::find(m_views, view))
        return HeldTrack(*around, view, protection);
    const PVData& data = m_views.protect(protection, choose);
    return HeldTrack(m_views, data, view, {m_keyframed, outside()}, protection);
}

/// The first of the views from which a value in this one is made, and all of them if they may be several.
template <class T>
View Parameter<T>::sourceView(const FastViewMap& map, const View& view, bool apart,
                              detail::SourceViews& sources) const {
    sources = {};
    if (!apart)
        return View::INVALID();
    MVInterpolationParams params = viewInterpolation();
    if (params.mode == MVInterpolationParams::Off)
        return view;
    if (!blends<T>)
        params.mode = MVInterpolationParams::Nearest;
    sources = detail::interpolationSourceViews(params, view, map.viewsAround(view));
    return sources.empty() ? view : sources[0];
}

template <class T> T Parameter<T>::value(const Context& context, Cache* cache) const {
    return askShown([&](const Parameter& shown) { return shown.ownValue(context, cache); },
                    [&](const Parameter& shown) { return shown.value(context, cache); });
}

template <class T> T Parameter<T>::ownValue(const Context& context, Cache* cache) const {
    // A type of a host's that blends brings functions of its own.
    if constexpr (isPlain<T> || !blends<T>) {
        if (!asksHooks()) {
            detail::SourceViews sources;
            detail::Protection protection;
            const PVData& data = m_views.protect(protection, [&](const FastViewMap& map) {
                return sourceView(map, context.view, Parameter::splittable(), sources);
            });
            const KeyframeVector& keyframes = data.keyframes;
            if (!Parameter::isKeyframed() || (keyframes.isEmpty() && sources.size() < 2))
                return data.staticValue;
            if (sources.size() < 2) {
                const detail::Bracket at = detail::bracketNear(keyframes.constData(), keyframes.size(), context.time,
                                                               protection.thread().cursor());
                if (!detail::asksHost(keyframes, at, outside()))
                    return detail::valueAround(keyframes, at, outside(), context.time);
            }
        }
    }
    T value{};
    ownValues(context, &context.time, 1, &value, cache);
    return value;
}

/// The values at some times, wherever they come from. The context's own time does not matter.
template <class T>
void Parameter<T>::ownValues(const Context& context, const Time* times, int count, T* out, Cache* cache) const {
    constexpr int patience = 8;
    const bool asks = asksHooks();
    for (int attempt = 0;; ++attempt) {
        const bool keyframed = asks && isKeyframed();
        const bool apart = asks && splittable();
        detail::SourceViews sources;
        {
            const HeldTrack held = hold(context.view, [&](const FastViewMap& map) {
                return sourceView(map, context.view, asks ? apart : Parameter::splittable(), sources);
            });
            // An assignment changes them together with the data.
            if (asks && (isKeyframed() != keyframed || splittable() != apart) && attempt < patience)
                continue;
            if (!(asks ? keyframed : held.settings.keyframed)) {
                std::fill_n(out, count, held.track.staticValue);
                return;
            }
            if (sources.size() < 2)
                return heldValues(held, context, times, count, out, cache);
        }
        return blendedValues(sources, context, times, count, out, cache);
    }
}

/// One view after the other: each contributes values that it had meanwhile.
template <class T>
void Parameter<T>::blendedValues(const detail::SourceViews& sources, const Context& context, const Time* times,
                                 int count, T* out, Cache* cache) const {
    if constexpr (blends<T>) {
        const auto weights = detail::sourceWeights(sources, context.view);
        QVarLengthArray<detail::WeightedSum<T>, 4> sums(count);
        for (int s = 0; s < sources.size(); ++s) {
            const HeldTrack held = hold(sources[s], [&](const FastViewMap&) { return sources[s]; });
            heldValues(held, context, times, count, out, cache);
            for (int i = 0; i < count; ++i)
                sums[i].add(out[i], weights[static_cast<std::size_t>(s)]);
        }
        std::transform(sums.begin(), sums.end(), out, [](const auto& sum) { return sum.value(); });
    }
}

template <class T>
void Parameter<T>::heldValues(const HeldTrack& held, const Context& context, const Time* times, int count, T* out,
                              Cache* cache) const {
    if (!asksHooks())
        return detail::evaluate(held.track, held.settings.outside, times, count, out);
    Context at = context;
    int cursor = 0;
    for (int i = 0; i < count; ++i) {
        // A hook has edited the keyframes.
        if (!held.isTrue())
            return heldValues(hold(held.asked, [&](const FastViewMap&) { return held.asked; }), context, times + i,
                              count - i, out + i, cache);
        at.time = times[i];
        out[i] = hookedValue(held, at, cursor, cache);
    }
}

template <class T>
T Parameter<T>::hookedValue(const HeldTrack& held, const Context& context, int& cursor, Cache* cache) const {
    const KeyframeVector& keyframes = held.track.keyframes;
    if (keyframes.isEmpty())
        return supportsExtrapolationFromNoKeys() ? extrapolateValue({}, context, cache) : held.track.staticValue;
    const detail::Bracket at = detail::bracketNear(keyframes.constData(), keyframes.size(), context.time, cursor);
    if (at.before == at.after)
        return keyframes.at(detail::firstAtTime(keyframes, at.before)).value;
    const BoundingKeyframes around = detail::named(at, held.view, *this);
    return at.before < 0 || at.after < 0 ? extrapolateValue(around, context, cache)
                                         : interpolateValue(around, context, cache);
}

template <class T>
void Parameter<T>::sampleValues(const Time* times, int count, const View& view, T* out, Cache* cache) const {
    askShown(
        [&](const Parameter& shown) {
            shown.ownValues(Context(Time(), view), times, count, out, cache);
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
        [](const Parameter& shown) {
            return shown.isKeyframed() ? shown.outside().before : Extrapolation::Constant;
        },
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
}

} // namespace Prm

#pragma once

// The value at a time in a view, and the kinds of curve that lead to it.

#include "prm/Parameter.h"
#include "prm/track/CurveShapes.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/untyped/Masters.h"

#include <algorithm>
#include <utility>

namespace Prm {

/// The master, if its values are of this type.
template <class T> const Parameter<T>* Parameter<T>::typedMaster() const {
    const ParameterWithoutType* const master = masterParameter();
    return master ? dynamic_cast<const Parameter*>(master) : nullptr;
}

/// The parameter that answers for this one: up the chain of masters to the last, or to the first of a class that may
/// override the question. A chain is walked here, not by recursion; so of very many masters of a host's own classes,
/// one asking the other, the rest are not asked what they override.
template <class T> const Parameter<T>& Parameter<T>::shownParameter() const {
    const Parameter* shown = this;
    const bool deep = masterParameter() && detail::MasterScope::isDeep();
    while (const Parameter* const master = shown->typedMaster()) {
        shown = master;
        if (!deep && !master->isOfKnownClass())
            break;
    }
    return *shown;
}

/// What `ask` says of the parameter that answers for this one. Where masters change meanwhile it is asked again: the
/// former master may show what this parameter never did. Not without end, for a hook may change them each time.
template <class T>
template <class Ask>
auto Parameter<T>::askShown(const Ask& ask) const -> decltype(ask(std::declval<const Parameter&>())) {
    constexpr int patience = 8;
    const auto askMaster = [&](const Parameter& master) {
        const detail::MasterScope scope;
        return ask(master);
    };
    for (int attempt = 0;; ++attempt) {
        const quint64 before = detail::masterChanges.load();
        const Parameter& shown = shownParameter();
        auto answer = &shown == this ? ask(shown) : askMaster(shown);
        if (detail::masterChanges.load() == before || attempt == patience)
            return answer;
    }
}

/// The data with which evaluation begins.
template <class T> auto Parameter<T>::readShown(const View& view) const -> ReadBlock {
    return {m_views, view, [this] { return tellsViewsApart(); }};
}

/// In the plain case, a static value or a straight line of the library's own, without a master or views that differ, no
/// function is called: what one would save on the stack has to be written before a block can be announced.
template <class T> T Parameter<T>::value(const Context& context, Cache* cache) const {
    // A value type of a host's has functions of its own, and these may evaluate something else.
    if constexpr (blends<T> && isPlain<T>) {
        if (isOfKnownClass() && !masterParameter()) {
            detail::BriefReadScope scope;
            const PVData* const data = m_views.pinShared(scope);
            // Asked again: once there is a master, edits of the own data are not shown.
            if (data && !masterParameter()) {
                T value{};
                if (isFoundAtOnce(*data, context.time, scope.lastPosition(), value))
                    return value;
                return valueSearched(scope.handOver(), *data, context, cache);
            }
        }
    }
    return valueAtLength(context, cache);
}

/// The static value, or one in the segment of the last time.
template <class T> bool Parameter<T>::isFoundAtOnce(const PVData& data, Time time, int last, T& value) const {
    const KeyframeVector& keyframes = data.keyframes;
    if (!Parameter::isKeyframed() || keyframes.isEmpty()) {
        value = data.staticValue;
        return true;
    }
    const KeyframeData<T>* const first = keyframes.constData();
    return detail::isBetween(first, keyframes.size(), time, last) &&
           detail::isOnLine(first[last], first[last + 1], time, value);
}

/// The same wherever the time lies, and ends the announcement.
template <class T>
T Parameter<T>::valueSearched(detail::ReaderRecord& announcing, const PVData& data, const Context& context,
                              Cache* cache) const {
    if constexpr (blends<T>) {
        const detail::BriefReadScope scope(announcing);
        T value{};
        if (searchBriefly(data.keyframes, context.time, scope.lastPosition(), value))
            return value;
    }
    return valueAtLength(context, cache);
}

/// Without asking a hook: false where that is needed.
template <class T>
bool Parameter<T>::searchBriefly(const KeyframeVector& keyframes, Time time, int& last, T& value) const {
    const detail::Bracket at = detail::bracketNear(keyframes.constData(), keyframes.size(), time, last);
    if (at.before == at.after) {
        value = keyframes.at(exactKey(keyframes, at.before)).value;
        return true;
    }
    if (at.before < 0 || at.after < 0) {
        value = keyframes.at(std::max(at.before, at.after)).value;
        return (at.before < 0 ? m_extrapolationBefore : m_extrapolationAfter).load() == Extrapolation::Constant;
    }
    const KeyframeData<T>& from = keyframes.at(at.before);
    if (detail::isCustom(from.interpolationData))
        return false;
    if constexpr (blends<T>)
        value = detail::segmentValue(from, keyframes.at(at.after), time);
    return blends<T>;
}

template <class T> T Parameter<T>::valueAtLength(const Context& context, Cache* cache) const {
    return askShown([&](const Parameter& shown) {
        return &shown == this ? ownValue(context, cache) : shown.value(context, cache);
    });
}

template <class T> T Parameter<T>::ownValue(const Context& context, Cache* cache) const {
    {
        const ReadBlock block = readShown(context.view);
        if (!answersKeyframed())
            return block->staticValue;
        if (answersAlone(block, context.view))
            return valueIn(block, context, cache);
    }
    return blendedValue(context, cache);
}

template <class T> T Parameter<T>::blendedValue(const Context& context, Cache* cache) const {
    detail::SourceViews sources;
    {
        const ReadBlock block = readSources(context.view, sources);
        if (sources.size() == 1)
            return valueIn(block, context, cache);
    }
    return computedValue(context, sources, cache);
}

/// Whether the value comes from this block and no other view's.
template <class T> bool Parameter<T>::answersAlone(const ReadBlock& block, const View& view) const {
    return viewInterpolation().mode == MVInterpolationParams::Off || !tellsViewsApart() || block.belongsTo(view);
}

/// The views from which the value in this one is made, and the data of the first of them. Of several views the value
/// is put together one by one: each contributes a value that it had meanwhile.
template <class T> auto Parameter<T>::readSources(const View& view, detail::SourceViews& sources) const -> ReadBlock {
    return {m_views,
            [&](const detail::ViewsAround& around) {
                MVInterpolationParams params = viewInterpolation();
                if (!blends<T> && params.mode != MVInterpolationParams::Off)
                    params.mode = MVInterpolationParams::Nearest;
                if (splittable())
                    sources = detail::interpolationSourceViews(params, view, around);
                if (sources.empty())
                    sources.append(splittable() ? view : View(View::INVALID()));
                return sources[0];
            },
            view};
}

template <class T> T Parameter<T>::valueInView(const View& view, const Context& context, Cache* cache) const {
    const ReadBlock block = read(view);
    return valueIn(block, context, cache);
}

/// Of several keyframes at one time, which `adjustKeyframesTime` may leave, the first one counts, as for edits.
template <class T> int Parameter<T>::exactKey(const KeyframeVector& keyframes, int found) {
    const Time time = keyframes.at(found).time;
    return found > 0 && keyframes.at(found - 1).time == time ? detail::lowerBound(keyframes, time) : found;
}

/// The value in one view's data alone.
template <class T> T Parameter<T>::valueIn(const ReadBlock& block, const Context& context, Cache* cache) const {
    const KeyframeVector& keyframes = block.keyframes();
    if (keyframes.isEmpty())
        return supportsExtrapolationFromNoKeys() ? extrapolateValue({}, context, cache) : block->staticValue;
    const detail::Bracket at =
        detail::bracketNear(keyframes.constData(), keyframes.size(), context.time, block.lastPosition());
    return valueAround(block, at, context, cache);
}

/// The value at a time whose place among the keyframes is known.
template <class T>
T Parameter<T>::valueAround(const ReadBlock& block, detail::Bracket at, const Context& context, Cache* cache) const {
    const KeyframeVector& keyframes = block.keyframes();
    if (at.before == at.after)
        return keyframes.at(exactKey(keyframes, at.before)).value;
    if constexpr (blends<T>) {
        if (at.before >= 0 && at.after >= 0 && isOfKnownClass())
            return detail::segmentValue(keyframes.at(at.before), keyframes.at(at.after), context.time);
    }
    return hookedValue(detail::named(at, block->view, *this), context, cache);
}

template <class T>
T Parameter<T>::hookedValue(const BoundingKeyframes& around, const Context& context, Cache* cache) const {
    const bool outside = !around.before.parameter || !around.after.parameter;
    return outside ? extrapolateValue(around, context, cache) : interpolateValue(around, context, cache);
}

template <class T>
template <int count>
T Parameter<T>::computedValue(const Context& context, const detail::SourceViews& views, Cache* cache) const {
    if constexpr (count > 1 && blends<T>) {
        detail::WeightedSum<T> sum;
        const auto weights = detail::sourceWeights(views, context.view);
        for (int i = 0; i < count; ++i)
            sum.add(valueInView(views[i], context, cache), weights[static_cast<std::size_t>(i)]);
        return sum.value();
    } else {
        return valueInView(views[0], context, cache);
    }
}

template <class T>
T Parameter<T>::computedValue(const Context& context, const detail::SourceViews& views, Cache* cache) const {
    switch (views.size()) {
    case 1:
        return computedValue<1>(context, views, cache);
    case 2:
        return computedValue<2>(context, views, cache);
    default:
        return computedValue<3>(context, views, cache);
    }
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
    return askShown([this](const Parameter& shown) {
        if (&shown != this)
            return shown.extrapolationBefore();
        return isKeyframed() ? m_extrapolationBefore.load(std::memory_order_relaxed) : Extrapolation::Constant;
    });
}

template <class T> Extrapolation Parameter<T>::extrapolationAfter() const {
    return askShown([this](const Parameter& shown) {
        if (&shown != this)
            return shown.extrapolationAfter();
        return isKeyframed() ? m_extrapolationAfter.load(std::memory_order_relaxed) : Extrapolation::Constant;
    });
}

template <class T> Interpolation Parameter<T>::interpolation(const Context& context) const {
    return askShown([&](const Parameter& shown) {
        return &shown == this ? ownInterpolation(context) : shown.interpolation(context);
    });
}

template <class T> Interpolation Parameter<T>::ownInterpolation(const Context& context) const {
    if (!isKeyframed())
        return Interpolation::Constant;
    const ReadBlock block = read(context.view);
    const KeyframeVector& keyframes = block.keyframes();
    if (keyframes.isEmpty())
        return defaultInterpolation();
    const int position = detail::lowerBound(keyframes, context.time);
    const bool governs = position == 0 || (position < keyframes.size() && keyframes.at(position).time == context.time);
    return keyframes.at(governs ? position : position - 1).interpolationData.interpolation;
}

template <class T> Interpolation Parameter<T>::interpolation(const KeyframeIndex& keyframe) const {
    return interpolationData(keyframe).interpolation;
}

template <class T> IType Parameter<T>::interpolationData(const KeyframeIndex& keyframe) const {
    return askShown([&](const Parameter& shown) {
        return &shown == this ? ownInterpolationData(keyframe) : shown.interpolationData(keyframe);
    });
}

template <class T> IType Parameter<T>::ownInterpolationData(const KeyframeIndex& keyframe) const {
    const ReadBlock block = read(keyframe.view);
    const KeyframeVector& keyframes = block.keyframes();
    if (keyframe.index >= static_cast<quint32>(keyframes.size()))
        return {defaultInterpolation()};
    return keyframes.at(static_cast<int>(keyframe.index)).interpolationData;
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

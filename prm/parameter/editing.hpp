#pragma once

// The direct edits of keyframes, static values and kinds of curve. Each guards, changes, and notifies.

#include "prm/Parameter.h"
#include "prm/text/LineNotes.h"
#include "prm/track/KeyframeInsertion.h"
#include "prm/track/KeyframeStretch.h"

#include <algorithm>
#include <exception>
#include <vector>

namespace Prm {

template <class T>
template <class ShapeOf>
auto Parameter<T>::insertAt(const detail::InsertionPlace& place, PVData& data, const KeyframeData<T>& added,
                            const ShapeOf& shapeOf) -> Inserted {
    LockedKeyframes lock(&data);
    KeyframeVector& keyframes = lock.keyframes();
    detail::insertAt(place, keyframes, added, shapeOf);
    m_revision.countKeyframe();
    if (isReadingIn() && keyframes.size() > detail::LineNotes::longList && place.position + 1 < keyframes.size())
        detail::LineNotes::addInsertion();
    return {&data, place.position, true};
}

/// Inserts a keyframe into the data of the view unless there is one at the time. A hook of a host's that shapes the
/// segment is called before that, with copies, and may edit. So all is found again afterwards: no data if it has
/// deleted the parameter, no position if it has made it static; its shape is used if the segment still has the same
/// ends.
template <class T>
auto Parameter<T>::insertKeyframe(PVData* data, const View& view, Time time, const T& value) -> Inserted {
    using Keyframe = KeyframeData<T>;
    const detail::InsertionPlace place(data->keyframes, time, defaultInterpolation(), isReadingIn());
    if (place.isTaken)
        return {data, place.position, false};
    const Keyframe added(time, value, place.kind);
    const auto initial = [this, kind = place.kind](const Keyframe& from, const Keyframe& to) {
        return initialiseInterpolation(from, to, kind);
    };
    if (place.shaped < 0 || !HookGate::overrides(*this, &Parameter::initialiseInterpolation))
        return insertAt(place, *data, added, initial);

    const bool appends = place.shaped < place.position;
    const Keyframe neighbour = data->keyframes.at(place.shaped);
    const detail::LifeGuard guard(*this);
    const IType shape = appends ? initial(neighbour, added) : initial(added, neighbour);
    data = guard.alive() ? targetData(view) : nullptr;
    if (!data || !isKeyframed())
        return {data};
    const detail::InsertionPlace present(data->keyframes, time, place.kind, isReadingIn());
    if (present.isTaken)
        return {data, present.position, false};
    return insertAt(present, *data, added, [&](const Keyframe& from, const Keyframe& to) {
        const bool isSame = appends ? from.time == neighbour.time : to.time == neighbour.time;
        return isSame && appends == (present.shaped < present.position) ? shape : from.interpolationData;
    });
}

template <class T> int Parameter<T>::vSetValue(const T& value, const Context& context) {
    const View view = context.view;
    const Time time = context.time;
    Inserted key{targetData(view)};
    if (key.data && isKeyframed() && time.isValid())
        key = insertKeyframe(key.data, view, time, value);
    if (!key.data)
        return -1;
    const bool isChanged = key.isNew || (key.position < 0 ? detail::storeStaticValue(*key.data, value)
                                                          : detail::storeKeyframeValue(*key.data, key.position, value));
    if (!isChanged || !mayHaveReceivers())
        return key.position;
    const detail::LifeGuard guard(*this);
    if (key.isNew)
        ParameterChange::keyframeAdded(*this, key.position, view);
    if (guard.alive())
        ParameterChange::keyframeChangedValue(*this, key.position, view);
    return key.position;
}

template <class T> int Parameter<T>::iAddKeyframe(const Context& context) {
    if (!isKeyframed() || !context.time.isValid())
        return -1;
    const View view = context.view;
    const Time time = context.time;
    const detail::LifeGuard guard(*this);
    const T present = value(context, nullptr);
    PVData* const data = guard.alive() ? targetData(view) : nullptr;
    const Inserted key = data ? insertKeyframe(data, view, time, present) : Inserted{};
    if (!key.isNew)
        return -1;
    ParameterChange::keyframeAdded(*this, key.position, view);
    return key.position;
}

template <class T> int Parameter<T>::iAddKeyframe(const Frame& frame, const AnimationState& state) {
    if (!isKeyframed())
        return 0;
    const detail::LifeGuard guard(*this);
    const Time time = Time::fromUInt(frame.toUInt());
    const std::vector<View> views = state.views();
    int last = -1;
    for (const View view : views) {
        const int added = iAddKeyframe(Context(time, view, AnimationFlags(state.packed())));
        if (added >= 0)
            last = added;
        if (!guard.alive())
            break;
    }
    return last;
}

template <class T> void Parameter<T>::vDeleteKeyframe(const Context::Explicit& context) {
    if (hidesKeyframesOf(context.view))
        return;
    const Context removed(context);
    PVData* const data = targetData(removed.view);
    const int position = data ? detail::positionAt(data->keyframes, removed.time) : -1;
    if (position < 0)
        return;
    {
        LockedKeyframes lock(data);
        KeyframeVector& keyframes = lock.keyframes();
        if (keyframes.size() == 1)
            data->staticValue = keyframes.at(0).value;
        keyframes.remove(position);
        m_revision.countKeyframe();
    }
    ParameterChange::keyframeRemoved(*this, position, removed);
}

template <class T> void Parameter<T>::vDeleteAllKeyframes(const View& view) {
    if (hidesKeyframesOf(view))
        return;
    PVData* const data = targetData(view);
    if (!data || data->keyframes.isEmpty())
        return;
    KeyframeVector removed;
    {
        LockedKeyframes lock(data);
        lock.swapKeyframes(removed);
        ++m_revision;
    }
    // Not the factory: this change does not name the view that was cleared.
    ParameterChange change(ParameterChange::VIEW_CLEARED, *this, 0);
    emitChange(change);
}

template <class T> void Parameter<T>::vReset(const Context& context) {
    const View view = context.view;
    if (!hidesKeyframesOf(view) && keyframeCount(view) > 0) {
        const Context::Explicit exact(context.time, view);
        if (bKeyframeAt(exact))
            vDeleteKeyframe(exact);
        return;
    }
    PVData* const data = targetData(view);
    if (!data)
        return;
    const T reset = defaultValue();
    {
        const LockedKeyframes lock(data);
        data->staticValue = reset;
    }
    ParameterChange::viewReset(*this, view);
}

template <class T> bool Parameter<T>::vSetInterpolation(Interpolation kind, const Context& context) {
    const View view = context.view;
    const Time time = context.time;
    int position = -1;
    const auto find = [&] {
        PVData* const data = hidesKeyframesOf(view) ? nullptr : targetData(view);
        position = data ? detail::positionAt(data->keyframes, time) : -1;
        return position >= 0 ? data : nullptr;
    };
    PVData* data = find();
    if (!data)
        return false;
    IType shaped = data->keyframes.at(position).interpolationData;
    shaped.interpolation = kind;
    if (position + 1 < data->keyframes.size()) {
        // Copies, and the keyframe is found again: the hook may edit.
        const KeyframeData<T> from = data->keyframes.at(position);
        const KeyframeData<T> to = data->keyframes.at(position + 1);
        const detail::LifeGuard guard(*this);
        shaped = initialiseInterpolation(from, to, kind);
        data = guard.alive() ? find() : nullptr;
        if (!data)
            return false;
    }
    {
        LockedKeyframes lock(data);
        lock.keyframes()[position].interpolationData = shaped;
    }
    ParameterChange::keyframeChangedInterpolation(*this, position, view);
    return true;
}

template <class T> void Parameter<T>::vSetInterpolationData(IType itype, unsigned int index, const View& view) {
    const View addressed = view;
    if (hidesKeyframesOf(addressed))
        return;
    PVData* const data = targetData(addressed);
    if (!data || index >= static_cast<unsigned int>(data->keyframes.size()))
        return;
    {
        LockedKeyframes lock(data);
        lock.keyframes()[static_cast<int>(index)].interpolationData = itype;
    }
    ParameterChange::keyframeChangedInterpolation(*this, static_cast<int>(index), addressed);
}

template <class T> void Parameter<T>::vSetExtrapolationBefore(Extrapolation kind) {
    if (!isKeyframed())
        return;
    m_extrapolationBefore.store(kind);
    ParameterChange::changedExtrapolationBefore(*this);
}

template <class T> void Parameter<T>::vSetExtrapolationAfter(Extrapolation kind) {
    if (!isKeyframed())
        return;
    m_extrapolationAfter.store(kind);
    ParameterChange::changedExtrapolationAfter(*this);
}

template <class T> void Parameter<T>::retimeKeyframes(const boost::function<Time(Time)>& mapping) {
    if (!isKeyframed())
        return;
    const boost::function<Time(Time)> map = mapping; // NOLINT(performance-unnecessary-copy-initialization)
    const detail::LifeGuard guard(*this);
    const std::vector<View> views = viewList();
    for (const View view : views) {
        const PVData* const shown = m_views.findRealViewData(view);
        if (!shown)
            continue;
        const KeyframeVector list = shown->keyframes;
        KeyframeVector changed = detail::retimed(list, map);
        PVData* const data = guard.alive() ? m_views.findRealViewData(view) : nullptr;
        if (!guard.alive())
            return;
        // The mapping may have edited this very list.
        if (!data || data->keyframes.constData() != list.constData())
            continue;
        LockedKeyframes lock(data);
        lock.swapKeyframes(changed);
        ++m_revision;
        ++m_changes;
    }
}

template <class T> void Parameter<T>::adjustKeyframesTime(const boost::function<Time(Time)>& mapping) {
    if (!isKeyframed())
        return;
    // The mapping may throw itself away. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const boost::function<Time(Time)> map = mapping;
    const detail::LifeGuard guard(*this);
    const std::vector<View> views = viewList();
    for (const View view : views) {
        const PVData* const shown = m_views.findRealViewData(view);
        if (!shown || shown->keyframes.isEmpty())
            continue;
        const KeyframeVector list = shown->keyframes;
        std::vector<Time> mapped;
        mapped.reserve(static_cast<std::size_t>(list.size()));
        std::exception_ptr failure;
        for (auto keyframe = list.begin(); keyframe != list.end() && guard.alive() && !failure; ++keyframe) {
            try {
                mapped.push_back(map(keyframe->time));
            } catch (...) {
                failure = std::current_exception();
            }
        }
        // The mapping may have edited this very list, or removed it.
        PVData* const data = guard.alive() ? m_views.findRealViewData(view) : nullptr;
        if (data) {
            LockedKeyframes lock(data);
            KeyframeVector& keyframes = lock.keyframes();
            const int count = std::min(static_cast<int>(mapped.size()), keyframes.size());
            for (int i = 0; i < count; ++i)
                keyframes[i].time = mapped[static_cast<std::size_t>(i)];
            ++m_revision;
            ++m_changes;
        }
        if (failure)
            std::rethrow_exception(failure);
        if (!guard.alive())
            return;
    }
}

} // namespace Prm

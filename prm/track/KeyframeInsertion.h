#pragma once

#include "prm/track/CurveShapes.h"
#include "prm/track/KeyframeSearch.h"

#include <QVector>

namespace Prm::detail {

/// Puts a keyframe behind the last one, which must be before it, as `insertKeyframe` does for curves that shape their
/// segments by `initialShape`. Nothing is built elsewhere and copied.
template <class T>
PRM_ALWAYS_INLINE int appendKeyframe(QVector<KeyframeData<T>>& keyframes, Time time, const T& value) {
    const int position = keyframes.size();
    keyframes.append(keyframes.constLast());
    KeyframeData<T>* const added = keyframes.data() + position;
    added->time = time;
    added->value = value;
    IType& former = added[-1].interpolationData;
    added->interpolationData = IType(former.interpolation);
    former = initialShape(former, former.interpolation);
    return position;
}

/// Puts a keyframe in its place and answers the position. It takes over the interpolation of the keyframe before it
/// (`first` when there is none), shaped by `initialise(from, to, kind)` when one follows. Appending shapes the former
/// last keyframe anew, except while text is read, whose keyframes bring their own shapes. No other keyframe is touched;
/// an exception changes nothing.
template <class T, class Initialise>
int insertKeyframe(QVector<KeyframeData<T>>& keyframes, KeyframeData<T> added, Interpolation first, bool readingIn,
                   const Initialise& initialise) {
    const int count = keyframes.size();
    const int position = lowerBound(keyframes, added.time);
    const Interpolation inherited = position > 0 ? keyframes.at(position - 1).interpolationData.interpolation : first;
    if (position == count && count > 0 && !readingIn) {
        added.interpolationData = IType(inherited);
        const IType shaped = initialise(keyframes.at(count - 1), added, inherited);
        keyframes.append(added);
        keyframes[count - 1].interpolationData = shaped;
        return position;
    }
    added.interpolationData =
        position < count ? initialise(added, keyframes.at(position), inherited) : IType(inherited);
    keyframes.insert(position, added);
    return position;
}

} // namespace Prm::detail

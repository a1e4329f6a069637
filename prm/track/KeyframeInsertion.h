#pragma once

#include "prm/track/CurveShapes.h"
#include "prm/track/KeyframeSearch.h"

#include <QVector>

namespace Prm::detail {

/// Where a keyframe is inserted, and the segment that gets a shape with it. The keyframe takes over the interpolation
/// of the one before it (`first` when there is none), shaped when one follows. Appending shapes the former last
/// keyframe anew, except while text is read, whose keyframes bring their own shapes. No other keyframe is touched.
struct InsertionPlace {
    template <class T>
    InsertionPlace(const QVector<KeyframeData<T>>& keyframes, Time time, Interpolation first, bool readingIn)
        : position(lowerBound(keyframes, time)), kind(first) {
        const bool appends = position == keyframes.size();
        isTaken = !appends && keyframes.at(position).time == time;
        if (position > 0)
            kind = keyframes.at(position - 1).interpolationData.interpolation;
        if (!appends || !readingIn)
            shaped = appends ? position - 1 : position;
    }

    int position;
    /// The position of the segment once the keyframe is inserted, or -1.
    int shaped = -1;
    Interpolation kind;
    /// Whether a keyframe lies at the time.
    bool isTaken;
};

/// Inserts the keyframe, and gives the segment the shape that `shapeOf` returns for its ends. The list is as it was
/// where copying a keyframe throws.
template <class T, class ShapeOf>
void insertAt(const InsertionPlace& place, QVector<KeyframeData<T>>& keyframes, const KeyframeData<T>& added,
              const ShapeOf& shapeOf) {
    if (place.position == keyframes.size())
        keyframes.append(added);
    else
        keyframes.insert(place.position, added);
    if (place.shaped < 0)
        return;
    KeyframeData<T>* const segment = keyframes.data() + place.shaped;
    const IType shape = shapeOf(segment[0], segment[1]);
    if (segment->interpolationData != shape)
        segment->interpolationData = shape;
}

} // namespace Prm::detail

#pragma once

#include "prm/track/CurveShapes.h"
#include "prm/track/KeyframeSearch.h"

#include <QVector>

namespace Prm::detail {

/// A keyframe to be inserted, and the segment that gets a shape with it. The keyframe takes over the interpolation of
/// the one before it (`first` when there is none), shaped when one follows. Appending shapes the former last keyframe
/// anew, except while text is read, whose keyframes bring their own shapes. No other keyframe is touched.
///
/// A hook of the host's makes the shape, from copies, before the list is changed, and may edit the list. So
/// `insertInto` finds the place again, and uses the shape only where the segment still has the same ends.
template <class T> class KeyframeInsertion {
public:
    KeyframeInsertion(const QVector<KeyframeData<T>>& keyframes, Time time, const T& value, Interpolation first,
                      bool readingIn)
        : m_added(time, value) {
        const int position = lowerBound(keyframes, time);
        const bool appends = position == keyframes.size();
        m_added.interpolationData.interpolation =
            position > 0 ? keyframes.at(position - 1).interpolationData.interpolation : first;
        m_shapesFormer = appends && position > 0 && !readingIn;
        m_shapesAdded = !appends;
        if (shapesSegment())
            m_neighbour = keyframes.at(appends ? position - 1 : position);
    }

    bool shapesSegment() const { return m_shapesFormer || m_shapesAdded; }
    template <class Initialise> void shape(const Initialise& initialise) {
        const KeyframeData<T> from = m_shapesFormer ? m_neighbour : m_added;
        const KeyframeData<T> to = m_shapesFormer ? m_added : m_neighbour;
        m_shape = initialise(from, to, m_added.interpolationData.interpolation);
    }

    /// The position, or -1 where there is a keyframe at that time. An exception changes nothing.
    int insertInto(QVector<KeyframeData<T>>& keyframes) {
        const int position = lowerBound(keyframes, m_added.time);
        if (position < keyframes.size()) {
            const Time next = keyframes.at(position).time;
            if (next == m_added.time)
                return -1;
            if (m_shapesAdded && next == m_neighbour.time)
                m_added.interpolationData = m_shape;
            keyframes.insert(position, m_added);
        } else {
            keyframes.append(m_added);
            if (m_shapesFormer && position > 0 && keyframes.at(position - 1).time == m_neighbour.time)
                keyframes[position - 1].interpolationData = m_shape;
        }
        return position;
    }

private:
    KeyframeData<T> m_added;
    /// The other end of the segment that is shaped.
    KeyframeData<T> m_neighbour;
    IType m_shape;
    bool m_shapesFormer = false;
    bool m_shapesAdded = false;
};

} // namespace Prm::detail

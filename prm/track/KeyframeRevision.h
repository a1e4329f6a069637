#pragma once

#include "prm/Export.h"

#include <QtGlobal>

namespace Prm::detail {

/// Where a new parameter begins to count: a number without any relation to those of others, so that equal sums of
/// revisions come from equal parameters.
PRM_EXPORT quint64 firstKeyframeRevision();

/// A parameter's count of the changes of its keyframes' times and views.
class KeyframeRevision {
public:
    /// What one keyframe that came or went adds. Few of these steps and few of any others never add up to the same.
    static constexpr quint64 oneKeyframe = 0x9E3779B97F4A7C15u;

    operator quint64() const { return m_number; }
    /// Counts any change.
    void operator++() { ++m_number; }
    /// Counts a change of the library's own by which one view's data gain or lose one keyframe at most.
    void countKeyframe() { m_number += oneKeyframe; }

private:
    quint64 m_number = firstKeyframeRevision();
};

} // namespace Prm::detail

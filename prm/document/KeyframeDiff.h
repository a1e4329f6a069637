#pragma once

#include "prm/Export.h"
#include "prm/document/FileValue.h"

#include <utility>
#include <vector>

namespace Prm::document {

/// What became of the keyframes of a view, as pairs of their places before and after. Keyframes that did not change are
/// left out.
struct KeyframeDiff {
    /// Gone at one time and new at another, with the same value and curve.
    std::vector<std::pair<int, int>> moved;
    /// At the same time, with another value or curve.
    std::vector<std::pair<int, int>> changed;
    std::vector<int> removed;
    std::vector<int> added;

    std::size_t size() const { return moved.size() + changed.size() + removed.size() + added.size(); }
};

/// The shorter of two readings: one that holds on to the times of keyframes, and one that holds on to their values, so
/// that a curve moved as a whole has only moved. Both lists are in ascending order of time; values are compared as
/// texts.
PRM_EXPORT KeyframeDiff compareKeyframes(const std::vector<FileKeyframe>& from, const std::vector<FileKeyframe>& to);

} // namespace Prm::document

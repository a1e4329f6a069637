#pragma once

#include "tool/ParameterState.h"

#include <utility>
#include <vector>

namespace Tool {

/// What became of the keyframes of a view, as pairs of their places before and after; -1 where there is none. Keyframes
/// that did not change are left out.
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
/// that a curve moved as a whole has only moved. Both lists are in ascending order of time.
KeyframeDiff compareKeyframes(const std::vector<ParameterState::Keyframe>& from,
                              const std::vector<ParameterState::Keyframe>& to);

} // namespace Tool

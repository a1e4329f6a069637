#pragma once

#include "prm/document/FileValue.h"
#include "prm/merge/Resolver.h"

#include <map>

namespace Prm::document {

using FileKeyframes = std::vector<FileKeyframe>;

/// The keyframes of a view on one side: as they are written, and in the same order with values that are equal when they
/// mean the same.
struct MergedSide {
    const FileKeyframes& written;
    const FileKeyframes& normal;
};

/// For lines of keyframes, the line in which the time is written, where that is another one.
using TimeLines = std::map<int, int>;

/// What both sides have made of the keyframes of a base. A keyframe is the same on both sides when it comes from the
/// same one of the base, as `compareKeyframes` pairs them; its time, its value and its curve are decided separately.
/// Between two keyframes that are still there, as many removed as added ones are paired too, in their order: they have
/// moved and changed. Where two keyframes arrive at one time, the one stays that is there on the side that is kept, and
/// the other one stays or goes back to where that side has it.
///
/// The result has the line of the keyframe that gives the curve. `place` says path and view.
FileKeyframes mergeKeyframes(const FileKeyframes& base, const MergedSide& ours, const MergedSide& theirs,
                             Resolver& resolver, const Resolver::Subject& place, TimeLines& timeLines);

} // namespace Prm::document

#pragma once

#include "tool/merge/Judge.h"

#include <QByteArray>

namespace Tool {

struct Merge {
    /// Always a project text, in which ours stands where there is a conflict.
    QByteArray text;
    std::vector<Conflict> conflicts;
};

/// What both sides have made of a project text. Each field of a keyframe, each view, setting, parameter and name, and
/// each line of which nothing is known, is taken from the side that has changed it. The header is that of ours, with
/// the later time of writing. Groups that a side has moved or renamed are followed.
///
/// A text may be empty, which is one without parameters. Throws `Problem` for more levels, masters or text than the
/// tool takes.
Merge merge(
    const QByteArray& base, const QByteArray& ours, const QByteArray& theirs,
    const Settlement& settlement = [](const QString&) { return std::nullopt; });

} // namespace Tool

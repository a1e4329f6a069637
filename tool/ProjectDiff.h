#pragma once

#include "tool/ProjectText.h"

#include <QString>
#include <QVariant>

#include <vector>

namespace Tool {

/// One thing that two project texts do not say alike.
struct Difference {
    /// Of the parameter or group; empty for what belongs to the whole file.
    QString path;
    /// Null for what is the same in all views.
    QVariant view;
    /// "key", "key value", "key interpolation", "value", "view", "parameter", "group", "name", "hidden", "master",
    /// "before", "after", "header", "line".
    QString what;
    /// "added", "removed", "moved", "changed".
    QString change;
    /// That of the keyframe, in the first text if it is there.
    QVariant frame;
    QVariant from;
    QVariant to;
    /// All of it, in a line for people.
    QString message;
};

/// What leads from one text to the other: the header, then groups and parameters in the order of the first text, then
/// those that only the second one has, then lines that belong to nothing. Takes about linear time.
std::vector<Difference> differences(const ProjectText& from, const ProjectText& to);

/// Their messages, a line each.
QByteArray plainText(const std::vector<Difference>& differences);

/// What the bytes of texts that say the same differ in, for people; empty for equal bytes.
QString differenceInBytes(const ProjectText& from, const ProjectText& to);

} // namespace Tool

#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <vector>

namespace Prm {

/// One thing that two project texts do not say alike.
///
/// \snippet reading_any_project.cpp differences
/// \threads A plain value.
struct ProjectDifference {
    /// Of the parameter or group; the name of a field of the header; empty for a line that belongs to none.
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

/// What leads from one project text to the other, in words of parameters, views and keyframes: the header, then groups
/// and parameters in the order of the first text, then those that only the second one has, then lines that belong to
/// nothing. Values are compared as what they mean, so `5` and `5.0` are the same. A text may be empty. Takes about
/// linear time.
///
/// Throws `std::runtime_error` for markers of a conflict, and for texts that make more than 2^27 characters of
/// messages.
///
/// \snippet reading_any_project.cpp differences
/// \threads Any.
PRM_EXPORT std::vector<ProjectDifference> projectDifferences(const QByteArray& from, const QByteArray& to);

} // namespace Prm

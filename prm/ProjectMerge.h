#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace Prm {

/// Which of two texts.
enum class MergeSide { Ours, Theirs };

/// One thing that both sides have changed, each in another way.
///
/// \snippet reading_any_project.cpp merge
/// \threads A plain value.
struct ProjectConflict {
    /// Of the parameter or group, or what stands before "=" in a line that belongs to none.
    QString path;
    /// Null for what is the same in all views.
    QVariant view;
    /// "time", "value", "interpolation", "keyframe", "view", "parameter", "group", "name", "hidden", "master",
    /// "before", "after", "line".
    QString what;
    /// That of the keyframe, in the base if it is there.
    QVariant frame;
    /// Null where a side has none.
    QVariant base;
    QVariant ours;
    QVariant theirs;
    /// All of it, in a line for people.
    QString message;
};

/// The side that counts for the path of a parameter or group, where that is settled. May be empty.
using MergeSettlement = std::function<std::optional<MergeSide>(const QString& path)>;

/// What three texts came to.
///
/// \snippet reading_any_project.cpp merge
/// \threads A plain value.
struct MergedProject {
    /// Always a project text, in which ours is kept where there is a conflict.
    QByteArray text;
    std::vector<ProjectConflict> conflicts;
};

/// What both sides have made of a project text. Each field of a keyframe, each view, setting, parameter and name, and
/// each line of which nothing is known, is taken from the side that has changed it. The header is that of ours, with
/// the later time of writing. Groups that a side has moved or renamed are followed. A master that the other side has
/// deleted, and masters that lead in a circle on neither side alone, are conflicts.
///
/// A text may be empty, which is one without parameters. Throws `std::runtime_error`, with a message for the user, for
/// texts with markers of a conflict, for a newer version of the format, and for paths of more than 1 000 names or
/// messages of more than 2^27 characters.
///
/// \snippet reading_any_project.cpp merge
/// \threads Any.
PRM_EXPORT MergedProject mergeProjects(const QByteArray& base, const QByteArray& ours, const QByteArray& theirs,
                                       const MergeSettlement& settlement = {});

} // namespace Prm

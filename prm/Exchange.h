#pragma once

#include "prm/Export.h"
#include "prm/Time.h"
#include "prm/View.h"

#include <QByteArray>
#include <QSize>
#include <QStringList>
#include <QVector>

namespace Prm {

/// What an animation or a table came to as project text.
///
/// \snippet reading_any_project.cpp import
/// \threads A plain value.
struct ImportedText {
    QByteArray text;
    /// What is not as the source has it, a line each.
    QStringList losses;
};

/// A Lottie animation (JSON) as project text, with the same handles. Times are frames of the animation.
///
/// Throws `std::runtime_error`, with a message that begins with the place: "3:17: ..." by line and column, counted from
/// 1, or a path in the JSON.
///
/// \threads Any.
PRM_EXPORT ImportedText importAnimation(const QByteArray& json);

/// A table of comma-separated values as project text: the first column gives the time, in frames or, with frames per
/// second, in seconds, as its heading says; each other one the values of a parameter at these times, "path" or
/// "path@view". Numbers and points become linear keyframes, texts and switches constant ones.
///
/// Throws `std::runtime_error`, with a message that begins with the line.
///
/// \snippet reading_any_project.cpp import
/// \threads Any.
PRM_EXPORT ImportedText importTable(const QByteArray& table, double framesPerSecond = 0);

/// What to export, and how.
///
/// \snippet reading_any_project.cpp export
/// \threads A plain value.
struct ExportOptions {
    /// Paths of parameters or groups, or shell patterns; all parameters without one.
    QStringList patterns;
    /// What values are (see `guessedSets`).
    QStringList rules;
    /// For what holds one view. A parameter without data in it is written as the first view with data.
    View view;
    /// For what counts in seconds.
    double framesPerSecond = 0;
    /// For tables; all whole frames from the first keyframe to the last if empty.
    QVector<Time> times;
    /// Of the picture, for animations.
    QSize size{512, 512};
};

/// A project text in another form.
///
/// \snippet reading_any_project.cpp export
/// \threads A plain value.
struct ExportedText {
    QByteArray text;
    /// What the form does not hold, a line each.
    QStringList losses;
};

/// The values of parameters as comma-separated values: a row for each frame, a column for each parameter and each
/// further view that has data. Masters are followed.
///
/// It does not hold curves between the frames, kinds of extrapolation, masters, names of groups and hidden. Throws
/// `std::runtime_error` for more than 10 000 000 values, and for a pattern that names nothing.
///
/// \threads Any.
PRM_EXPORT ExportedText exportTable(const QByteArray& project, const ExportOptions& options = {});

/// Parameters as a style sheet (CSS), each as an animation of a custom property, with the same easing. Needs the frames
/// per second.
///
/// It holds one view, the values that masters give, and constant extrapolation. Custom segments become straight; texts
/// are left out. Throws `std::runtime_error` as `exportTable` does, and for frames per second that are not above 0.
///
/// \snippet reading_any_project.cpp export
/// \threads Any.
PRM_EXPORT ExportedText exportStyleSheet(const QByteArray& project, const ExportOptions& options);

/// Parameters as a Lottie animation (JSON), with the same handles: the inverse of `importAnimation`. Frames per second
/// are needed where no layer of the text has a `frame_rate`. Other groups than layers become layers without a picture:
/// what they have of a transform is theirs, the rest becomes sliders and other controls.
///
/// It holds one view, the values that masters give, and constant extrapolation. Custom segments become straight; texts,
/// and values that are not finite, are left out. Throws `std::runtime_error` as `exportTable` does.
///
/// \snippet reading_any_project.cpp export
/// \threads Any.
PRM_EXPORT ExportedText exportAnimation(const QByteArray& project, const ExportOptions& options = {});

} // namespace Prm

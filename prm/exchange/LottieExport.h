#pragma once

#include "prm/document/Document.h"

#include <QByteArray>
#include <QSize>
#include <QStringList>

namespace Prm::document {

/// How an animation file is written.
struct LottieOptions {
    View view;
    /// Of layers that do not say it; 0 for none.
    double framesPerSecond = 0;
    QSize size;
};

/// Parameters as a Lottie file (JSON animation).
struct LottieExport {
    QByteArray text;
    /// What the file does not hold, one line for each parameter.
    QStringList losses;
    /// What else to know of them.
    std::vector<Evaluability> notes;
    /// How many paths, gradients, texts, pictures and sounds are empty or made up, because project text has not them.
    int madeUp = 0;
    /// Whether the values of all of them are of a known type.
    bool isComplete = true;
};

/// The inverse of `importAnimation`: groups that are laid out as an import lays out layers, compositions, transforms,
/// shapes and effects become these again, and importing the file gives the same text.
///
/// Another group with parameters becomes a layer without a picture, called like its path. Its position, anchor_point,
/// scale, rotation, opacity, skew and skew_axis are those of the layer; each other parameter becomes an effect of its
/// name, with a slider, a point, a colour or a checkbox. Values are written as they are.
///
/// Throws `Problem` where no layer says how many frames there are in a second, and the options do not.
PRM_EXPORT LottieExport exportLottie(Document& document, const std::vector<int>& nodes, const LottieOptions& options);

} // namespace Prm::document

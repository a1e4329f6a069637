#pragma once

#include "prm/document/Document.h"

#include <QByteArray>
#include <QStringList>

namespace Prm::document {

/// Parameters as a style sheet.
struct StyleSheet {
    QByteArray text;
    /// What a style sheet does not hold, one line for each parameter.
    QStringList losses;
    /// What else to know of them.
    std::vector<Evaluability> notes;
    /// Whether the values of all of them are of a known type.
    bool isComplete = true;
};

/// A style sheet with a class for each parameter. The class animates a custom property of the parameter's name, or, for
/// points, two with "-x" and "-y"; names are paths with "-" for what a name in a style sheet cannot have. The easing of
/// a segment is `cubic-bezier` with the same numbers, and `steps` where a value is held.
///
/// It holds one view, the values that masters give, and constant extrapolation. Custom segments become straight, other
/// extrapolation constant; texts are left out.
PRM_EXPORT StyleSheet styleSheet(Document& document, const std::vector<int>& nodes, View view, double framesPerSecond);

} // namespace Prm::document

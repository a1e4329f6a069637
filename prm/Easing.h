#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"

#include <QString>

#include <vector>

namespace Prm {

/// A named course of a segment from one keyframe to the next, in one part or, for bounces and springs, in several with
/// keyframes between them. `docs/editing.md` lists all with their sources and errors.
///
/// \snippet reshaping.cpp ease
/// \threads A plain value.
struct PRM_EXPORT Easing {
    /// One part of a course: where it ends, as fractions of the segment's time and of its change in value, and its
    /// interpolation.
    struct Part {
        double time;
        double change;
        IType shape;
    };

    /// All that have a name, in the order of the document.
    static const std::vector<Easing>& presets();
    /// The one of that name, without regard to case, hyphens, underscores and blanks: "sine-in-out" is also
    /// "easeInOutSine". Null if there is none.
    static const Easing* find(const QString& name);
    /// One part of this shape, without a name.
    static Easing ofShape(const IType& shape) { return {QString(), {{1.0, 1.0, shape}}}; }

    QString name;
    /// In ascending order of time; the last one ends at 1 and 1.
    std::vector<Part> parts;
};

} // namespace Prm

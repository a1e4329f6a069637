#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/KeyframeHandles.h"

#include <optional>
#include <vector>

namespace Prm {

namespace detail {

/// A segment as one component of its values sees it, whose handles are read and set as points. A handle is a part of
/// the change in value: between equal values it has no height, and the segment needs a keyframe at its extremum for
/// one.
class PRM_EXPORT HandleCurve {
public:
    struct End {
        double time;
        double value;
    };
    /// A keyframe at the start or within, and the shape of the piece that starts there.
    struct Piece {
        double time = 0.0;
        double value = 0.0;
        IType shape;
    };

    HandleCurve(End start, End end, const IType& shape);

    double duration() const { return m_end.time - m_start.time; }
    /// False where the segment holds its value or is of a custom kind.
    bool hasHandles() const { return m_hasHandles; }
    /// The handle at the start, and the one at the end.
    std::optional<HandlePoint> out() const;
    std::optional<HandlePoint> in() const;
    /// Times outside the segment are held to it.
    void setOut(HandlePoint point);
    void setIn(HandlePoint point);
    /// As parts of the segment's time and change.
    void setOutPart(double x, double y);
    void setInPart(double x, double y);

    bool isChanged() const { return m_isChanged; }
    /// Whether a shape says it. Otherwise pieces do, of which two meet at the extremum. Only one handle may have been
    /// set.
    bool isShape() const;
    const IType& shape() const { return m_shape; }
    std::vector<Piece> pieces() const;

private:
    double change() const { return m_end.value - m_start.value; }
    bool isBetweenEqualValues() const { return m_start.value == m_end.value; }
    double valueAt(double part) const;

    End m_start;
    End m_end;
    IType m_shape;
    bool m_hasHandles;
    bool m_isChanged = false;
    /// Of the handles from the ends, between equal values.
    double m_outHeight = 0.0;
    double m_inHeight = 0.0;
};

} // namespace detail

} // namespace Prm

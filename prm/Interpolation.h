#pragma once

#include "prm/Export.h"

#include <QMetaType>
#include <QString>

namespace Prm {

/// How values are interpolated from one keyframe to the next. Custom kinds count up from `Custom0`. 0 has no name and
/// is written as "Constant".
enum class Interpolation : quint32 { Constant = 1, Linear = 2, Bezier = 3, Custom0 = 4 };

/// How values continue before the first and after the last keyframe. Custom kinds count up from `Custom0`. 0 has no
/// name and is written as "Constant".
enum class Extrapolation : quint32 { Constant = 1, Linear = 2, Custom0 = 3 };

/// The interpolation of one keyframe: the kind of the segment that starts there, and its four shape numbers.
///
/// For `Bezier` they are the inner control points (x1,y1) and (x2,y2) of a cubic Bezier curve from (0,0) to (1,1): x is
/// the fraction of the segment's time, y the fraction of its change in value. Four zeros mean a straight line.
///
/// \snippet bezier_number.cpp shape
/// \threads A plain value.
struct IType {
    IType() = default;
    IType(Interpolation kind, double shapeX1 = 0.0, double shapeY1 = 0.0, double shapeX2 = 0.0, double shapeY2 = 0.0)
        : interpolation(kind), x1(shapeX1), y1(shapeY1), x2(shapeX2), y2(shapeY2) {}

    Interpolation interpolation{};
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
};

inline bool operator==(const IType& a, const IType& b) {
    return a.interpolation == b.interpolation && a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2;
}
inline bool operator!=(const IType& a, const IType& b) {
    return !(a == b);
}

/// The name in project text: "Linear", "Bezier", "Custom0", and "Constant" for every other value. Only the first
/// custom kind has a written name.
PRM_EXPORT QString qstrInterpolationTypeString(Interpolation kind);
/// The name in project text: "Linear", "Custom0", and "Constant" for every other value.
PRM_EXPORT QString qstrExtrapolationTypeString(Extrapolation kind);

/// Reads a name, case-sensitively: "Constant", "Linear", "Bezier", or a text that contains "Custom", which is the
/// custom kind with the number between the first and the second "Custom" (0 if there is no number, or if it is too
/// large). For any other text returns false and does not change `kind`.
PRM_EXPORT bool bStringToInterpolationType(const QString& name, Interpolation& kind);
/// As `bStringToInterpolationType`, without "Bezier".
PRM_EXPORT bool bStringToExtrapolationType(const QString& name, Extrapolation& kind);

} // namespace Prm

Q_DECLARE_METATYPE(Prm::Interpolation)
Q_DECLARE_METATYPE(Prm::Extrapolation)
Q_DECLARE_TYPEINFO(Prm::IType, Q_MOVABLE_TYPE);

#pragma once

#include "prm/Export.h"

class QPoint;
class QPointF;
class QTextStream;

namespace Prm {

// The text of plain values, for types that Qt's text streams lack or write otherwise (`Frame` has its own, in
// prm/Time.h). The stream's settings (base, notation, precision, locale, field width) are neither used nor changed.
// Text without a number reads as 0.

/// The integer 1 or 0; every other integer reads as true.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, bool value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, bool& value);

/// An unsigned decimal number; of a larger one the low 8 bits are read.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, unsigned char value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, unsigned char& value);

/// x, then y, with nothing between them: to read them back, write a blank between them.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, const QPoint& value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, QPoint& value);

/// The same, each number as the shortest text that reads back as that number.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, const QPointF& value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, QPointF& value);

} // namespace Prm

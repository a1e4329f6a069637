#pragma once

#include "prm/Export.h"

class QPoint;
class QPointF;
class QTextStream;

namespace Prm {

// The text of plain values, for types that Qt's text streams lack or write otherwise (`Frame` has its own, in
// prm/Time.h). What the stream's owner has set (base, notation, precision, locale, field width) neither counts nor
// changes. Text that holds no number reads as 0.

/// The integer 1 or 0; every other integer reads as true.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, bool value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, bool& value);

/// An unsigned decimal number; of a larger one the low 8 bits are read.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, unsigned char value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, unsigned char& value);

/// x, then y. Nothing is written between them: who wants to read them back writes a blank of his own.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, const QPoint& value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, QPoint& value);

/// The same, each number as the shortest text that reads back as that number.
PRM_EXPORT QTextStream& operator<<(QTextStream& stream, const QPointF& value);
PRM_EXPORT QTextStream& operator>>(QTextStream& stream, QPointF& value);

} // namespace Prm

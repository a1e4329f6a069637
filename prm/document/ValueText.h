#pragma once

#include "prm/Export.h"

#include <QVariant>

namespace Prm::document {

/// A value in shortest exact form: numbers that read back the same, points as two numbers, switches as 0 or 1, lists
/// with commas. Text is given as it is.
PRM_EXPORT QString plainText(const QVariant& value);

/// A time as a file has it: the decimal in shortest form where the number is one in single precision, 0.1 for what is
/// near it.
PRM_EXPORT double decimalFrame(double time);
/// The same as a text, for people.
inline QString frameText(double time) {
    return plainText(decimalFrame(time));
}

/// The text, null where it is empty.
inline QVariant orNull(const QString& text) {
    return text.isEmpty() ? QVariant() : QVariant(text);
}

} // namespace Prm::document

#pragma once

#include "prm/Export.h"

#include <QString>
#include <QStringView>

namespace Prm::detail {

// Numbers in project text, as Qt writes and reads them in the C locale, in less time.

/// Appends `QString::number(number, 'g', 6)`.
PRM_EXPORT void addSixDigits(QString& text, double number);

/// Room enough for any number.
constexpr int longestNumber = 40;

/// The same at the place, which has that room; the end of it.
PRM_EXPORT char* addSixDigits(char* next, double number);

/// Appends `QString::number(number, 'g', QLocale::FloatingPointShortest)`.
PRM_EXPORT void addShortest(QString& text, double number);

/// What `QString::toDouble` makes of the text.
PRM_EXPORT double toDouble(QStringView text, bool* isNumber = nullptr);

/// What `QString::toFloat` makes of the text.
PRM_EXPORT float toFloat(QStringView text, bool* isNumber = nullptr);

} // namespace Prm::detail

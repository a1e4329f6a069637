#pragma once

#include "prm/Time.h"
#include "prm/View.h"

#include <QString>
#include <QVector>

#include <utility>

namespace Tool {

/// The times that a user names: "A..B", "A..BxS" and single frames, separated by commas; numbers may be negative and
/// fractional. Throws `WrongUse`.
QVector<Prm::Time> readFrames(const QString& text);

/// The same from a file, one or more to a line. Throws `Problem`.
QVector<Prm::Time> readTimesFile(const QString& file);

/// "A..B" alone, with A before B. Throws `WrongUse`.
std::pair<Prm::Time, Prm::Time> readRange(const QString& text);

/// The number of a view. Throws `WrongUse`.
Prm::View readView(const QString& text);

} // namespace Tool

#pragma once

#include "prm/Time.h"

#include <QString>
#include <QVector>

namespace Tool {

/// The times that a user names: "A..B", "A..BxS" and single frames, separated by commas; numbers may be negative and
/// fractional. Throws `WrongUse`.
QVector<Prm::Time> readFrames(const QString& text);

/// The same from the text of a file, one or more to a line.
QVector<Prm::Time> readTimesFile(const QByteArray& text);

} // namespace Tool

#pragma once

#include "prm/Time.h"
#include "prm/View.h"
#include "tool/Arguments.h"

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

/// Whether a keyframe can be there.
bool isFrame(Prm::Time time);

/// The number that a file has for a time, in its shortest form: 0.1, although single precision has only what is near.
double writtenFrame(Prm::Time time);

/// For adding and subtracting times of a file: the number that the file has, in double precision, and back. A time that
/// no file has stays.
Prm::Time decimalTime(Prm::Time time);
Prm::Time fileTime(Prm::Time decimal);

// What an option says, otherwise the last argument. They throw `WrongUse`.

double numberOption(const Arguments& arguments, const QString& option, double otherwise = 0);
Prm::Time timeOption(const Arguments& arguments, const QString& option, Prm::Time otherwise = Prm::Time());
/// Of a keyframe: what a file with this number has, which single precision rounds.
Prm::Time keyframeOption(const Arguments& arguments, const QString& option, Prm::Time otherwise = Prm::Time());
Prm::View viewOption(const Arguments& arguments, Prm::View otherwise = Prm::View());

} // namespace Tool

#pragma once

#include "tool/Budget.h"

#include <QByteArray>

namespace Tool {

/// The whole file, or standard input for "-". Throws `Problem` with one line that names the file, also for one that has
/// more than `most` bytes, or the markers of a merge conflict.
QByteArray readInput(const QString& name, qint64 most = Most::bytesOfInput);

/// A file as messages name it.
QString inputName(const QString& file);

/// Writes to standard output. Throws `Problem` if that does not accept all of it, such as a pipe without a reader.
void print(const QByteArray& text);
/// Writes a file, which is in its place as a whole or not at all; "-" is standard output. Throws `Problem`.
void writeOutput(const QString& name, const QByteArray& bytes);
/// The text with a mark in place of all that is not to be seen, and could end a line or command a terminal.
QString printable(QString text);
/// Lines on standard error.
void report(const QString& lines);
/// One line on standard error, with the name of the program.
template <class... Parts> void tell(const char* pattern, const Parts&... parts) {
    report("prm: " + message(pattern, parts...));
}

} // namespace Tool

#pragma once

#include <QByteArray>
#include <QString>

namespace Tool {

/// The whole file, or standard input for "-". Throws `Problem` with one line that names the file.
QByteArray readInput(const QString& name);

/// Writes to standard output. Throws `Problem` when that does not take it all, such as a pipe that nobody reads.
void print(const QByteArray& text);
/// Writes a file, which is in its place as a whole or not at all; "-" is standard output. Throws `Problem`.
void writeOutput(const QString& name, const QByteArray& bytes);
/// The text with a mark in place of all that is not to be seen, and could end a line or command a terminal.
QString printable(QString text);
/// One line on standard error.
void tell(const QString& message);

} // namespace Tool

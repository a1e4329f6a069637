#pragma once

#include "prm/document/Budget.h"
#include "tool/Problem.h"

#include <QByteArray>

#include <cstdio>

namespace Tool {

/// The whole file, or standard input for "-". Throws `Problem` with one line that names the file, also for one that has
/// more than `most` bytes, or the markers of a merge conflict.
QByteArray readInput(const QString& name, qint64 most = Most::bytesOfInput);

/// A file as messages name it.
QString inputName(const QString& file);

/// Standard output that does not accept what is written, such as a pipe without a reader.
class OutputProblem : public Problem {
public:
    using Problem::Problem;
};

/// Writes to standard output. Throws `OutputProblem`.
void print(const QByteArray& text);
/// Writes a file, which is in its place as a whole or not at all; "-" is standard output. Throws `Problem`.
void writeOutput(const QString& name, const QByteArray& bytes);
/// The text with a mark in place of all that is not to be seen, and could end a line or command a terminal.
QString printable(QString text);
/// Whether the user of this terminal, if it is one, wants colours (https://no-color.org).
bool hasColours(std::FILE* stream);

// --- standard error --------------------------------------------------------------------------------------------------

/// From now on, errors alone are written, no remarks and no progress.
void beQuiet();
/// Remarks, a line each.
void report(const QString& lines);
/// A remark in one line, with the name of the program.
template <class... Parts> void tell(const char* pattern, const Parts&... parts) {
    report("prm: " + message(pattern, parts...));
}
/// Why the program, or its work on one file, ends with `Unusable`.
void tellError(const QString& text);

} // namespace Tool

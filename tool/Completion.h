#pragma once

#include "tool/Syntax.h"

#include <QByteArray>

namespace Tool {

/// How the last word was typed so far.
struct TypedEnd {
    /// The beginning that the shell keeps; what is offered is written without it.
    QString head;
    /// The quotation that is open, '"' or '\'', null without one. What is offered is quoted accordingly.
    QChar quote;
};

/// What the last of some words can be, for the shell: a line that says "files" when the shell is to offer these,
/// otherwise "words", or "words nospace" where more follows; then a line for each.
///
/// A value called FILE, OUT or TABLE is a file, PATTERN a path of the file that the words name; paths are offered level
/// by level.
QByteArray offersFor(const Syntax& syntax, const QStringList& words, const TypedEnd& end);

/// The same for a command line as it is typed: the length of the end of the last word that the shell replaces, then the
/// words. Quotes and backslashes mean what they mean in a shell, and "~/" the home folder; nothing else is expanded.
void completeCommandLine(const QStringList& typed);

} // namespace Tool

#pragma once

#include <QStringList>

class QIODevice;
class QTextStream;

namespace Tool {

/// `prm import clip.json -o clip.prm [--map table.tsv]`: project text of an animation file. The arguments begin with
/// the name of the command. Answers the exit code: 0, or 2 for wrong use and for files that cannot be read or written,
/// with one line in `err`; files are written whole or not at all. Needs a QCoreApplication.
int runImport(const QStringList& arguments, QIODevice& out, QTextStream& err);

} // namespace Tool

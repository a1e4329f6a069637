#include "tool/Streams.h"

#include "prm/document/ConflictMarkers.h"
#include "prm/document/Progress.h"
#include "tool/OutputFile.h"
#include "tool/Problem.h"
#include "tool/ProgressLine.h"

#include <QFileInfo>

#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace Tool {

namespace {

bool isQuiet = false;

void writeLines(const QString& lines) {
    hideProgress();
    QByteArray text;
    for (const QString& line : lines.split('\n'))
        text += printable(line).toUtf8() + '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
}

bool open(QFile& file) {
    return file.fileName().isEmpty() ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
}

/// Read in pieces: a device or a pipe does not say how much there is.
QByteArray readAll(QFile& file, const QString& name, qint64 most) {
    QByteArray text;
    for (QByteArray piece = file.read(1 << 20); !piece.isEmpty(); piece = file.read(1 << 20)) {
        text += piece;
        if (text.size() > most)
            throw Problem("%1: larger than %2 MiB", name, most >> 20);
    }
    if (file.error() != QFile::NoError)
        throw Problem("%1: %2", name, file.errorString());
    return text;
}

} // namespace

QString inputName(const QString& file) {
    return file == "-" ? "standard input" : file;
}

QByteArray readInput(const QString& name, qint64 most) {
    static bool isStandardRead = false;
    const bool isStandard = name == "-";
    if (isStandard && std::exchange(isStandardRead, true))
        throw Problem("standard input can be read only once");
    if (name.isEmpty())
        throw Problem("the name of the file to read is empty; - is standard input");
    if (!isStandard && QFileInfo(name).isDir())
        throw Problem("%1: is a directory; name the files in it", name);
    QFile file(isStandard ? QString() : name);
    if (!open(file))
        throw Problem("%1: %2", name, file.errorString());
    QByteArray text = readAll(file, inputName(name), most);
    refuseConflicts(text, inputName(name));
    return text;
}

void print(const QByteArray& text) {
    hideProgress();
    QFile out;
    const bool isWritten = out.open(stdout, QIODevice::WriteOnly) && out.write(text) == text.size() && out.flush();
    if (!isWritten)
        throw OutputProblem("standard output: %1", out.errorString());
}

void writeOutput(const QString& name, const QByteArray& bytes) {
    OutputFile file(name);
    file.write(bytes);
    file.commit();
}

QString printable(QString text) {
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control || c.isNonCharacter())
            c = QChar::ReplacementCharacter;
    }
    return text;
}

bool hasColours(std::FILE* stream) {
    return isatty(fileno(stream)) == 1 && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

void beQuiet() {
    isQuiet = true;
    Progress::setDisplay(nullptr);
}

void report(const QString& lines) {
    if (!isQuiet)
        writeLines(lines);
}

void tellError(const QString& text) {
    hideProgress();
    static const bool isColoured = hasColours(stderr);
    if (isColoured)
        std::fputs("\x1b[1;31m", stderr);
    std::fputs("prm:", stderr);
    if (isColoured)
        std::fputs("\x1b[0m", stderr);
    writeLines(' ' + text);
}

} // namespace Tool

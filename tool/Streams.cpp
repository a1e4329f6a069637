#include "tool/Streams.h"

#include "tool/OutputFile.h"
#include "tool/Progress.h"

#include <QFileInfo>

#include <cstdio>
#include <cstring>
#include <utility>

namespace Tool {

namespace {

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

/// Seven or more of one sign at the beginning of a line, then a blank or its end.
bool isConflictMarker(const char* line) {
    constexpr std::size_t shortest = 7;
    const char sign = *line;
    if (sign != '<' && sign != '|' && sign != '=' && sign != '>')
        return false;
    const char run[] = {sign, '\0'};
    const std::size_t length = std::strspn(line, run);
    return length >= shortest && std::strchr(" \r\n", line[length]);
}

/// A version control system leaves both sides of a conflict in the file, between such lines. To read on would mix the
/// sides, and keep the markers.
void refuseConflicts(const QByteArray& text, const QString& name) {
    int number = 1;
    for (int start = text.startsWith("\xEF\xBB\xBF") ? 3 : 0; start < text.size(); ++number) {
        if (isConflictMarker(text.constData() + start))
            throw Problem("%1:%2: unresolved merge conflict, the line begins with '%3'", name, number,
                          text.mid(start, 7));
        const int feed = text.indexOf('\n', start);
        start = feed < 0 ? text.size() : feed + 1;
    }
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
        throw Problem("the file name is empty");
    if (!isStandard && QFileInfo(name).isDir())
        throw Problem("%1: is a directory", name);
    QFile file(isStandard ? QString() : name);
    if (!open(file))
        throw Problem("%1: %2", name, file.errorString());
    QByteArray text = readAll(file, inputName(name), most);
    refuseConflicts(text, inputName(name));
    return text;
}

void print(const QByteArray& text) {
    QFile out;
    const bool isWritten = out.open(stdout, QIODevice::WriteOnly) && out.write(text) == text.size() && out.flush();
    if (!isWritten)
        throw Problem("standard output: %1", out.errorString());
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

void report(const QString& lines) {
    Progress::hide();
    QByteArray text;
    for (const QString& line : lines.split('\n'))
        text += printable(line).toUtf8() + '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
}

} // namespace Tool

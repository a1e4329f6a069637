#include "prm/ProjectFile.h"

#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/project/Invariants.h"
#include "prm/text/LineParts.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <algorithm>
#include <cstring>
#include <new>
#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace Prm {

namespace {

constexpr char byteOrderMark[] = "\xEF\xBB\xBF";

QString textOf(const QByteArray& bytes) {
    // With its size, for the other form stops at the first NUL; never -1, which the compiler cannot know.
    return QString::fromUtf8(bytes.constData(), std::max(0, bytes.size()));
}

/// Some disks refuse only now what they seemed to take. Qt asks as well, and does not look at the answer.
bool isOnDisk(const QSaveFile& file) {
#ifdef Q_OS_UNIX
    return ::fsync(file.handle()) == 0;
#else
    return file.isOpen();
#endif
}

} // namespace

/// One line of a text that is being read. It is copied only if it has to be kept.
struct ProjectFile::Line {
    int number;
    const char* start;
    int size;

    QString text() const;
    /// Takes the memory of a former text, if nobody else holds it.
    void readInto(QString& text) const;
    KeptLine kept() const { return {number, QByteArray(start, size)}; }
};

/// The lines of a text, without their ends: a line feed, or carriage return and line feed. A byte-order mark is
/// skipped.
class ProjectFile::Lines {
public:
    explicit Lines(const QByteArray& text) : m_text(text) { rewind(); }

    void rewind() {
        m_position = m_text.startsWith(byteOrderMark) ? 3 : 0;
        m_number = 0;
    }
    bool atEnd() const { return m_position >= m_text.size(); }
    Line next() {
        const char* const start = m_text.constData() + m_position;
        const void* const found = std::memchr(start, '\n', static_cast<std::size_t>(m_text.size() - m_position));
        const int end = found ? static_cast<int>(static_cast<const char*>(found) - m_text.constData()) : -1;
        const int stop = end < 0 ? m_text.size() : end;
        int length = stop - m_position;
        if (end >= 0 && length > 0 && m_text.at(stop - 1) == '\r')
            --length;
        m_position = stop + 1;
        return {++m_number, start, length};
    }
    QString firstLine() const { return Lines(m_text).next().text(); }
    /// Takes the next line if the function says so.
    template <class Function> void takeIf(const Function& function) {
        const Lines before = *this;
        if (!atEnd() && !function(next()))
            *this = before;
    }

private:
    QByteArray m_text;
    int m_position = 0;
    int m_number = 0;
};

QString ProjectFile::Line::text() const {
    const QString text = QString::fromUtf8(start, size);
    // Qt takes it off, but only at the beginning of a file it is not part of the text.
    const bool isMarked = QByteArray::fromRawData(start, size).startsWith(byteOrderMark);
    return isMarked ? QChar(QChar::ByteOrderMark) + text : text;
}

void ProjectFile::Line::readInto(QString& text) const {
    text.resize(size);
    QChar* next = text.data();
    uint allBits = 0;
    for (const char* character = start; character != start + size; ++character) {
        allBits |= uchar(*character);
        *next++ = QLatin1Char(*character);
    }
    const bool isAscii = allBits < 128;
    if (!isAscii)
        text = this->text();
}

namespace {

/// What stands before the key of a line: the path of a parameter.
QString pathOf(const QString& line) {
    const QString pathAndKey = line.left(line.indexOf(QLatin1Char('=')));
    return pathAndKey.left(std::max(0, pathAndKey.lastIndexOf(QLatin1Char('.'))));
}

bool namesMaster(const QString& line) {
    const int end = line.indexOf(QLatin1Char('='));
    const int key = end < 0 ? -1 : line.lastIndexOf(QLatin1Char('.'), end) + 1;
    return key > 0 && line.midRef(key).startsWith(ParameterStrings::masterParameterId, Qt::CaseInsensitive);
}

/// Leaves the start as it was: a deep tree does not copy it at every level.
void collectPaths(const ParameterSet& set, QString& start, QSet<QString>& paths) {
    const auto collectBelow = [&](const ParameterSet& below, const QString& nameAndDot) {
        const int length = start.size();
        start += nameAndDot;
        collectPaths(below, start, paths);
        start.resize(length);
    };
    for (const auto& parameter : set.parameters()) {
        const QString& name = parameter->scriptName();
        paths.insert(start + name);
        if (const auto* const compound = dynamic_cast<const ParameterSet*>(parameter.get()))
            collectBelow(*compound, detail::lineStart({}, name, true));
    }
    for (const BasicParameter* parameter : set.basicParameters())
        paths.insert(start + parameter->scriptName());
    for (const ParameterSet* subset : set.subsets())
        collectBelow(*subset, subset->scriptName() + QLatin1Char('.'));
}

} // namespace

QString ProjectFileFinding::reasonToString() const {
    switch (reason) {
    case Malformed:
        return QStringLiteral("malformed keyframe, dropped");
    case Unknown:
        return QStringLiteral("unknown, kept");
    case Refused:
        return QStringLiteral("refused by its parameter, kept");
    case UnresolvedMaster:
        return QStringLiteral("master not found, kept");
    case IncompleteHeader:
        return QStringLiteral("incomplete header");
    case NewerHeader:
        return QStringLiteral("written in a newer format");
    }
    return {};
}

ProjectFile::ProjectFile(ParameterSet& root, const QString& application) : m_root(root), m_application(application) {}

ProjectFile::~ProjectFile() = default;

void ProjectFile::setFindMaster(const FindMaster& find) {
    m_findMaster = find;
}

bool ProjectFile::fail(const QString& message) {
    m_error = message;
    return false;
}

void ProjectFile::report(int lineNumber, const QString& text, ProjectFileFinding::Reason reason) {
    m_report.append({lineNumber, text, reason});
}

bool ProjectFile::load(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return fail(fileName + QLatin1String(": ") + file.errorString());
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(fileName + QLatin1String(": ") + file.errorString());
    return loadText(text);
}

bool ProjectFile::loadText(const QByteArray& text) {
    m_error.clear();
    m_report.clear();
    m_kept.clear();
    m_masterLines.clear();
    m_parameterPaths.clear();
    m_root.assignNamePrefixes();
    Lines lines(text);
    readHeader(lines);
    QString scratch;
    while (!lines.atEnd())
        readLine(lines.next(), scratch);
    resolveMasters();
    std::stable_sort(m_report.begin(), m_report.end(),
                     [](const auto& a, const auto& b) { return a.lineNumber < b.lineNumber; });
    m_keptLines.clear();
    for (const KeptLine& line : qAsConst(m_kept))
        m_keptLines.append(line.bytes);
    Q_ASSERT_X(detail::verify(m_root).isEmpty(), "ProjectFile::loadText", qPrintable(detail::verify(m_root)));
    return true;
}

void ProjectFile::readHeader(Lines& lines) {
    m_version = ProjectFileVersion();
    ParameterSet properties;
    m_version.initialiseProperties(properties);
    const auto isHeaderLine = [&](const Line& line) {
        return line.size > 0 && properties.bStreamIn(line.text(), m_version);
    };
    while (!lines.atEnd() && !m_version.atEnd())
        isHeaderLine(lines.next());
    if (!m_version.atEnd()) {
        report(1, QString(), ProjectFileFinding::IncompleteHeader);
        if (m_version.streamVersion == StreamVersion::invalid)
            m_version.streamVersion = StreamVersion::latest;
        lines.rewind();
        // What there is of a header stands at the beginning.
        const ProjectFileVersion seen = m_version;
        for (bool taken = true; taken;) {
            taken = false;
            lines.takeIf([&](const Line& line) { return taken = isHeaderLine(line); });
        }
        m_version = seen;
        return;
    }
    if (m_version.streamVersion > StreamVersion::latest)
        report(1, lines.firstLine(), ProjectFileFinding::NewerHeader);
    lines.takeIf([&](const Line& line) {
        return line.text().startsWith(QLatin1String("FileTimestamp.")) && isHeaderLine(line);
    });
}

void ProjectFile::readLine(const Line& line, QString& text) {
    line.readInto(text);
    try {
        if (m_root.bStreamIn(text, m_version)) {
            if (namesMaster(text))
                m_masterLines.append(line.kept());
            return;
        }
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        report(line.number, text, ProjectFileFinding::Malformed);
        return;
    }
    m_kept.append(line.kept());
    report(line.number, text, reasonNotTaken(text));
}

const QSet<QString>& ProjectFile::parameterPaths() {
    if (m_parameterPaths.isEmpty()) {
        QString start;
        collectPaths(m_root, start, m_parameterPaths);
    }
    return m_parameterPaths;
}

/// A line is refused when there is a parameter at the path before its key.
ProjectFileFinding::Reason ProjectFile::reasonNotTaken(const QString& line) {
    QString path = pathOf(line);
    const int view = path.lastIndexOf(QLatin1String(".view["));
    if (view > 0 && path.endsWith(QLatin1Char(']')))
        path.truncate(view);
    return parameterPaths().contains(path) ? ProjectFileFinding::Refused : ProjectFileFinding::Unknown;
}

void ProjectFile::resolveMasters() {
    if (m_root.resolveMasterParameters(m_findMaster) > 0)
        keepUnresolvedMasters();
    std::stable_sort(m_kept.begin(), m_kept.end(),
                     [](const KeptLine& a, const KeptLine& b) { return a.number < b.number; });
}

void ProjectFile::keepUnresolvedMasters() {
    QSet<QString> paths;
    QSet<QString> ids;
    m_root.forEachParameterAndPart([&](const ParameterWithoutType* parameter) {
        if (parameter->pendingMasterParameterId().isEmpty())
            return;
        const QString name = parameter->extendedName();
        paths.insert(name.startsWith(QLatin1Char('.')) ? name.mid(1) : name);
        ids.insert(parameter->pendingMasterParameterId());
    });
    for (const KeptLine& line : qAsConst(m_masterLines)) {
        const QString text = textOf(line.bytes);
        const QString path = pathOf(text);
        // A line under an additional name of its parameter is known by the master that it names.
        const bool otherName = !parameterPaths().contains(path) && ids.contains(detail::textBetween(text));
        if (!otherName && !paths.contains(path))
            continue;
        report(line.number, text, ProjectFileFinding::UnresolvedMaster);
        m_kept.append(line);
    }
}

QByteArray ProjectFile::text() const {
    m_root.assignNamePrefixes();
    ProjectFileVersion header(m_application);
    if (m_timeOfWriting.isValid())
        header.setTimestamp(m_timeOfWriting);
    ParameterSet properties;
    header.initialiseProperties(properties);
    // Through a device, for which each parameter's lines become bytes at once: the text of all of them would be twice
    // as large as its bytes.
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    stream.setCodec("UTF-8");
    properties.bStreamOut(stream, {}, true);
    m_root.writeMembers(stream, {}, true);
    stream.flush();
    for (const QByteArray& line : m_keptLines)
        buffer.write(line + '\n');
    return buffer.data();
}

bool ProjectFile::save(const QString& fileName) {
    m_error.clear();
    const QFileInfo target(fileName);
    if (target.exists() && !target.isFile())
        return fail(fileName + QLatin1String(": is not a regular file"));
    const QByteArray bytes = text();
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return fail(fileName + QLatin1String(": ") + file.errorString());
    // A commit after a short write would replace the former file all the same.
    const bool written = file.write(bytes) == bytes.size() && file.flush() && file.error() == QFileDevice::NoError;
    if (!written || !isOnDisk(file)) {
        const QString reason = written ? qt_error_string() : file.errorString();
        file.cancelWriting();
        return fail(fileName + QLatin1String(": ") + reason);
    }
    if (!file.commit())
        return fail(fileName + QLatin1String(": ") + file.errorString());
    return true;
}

} // namespace Prm

#include "prm/ProjectFile.h"

#include "prm/KeyframeClipboard.h"
#include "prm/ParameterSet.h"
#include "prm/ParameterWithoutType.h"
#include "prm/StaticParameter.h"
#include "prm/project/Invariants.h"
#include "prm/project/MemberPaths.h"
#include "prm/project/ProjectLines.h"
#include "prm/text/KeyframeText.h"
#include "prm/text/LineNotes.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <algorithm>
#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace Prm {

namespace {

/// More than the first line of copied keyframes needs.
constexpr int longestTitle = 32;

QString textOf(const QByteArray& line) {
    return detail::ProjectLine{0, line.constData(), line.size()}.text();
}

/// Some disks report a failed write only now. Qt syncs as well, but ignores the result.
bool isOnDisk(const QSaveFile& file) {
#ifdef Q_OS_UNIX
    return ::fsync(file.handle()) == 0;
#else
    return file.isOpen();
#endif
}

} // namespace

/// The lines of a version header, for a text that is being read.
struct ProjectFile::Header {
    Header() { version.initialiseProperties(properties); }
    Q_DISABLE_COPY(Header)

    /// Not by the set, which would take its name from a line.
    bool takes(const detail::ProjectLine& line) {
        const QString text = line.text();
        const auto& members = properties.basicParameters();
        return std::any_of(members.begin(), members.end(),
                           [&](BasicParameter* member) { return member->setFromScriptString(text, version); });
    }

    ProjectFileVersion version;
    ParameterSet properties;
};

QString ProjectFileFinding::reasonToString() const {
    switch (reason) {
    case Malformed:
        return explanation.isEmpty() ? QStringLiteral("malformed keyframe, dropped")
                                     : QStringLiteral("malformed keyframe, dropped: ") + explanation;
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
    case Unreadable:
        return explanation;
    case NotUtf8:
        return QStringLiteral("not UTF-8, kept");
    case ConflictMarker:
        return QStringLiteral("conflict marker of version control");
    case NoProjectText:
        return QStringLiteral("no project text");
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

void ProjectFile::report(int lineNumber, const QString& text, ProjectFileFinding::Reason reason,
                         const QString& explanation) {
    m_report.append({lineNumber, text, reason, explanation});
}

bool ProjectFile::load(const QString& fileName) {
    const QString start = fileName + QLatin1String(": ");
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return fail(start + file.errorString());
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(start + file.errorString());
    return loadText(text) || fail(start + m_error);
}

bool ProjectFile::loadText(const QByteArray& text) {
    m_error.clear();
    m_report.clear();
    if (!isLoadable(text))
        return false;
    m_kept.clear();
    m_masterLines.clear();
    m_root.assignNamePrefixes();
    try {
        readLines(text);
    } catch (...) {
        finish();
        throw;
    }
    finish();
    Q_ASSERT_X(detail::verify(m_root).isEmpty(), "ProjectFile::loadText", qPrintable(detail::verify(m_root)));
    return true;
}

/// Before anything is edited.
bool ProjectFile::isLoadable(const QByteArray& text) {
    bool isProjectText = false;
    for (detail::ProjectLines lines(text); !lines.atEnd();) {
        const detail::ProjectLine line = lines.next();
        isProjectText = isProjectText || line.hasKnownKey();
        if (line.isConflictMarker())
            report(line.number, line.text(), ProjectFileFinding::ConflictMarker);
    }
    if (!m_report.isEmpty())
        return fail(QStringLiteral("line %1: conflict marker of version control: %2")
                        .arg(QString::number(m_report.front().lineNumber), m_report.front().text));
    if (isProjectText && !KeyframeClipboard::isClipboardText(QString::fromUtf8(text.left(longestTitle))))
        return true;
    report(1, QString(), ProjectFileFinding::NoProjectText);
    return fail(QStringLiteral("no project text"));
}

/// Lines between those of the header are read like those after it.
void ProjectFile::readLines(const QByteArray& text) {
    detail::LineNotes notes;
    detail::ProjectLines lines(text);
    const int headerEnd = readHeader(lines);
    Header header;
    lines.rewind();
    while (!lines.atEnd()) {
        const detail::ProjectLine line = lines.next();
        if (line.number <= headerEnd && takeHeaderLine(line, header, notes))
            continue;
        readLine(line, notes);
        if (notes.hasInserted) {
            for (const detail::ProjectLine& next : lines.takeSorted(line))
                readLine(next, notes);
        }
    }
    resolveMasters();
}

bool ProjectFile::takeHeaderLine(const detail::ProjectLine& line, Header& header, detail::LineNotes& notes) {
    notes.clear();
    if (!header.takes(line))
        return false;
    if (!line.readInto(m_text))
        detail::LineNotes::addLoss("bytes that are no UTF-8");
    reportLosses(line, notes);
    return true;
}

/// The number of the last line that may belong to the header.
int ProjectFile::readHeader(detail::ProjectLines& lines) {
    Header header;
    int end = 0;
    while (!lines.atEnd() && !header.version.atEnd()) {
        header.takes(lines.next());
        ++end;
    }
    const bool isComplete = header.version.atEnd();
    if (!isComplete)
        report(1, QString(), ProjectFileFinding::IncompleteHeader);
    if (header.version.streamVersion == StreamVersion::invalid)
        header.version.streamVersion = StreamVersion::latest;
    if (header.version.streamVersion > StreamVersion::latest)
        report(1, lines.firstLine().text(), ProjectFileFinding::NewerHeader);
    const auto isTime = [&](const detail::ProjectLine& line) {
        return line.text().startsWith(QLatin1String("FileTimestamp.")) && header.takes(line);
    };
    if (isComplete && lines.takeIf(isTime))
        ++end;
    m_version = header.version;
    return end;
}

void ProjectFile::readLine(const detail::ProjectLine& line, detail::LineNotes& notes) {
    notes.clear();
    if (line.size == 0)
        return;
    if (!line.readInto(m_text)) {
        keep(line, ProjectFileFinding::NotUtf8, true);
        return;
    }
    try {
        if (!m_root.bStreamIn(m_text, m_version)) {
            keepNotTaken(line);
            return;
        }
    } catch (const detail::MalformedKeyframe&) {
        report(line.number, m_text, ProjectFileFinding::Malformed, notes.losses.join(QLatin1String("; ")));
        return;
    }
    reportLosses(line, notes);
    noteWaiting(line, notes.waitingIn);
    for (const detail::LineNotes::Master& master : qAsConst(notes.masters))
        m_masterLines.append({line.number, line.bytes(), false, master.parameter, master.id});
}

void ProjectFile::reportLosses(const detail::ProjectLine& line, const detail::LineNotes& notes) {
    if (!notes.losses.isEmpty())
        report(line.number, line.text(), ProjectFileFinding::Unreadable, notes.losses.join(QLatin1String("; ")));
}

void ProjectFile::keep(const detail::ProjectLine& line, ProjectFileFinding::Reason reason, bool always) {
    m_kept.append({line.number, line.bytes(), always, {}, {}});
    report(line.number, m_text, reason);
}

/// A line that its member would read by all appearances, and did not, is kept in any case.
void ProjectFile::keepNotTaken(const detail::ProjectLine& line) {
    using Match = detail::MemberPaths::Match;
    if (!m_members)
        m_members = std::make_unique<detail::MemberPaths>(m_root);
    const Match match = m_members->match(m_text);
    keep(line, match == Match::None ? ProjectFileFinding::Unknown : ProjectFileFinding::Refused, match == Match::Read);
}

/// A moved parameter without a target keeps its last line alone.
void ProjectFile::noteWaiting(const detail::ProjectLine& line, QObject* moved) {
    if (!moved)
        return;
    KeptLine& former = m_waitingLines[moved];
    if (former.parameter == moved)
        report(former.lineNumber, textOf(former.bytes), ProjectFileFinding::Unreadable,
               QStringLiteral("dropped for line %1: the moved parameter has no target yet, and keeps one line")
                   .arg(line.number));
    former = {line.number, line.bytes(), false, moved, {}};
}

void ProjectFile::resolveMasters() {
    if (m_root.resolveMasterParameters(m_findMaster) == 0)
        return;
    for (const KeptLine& line : qAsConst(m_masterLines)) {
        if (!isWaiting(line))
            continue;
        report(line.lineNumber, textOf(line.bytes), ProjectFileFinding::UnresolvedMaster);
        m_kept.append(line);
    }
}

bool ProjectFile::isWaiting(const KeptLine& line) {
    const auto* const parameter = qobject_cast<const ParameterWithoutType*>(line.parameter.data());
    return parameter && parameter->pendingMasterParameterId() == line.masterId;
}

void ProjectFile::finish() {
    const auto byNumber = [](const auto& a, const auto& b) { return a.lineNumber < b.lineNumber; };
    std::stable_sort(m_report.begin(), m_report.end(), byNumber);
    std::stable_sort(m_kept.begin(), m_kept.end(), byNumber);
    m_keptLines.clear();
    for (const KeptLine& line : qAsConst(m_kept))
        m_keptLines.append(line.bytes);
    m_readingLosses.clear();
    for (const ProjectFileFinding& finding : qAsConst(m_report)) {
        if (finding.reason == ProjectFileFinding::Malformed || finding.reason == ProjectFileFinding::Unreadable)
            m_readingLosses.append(
                QStringLiteral("line %1: %2").arg(QString::number(finding.lineNumber), finding.reasonToString()));
    }
    m_members.reset();
    m_waitingLines.clear();
    m_text.clear();
}

/// Without those that would replace, when the text is loaded, what the members hold now.
QList<QByteArray> ProjectFile::linesToWrite() const {
    QList<QByteArray> lines;
    if (m_kept.isEmpty())
        return lines;
    const detail::MemberPaths members(m_root);
    for (const KeptLine& line : m_kept) {
        const auto* const constrained = qobject_cast<const ParameterWithoutType*>(line.parameter.data());
        const bool isStale = constrained ? !isWaiting(line) || constrained->masterParameter()
                                         : members.match(textOf(line.bytes)) == detail::MemberPaths::Match::Read;
        if (line.always || !isStale)
            lines.append(line.bytes);
    }
    return lines;
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
    try {
        properties.bStreamOut(stream, {}, true);
        m_root.writeMembers(stream, {}, true);
        stream.flush();
    } catch (...) {
        // Its destructor would flush once more, and end the process where memory stays exhausted.
        stream.setStatus(QTextStream::WriteFailed);
        throw;
    }
    const QList<QByteArray> kept = linesToWrite();
    for (const QByteArray& line : kept)
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
    m_readingLosses.clear();
    return true;
}

} // namespace Prm

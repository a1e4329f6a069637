#pragma once

#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>
#include <boost/function.hpp>

#include <memory>

namespace Prm {

class ParameterSet;
class ParameterWithoutType;

namespace detail {
class LineNotes;
class MemberPaths;
class ProjectLines;
struct ProjectLine;
} // namespace detail

/// A finding about one line of a loaded project text.
///
/// \snippet saving_and_loading.cpp load
/// \threads A plain value.
struct ProjectFileFinding {
    enum Reason {
        Malformed,        ///< a keyframe that cannot be parsed; not written back
        Unknown,          ///< no member has the name; kept, and written back after the sets
        Refused,          ///< a member has the name but did not take the line; kept like an unknown one
        UnresolvedMaster, ///< the master was not found; kept like an unknown one
        IncompleteHeader, ///< the text ends, or something else begins, before the header is complete
        NewerHeader,      ///< written in a newer format than this library knows
        Unreadable,       ///< read in part: the explanation says what saving will not write back
        NotUtf8,          ///< not UTF-8: not read; kept, and always written back
        ConflictMarker,   ///< a marker that version control writes around a conflict; the text is not loaded
        NoProjectText     ///< no line is project text; the text is not loaded
    };
    /// Counted from 1.
    int lineNumber = 0;
    QString text;
    Reason reason = Unknown;
    /// What is wrong with the line, such as "value 'hello' is not a number"; often empty.
    QString explanation;

    /// The explanation, or without one the reason, in a few words, not translated, such as "malformed keyframe,
    /// dropped".
    PRM_EXPORT QString reasonToString() const;
};

/// Loads and saves a whole project: the version header, then the sets below a root set without a name. Texts are UTF-8.
///
/// Loading never throws because of the contents of the file. Each line is either read completely; or kept and written
/// back, so that an older program does not lose what a newer one wrote; or it is in the report, and `saveLosses` names
/// it again. A kept line never overrides a later edit: it is not written if a member would take it at the time of
/// saving, or if it names the master of a parameter whose master was set or removed since.
///
/// \snippet saving_and_loading.cpp load
/// \threads The owning thread of the sets below the root: loading edits them, and saving sets the name prefixes of
/// their parameters.
class PRM_EXPORT ProjectFile {
public:
    using Report = QVector<ProjectFileFinding>;
    using FindMaster = boost::function<ParameterWithoutType*(const QString&)>;

    /// The root, which has the sets as subsets, must outlive this object. `application` is passed to
    /// `ProjectFileVersion`.
    explicit ProjectFile(ParameterSet& root, const QString& application = {});
    ~ProjectFile();
    ProjectFile(const ProjectFile&) = delete;
    ProjectFile& operator=(const ProjectFile&) = delete;

    /// Sets the function that finds masters after loading. Without one, they are found by extended name.
    void setFindMaster(const FindMaster& find);

    /// Reads a file into the sets. Returns false, and sets `errorString()`, if the file cannot be read, has conflict
    /// markers of a version control system, or is no project text; then only `report()` and `errorString()` change.
    /// Other faults are in the report only.
    ///
    /// Throws what an observer or a conversion throws, and `std::bad_alloc`. The sets are then valid but incomplete:
    /// each line was read completely or not at all. Do not save them over the file; loading again completes them.
    bool load(const QString& fileName);
    /// The same for a text, given as UTF-8.
    bool loadText(const QByteArray& text);

    /// The findings of the last load, in the order of lines.
    const Report& report() const { return m_report; }
    /// The header of the loaded file.
    const ProjectFileVersion& version() const { return m_version; }
    /// The kept lines, in order, with their original bytes.
    const QList<QByteArray>& keptLines() const { return m_keptLines; }

    /// Writes the sets to a file, through a temporary file in the same folder: the former file stays complete until it
    /// is replaced. Returns false, and sets `errorString()`, if writing fails, or if the target exists and is no
    /// regular file.
    bool save(const QString& fileName);
    /// The text that `save` writes. Sets the name prefixes of the parameters below the root.
    QByteArray text() const;
    /// One sentence for each thing that saving would lose: what the format cannot represent and, until the sets are
    /// saved or another text is loaded, what loading could not read. Call it before saving. Sets the name prefixes of
    /// the parameters below the root.
    QStringList saveLosses() const;

    /// Sets the time of writing in the header. By default it is the present time.
    void setTimeOfWriting(const QDateTime& time) { m_timeOfWriting = time; }

    /// Why `load` or `save` returned false.
    const QString& errorString() const { return m_error; }

private:
    struct Header;
    struct KeptLine {
        int lineNumber = 0;
        QByteArray bytes;
        /// Written even if a member would take it.
        bool always = false;
        /// The moved parameter in which the line waits for its target; or the parameter whose master the line names,
        /// and that name.
        QPointer<QObject> parameter;
        QString masterId;
    };

    bool isLoadable(const QByteArray& text);
    void readLines(const QByteArray& text);
    bool takeHeaderLine(const detail::ProjectLine& line, Header& header, detail::LineNotes& notes);
    int readHeader(detail::ProjectLines& lines);
    void readLine(const detail::ProjectLine& line, detail::LineNotes& notes);
    void reportLosses(const detail::ProjectLine& line, const detail::LineNotes& notes);
    void keep(const detail::ProjectLine& line, ProjectFileFinding::Reason reason, bool always);
    void keepNotTaken(const detail::ProjectLine& line);
    void noteWaiting(const detail::ProjectLine& line, QObject* moved);
    void resolveMasters();
    static bool isWaiting(const KeptLine& line);
    void finish();
    QList<QByteArray> linesToWrite() const;
    void report(int lineNumber, const QString& text, ProjectFileFinding::Reason reason,
                const QString& explanation = {});
    bool fail(const QString& message);

    ParameterSet& m_root;
    QString m_application;
    FindMaster m_findMaster;
    ProjectFileVersion m_version;
    Report m_report;
    QList<QByteArray> m_keptLines;
    /// Lines that name a master; each is kept, in order, if that master is not found.
    QVector<KeptLine> m_masterLines;
    /// While loading: the lines that wait in moved parameters, by parameter.
    QHash<QObject*, KeptLine> m_waitingLines;
    QVector<KeptLine> m_kept;
    /// While loading: the members by path, created for the first line that is not taken.
    std::unique_ptr<detail::MemberPaths> m_members;
    /// The text of the line that is being read.
    QString m_text;
    QStringList m_readingLosses;
    QDateTime m_timeOfWriting;
    QString m_error;
};

} // namespace Prm

#pragma once

#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QByteArray>
#include <QDateTime>
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

/// What became of one line while a project text was loaded, or what saving cannot hold.
///
/// \snippet saving_and_loading.cpp load
/// \threads A plain value.
struct ProjectFileFinding {
    enum Reason {
        Malformed,        ///< a keyframe that cannot be taken apart; not written back
        Unknown,          ///< no member takes the line; kept, and written back after the sets
        Refused,          ///< a member has the name, but did not take the line; kept like an unknown one
        UnresolvedMaster, ///< the master cannot be found; kept like an unknown one
        IncompleteHeader, ///< the text ends, or something else begins, before the header is complete
        NewerHeader,      ///< written in a newer format than this library knows
        Unreadable,       ///< taken, but not whole: the explanation says what saving will not write back
        NotUtf8,          ///< bytes that are no UTF-8: not read; kept, and always written back
        ConflictMarker,   ///< a marker that version control writes around a conflict; the text is not loaded
        NoProjectText     ///< no line is one of project text; the text is not loaded
    };
    /// Counted from 1.
    int lineNumber = 0;
    QString text;
    Reason reason = Unknown;
    /// What of the line is at fault, such as "value 'hello' is not a number"; often empty.
    QString explanation;

    /// The reason, or the explanation where there is one, in a few plain words, not translated, such as "malformed
    /// keyframe, dropped".
    PRM_EXPORT QString reasonToString() const;
};

/// The safe way of a whole project in and out of a file: the version header, then the sets below a root set without a
/// name. Texts are UTF-8.
///
/// Loading never throws for what is in the file. Every line ends in one of three ways: it is taken whole; it is kept
/// and written back, so that an older program does not destroy a newer one's work; or the report says what could not be
/// read, and `saveLosses` says it again. A kept line never replaces what was done after loading: one that a member
/// would take by the time of saving, or that names the master of a parameter that was tied or freed since, is not
/// written.
///
/// \snippet saving_and_loading.cpp load
/// \threads The thread of the sets below the root: loading edits them, and saving gives the parameters in them their
/// name prefixes.
class PRM_EXPORT ProjectFile {
public:
    using Report = QVector<ProjectFileFinding>;
    using FindMaster = boost::function<ParameterWithoutType*(const QString&)>;

    /// The sets are below the root, which must outlive this object.
    explicit ProjectFile(ParameterSet& root, const QString& application = {});
    ~ProjectFile();
    ProjectFile(const ProjectFile&) = delete;
    ProjectFile& operator=(const ProjectFile&) = delete;

    /// How masters are found after loading; by extended name without a function.
    void setFindMaster(const FindMaster& find);

    /// Reads a file into the sets. False, with `errorString()`, when it cannot be read, when version control has left
    /// conflict markers in it, and when it is no project text: then nothing but `report()` and `errorString()` has
    /// changed. What else is wrong in it is in the report alone.
    ///
    /// Passes on what an observer or a conversion throws, and `std::bad_alloc`: the sets are sound but hold a part of
    /// the text, each line whole or not at all, and are not to be saved over it; loading once more completes them.
    bool load(const QString& fileName);
    /// The same for a text, given as UTF-8.
    bool loadText(const QByteArray& text);

    const Report& report() const { return m_report; }
    /// The header of the file that was loaded.
    const ProjectFileVersion& version() const { return m_version; }
    /// The lines kept by loading, in their order, with the bytes that they had.
    const QList<QByteArray>& keptLines() const { return m_keptLines; }

    /// Writes the sets to a file, through a temporary one beside it: the former file is whole until the new one is.
    /// False, with `errorString()`, when the disk did not take it, and for a target that exists and is no regular file.
    bool save(const QString& fileName);
    /// The whole text as `save` writes it. Gives the parameters below the root their name prefixes.
    QByteArray text() const;
    /// What the format cannot hold, in plain words: to be asked before saving. Until the sets are saved or a text is
    /// loaded, also what loading could not read, by line. Gives the parameters below the root their name prefixes.
    QStringList saveLosses() const;

    /// The time of writing in the header; the present time unless set.
    void setTimeOfWriting(const QDateTime& time) { m_timeOfWriting = time; }

    const QString& errorString() const { return m_error; }

private:
    struct Header;
    struct KeptLine {
        int lineNumber = 0;
        QByteArray bytes;
        /// Written whatever members there are.
        bool always = false;
        /// Of a line that names a master: the parameter that waits for it, and the name.
        QPointer<QObject> constrained;
        QString masterId;
    };

    bool isLoadable(const QByteArray& text);
    void readLines(const QByteArray& text);
    int readHeader(detail::ProjectLines& lines);
    void readLine(const detail::ProjectLine& line, detail::LineNotes& notes);
    void reportLosses(const detail::ProjectLine& line, const detail::LineNotes& notes);
    void keep(const detail::ProjectLine& line, ProjectFileFinding::Reason reason, bool always);
    void keepNotTaken(const detail::ProjectLine& line);
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
    /// Lines that name a master; each is kept, at its place, if that master is not found.
    QVector<KeptLine> m_masterLines;
    QVector<KeptLine> m_kept;
    /// While loading: the members by path, made with the first line that is not taken.
    std::unique_ptr<detail::MemberPaths> m_members;
    /// The text of the line that is being read.
    QString m_text;
    QStringList m_readingLosses;
    QDateTime m_timeOfWriting;
    QString m_error;
};

} // namespace Prm

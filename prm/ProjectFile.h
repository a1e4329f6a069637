#pragma once

#include "prm/Export.h"
#include "prm/ProjectFileVersion.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <boost/function.hpp>

namespace Prm {

class ParameterSet;
class ParameterWithoutType;

/// What became of one line while a project text was loaded, or what saving cannot hold.
///
/// \snippet saving_and_loading.cpp load
/// \threads A plain value.
struct ProjectFileFinding {
    enum Reason {
        Malformed,        ///< a keyframe that cannot be taken apart; not written back
        Unknown,          ///< nobody's line; kept, and written back behind the sets
        Refused,          ///< a member has the name, but did not take the line; kept like an unknown one
        UnresolvedMaster, ///< the master cannot be found; kept like an unknown one
        IncompleteHeader, ///< the text ends, or something else begins, before the header is complete
        NewerHeader       ///< written in a newer format than this library knows
    };
    /// Counted from 1.
    int lineNumber = 0;
    QString text;
    Reason reason = Unknown;

    /// The reason in a few plain words, not translated, such as "malformed keyframe, dropped".
    PRM_EXPORT QString reasonToString() const;
};

/// The safe way of a whole project in and out of a file: the version header, then the sets below a root set without a
/// name. Texts are UTF-8.
///
/// Loading never throws for what is in the file; what could not be used is in the report, and goes on with the next
/// line. What an older program does not know is kept and written back, so that it does not destroy a newer one's work.
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

    /// Reads a file into the sets. False, with `errorString()`, when it cannot be read; what is wrong in it is in the
    /// report. Where memory runs out `std::bad_alloc` is thrown: the sets are sound but hold a part of the text, each
    /// line whole or not at all, and are not to be saved over it; loading once more completes them.
    bool load(const QString& fileName);
    /// The same for a text, given as UTF-8.
    bool loadText(const QByteArray& text);

    const Report& report() const { return m_report; }
    /// The header of the file that was loaded.
    const ProjectFileVersion& version() const { return m_version; }
    /// The lines kept for saving, in their order, with the bytes that they had.
    const QList<QByteArray>& keptLines() const { return m_keptLines; }

    /// Writes the sets to a file, through a temporary one beside it: the former file is whole until the new one is.
    /// False, with `errorString()`, when the disk did not take it, and for a target that exists and is no regular file.
    bool save(const QString& fileName);
    /// The whole text as `save` writes it.
    QByteArray text() const;
    /// What the format cannot hold, in plain words: to be asked before saving.
    QStringList saveLosses() const;

    /// The time of writing in the header; the present time unless set.
    void setTimeOfWriting(const QDateTime& time) { m_timeOfWriting = time; }

    const QString& errorString() const { return m_error; }

private:
    struct Line;
    struct KeptLine {
        int number = 0;
        QByteArray bytes;
    };
    class Lines;

    void readHeader(Lines& lines);
    void readLine(const Line& line, QString& text);
    ProjectFileFinding::Reason reasonNotTaken(const QString& line);
    void resolveMasters();
    void keepUnresolvedMasters();
    const QSet<QString>& parameterPaths();
    void report(int lineNumber, const QString& text, ProjectFileFinding::Reason reason);
    bool fail(const QString& message);

    ParameterSet& m_root;
    QString m_application;
    FindMaster m_findMaster;
    ProjectFileVersion m_version;
    Report m_report;
    QList<QByteArray> m_keptLines;
    /// Lines that name a master; each is kept, at its place, if that master is not found.
    QVector<KeptLine> m_masterLines;
    /// What is kept, with the numbers of the lines, until the masters are known.
    QVector<KeptLine> m_kept;
    QSet<QString> m_parameterPaths;
    QDateTime m_timeOfWriting;
    QString m_error;
};

} // namespace Prm

#pragma once

#include "prm/document/Document.h"
#include "tool/Arguments.h"

namespace Tool {

/// Writes the note, if there is one, for the user.
void tellNote(const Evaluability& found);

/// The project text in a file, "-" for standard input. Throws `Problem` when it cannot be read, or is no project text.
ProjectText readProject(const QString& file);
/// The same as bytes, which may be empty, as version control systems give a file that is not there.
QByteArray readProjectOrNothing(const QString& file, const QString& name = {});

/// What every command that reads a project starts from: the file, and the types that the user settles. Messages name a
/// parameter as "file:line: path".
class Project {
public:
    static void declare(Arguments& arguments, const char* syntax = "");
    /// The same, for commands about the parameters that patterns name.
    static void declareWithPatterns(Arguments& arguments, const char* syntax = "PATTERN...");
    /// Reads what the arguments name. Throws `Problem`.
    explicit Project(const Arguments& arguments);
    Project(const QString& file, const KindRules& rules);

    const QString& file() const { return m_name; }
    Document& document() { return m_document; }
    const ProjectText& text() const { return m_document.text; }
    Kinds& kinds() { return m_document.kinds; }
    /// The parameters that the patterns name (see `Document`).
    std::vector<int> parameters(const QStringList& patterns) const;
    /// A parameter as messages name it; `line`, counted from 0, instead of its first one.
    QString place(const FileParameter& parameter, int line = FileValue::noLine) const;
    QString place(int node) const;
    /// Whether all values can be evaluated. Writes a message for the user: why not, or what else to know.
    bool canBeEvaluated(const FileParameter& parameter) const;
    /// Reads some parameters one after the other. `work` is what the user sees when that takes long. A `Problem` that
    /// is thrown there then names the place of the parameter.
    void forEach(const std::vector<int>& nodes, const char* work,
                 const std::function<void(const FileParameter& parameter)>& visit);

private:
    QString m_name;
    Document m_document;
};

/// Uses each project that the command line names, and returns the exit code. Of several it goes on after one that
/// cannot be used, calls `finish`, says what came of them, and returns the worst code.
int forEachProject(
    const Arguments& arguments, const std::function<int(Project& project)>& use,
    const std::function<void()>& finish = [] {});

/// The same, for commands that print a table of each project: those of several are one, with the names of the files.
int printTables(const Arguments& arguments, const std::function<std::pair<Table, int>(Project& project)>& tableOf);

} // namespace Tool

#pragma once

#include "tool/Arguments.h"
#include "tool/FileParameter.h"
#include "tool/PathPattern.h"

namespace Tool {

/// What the parameters of a text mean. Kinds are guessed, each from all values when it is first asked for; a parameter
/// without values is of its master's kind.
class Kinds {
public:
    explicit Kinds(const ProjectText& text, KindRules rules = {});
    /// A parameter whose kind is settled: what the user says, otherwise a guess.
    FileParameter read(int node);
    /// What a parameter shows: what its masters show, which is what the last of them shows, read as a kind of its own.
    /// A circle is left where it would close. Throws `Problem` for too long a chain.
    TypedParameter shown(const FileParameter& parameter);
    /// The node, its master and so on. A circle is left where it would close. Throws `Problem` for too long a chain.
    std::vector<int> masters(int node) const;
    /// The parameter and its masters, each tied to the next one, as parameters of the library's whose object names are
    /// their paths. The last one has the data that all show. Empty where values are of no known type.
    std::vector<std::shared_ptr<Prm::ParameterWithoutType>> chain(const FileParameter& parameter);

private:
    Kind guess(const FileParameter& parameter);

    const ProjectText& m_text;
    KindRules m_rules;
    std::vector<Kind> m_guesses;
    /// Of the last masters, each read once for all that follow it.
    std::map<std::pair<int, Kind>, TypedParameter> m_lastMasters;
};

/// Whether all values can be evaluated. Writes a message for the user: why not, or what else to know.
bool canBeEvaluated(const FileParameter& parameter);

/// What every command that reads a project starts from: the file, and the types that the user settles.
class Project {
public:
    static void declare(Arguments& arguments);
    /// The same, for commands about the parameters that patterns name.
    static void declareWithPatterns(Arguments& arguments, const char* syntax = "PATTERN...");
    /// Reads what the arguments name. Throws `Problem`.
    explicit Project(const Arguments& arguments);

    const ProjectText& text() const { return m_text; }
    Kinds& kinds() { return m_kinds; }
    /// The parameters that the patterns name, in the order of the file; all of them without a pattern. Throws `Problem`
    /// for a pattern that names nothing.
    std::vector<int> parameters(const QStringList& patterns) const;
    /// Reads some parameters one after the other. `work` is what the user sees when that takes long.
    void forEach(const std::vector<int>& nodes, const char* work,
                 const std::function<void(const FileParameter& parameter)>& visit);

private:
    QString m_name;
    ProjectText m_text;
    Kinds m_kinds;
};

} // namespace Tool

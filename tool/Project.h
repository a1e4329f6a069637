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
    /// As the user says, otherwise as a guess.
    Kind of(const FileParameter& parameter);
    /// What a parameter shows, read as a kind: what its masters show, which is what the last of them shows. A circle is
    /// left where it would close. Throws `Problem` for too long a chain.
    Sampler sampler(const FileParameter& parameter, Kind kind);

private:
    int lastMaster(int node) const;

    const ProjectText& m_text;
    KindRules m_rules;
    std::vector<Kind> m_guesses;
    /// Of the last masters, each read once for all that follow it.
    std::map<std::pair<int, Kind>, Sampler> m_samplers;
};

/// What every command that reads a project starts from: the file, and the types that the user settles.
class Project {
public:
    static void declare(Arguments& arguments);
    /// The same, for commands about the parameters that patterns name.
    static void declareWithPatterns(Arguments& arguments, const QString& syntax = "PATTERN...");
    /// Reads what the arguments name. Throws `Problem`.
    explicit Project(const Arguments& arguments);

    const ProjectText& text() const { return m_text; }
    FileParameter parameter(int node) const { return {m_text, node}; }
    Kinds& kinds() { return m_kinds; }
    /// The parameters that the arguments' patterns name, in the order of the file; all of them without a pattern.
    /// Throws `Problem` for a pattern that names nothing.
    std::vector<int> parameters(const QStringList& patterns) const;

private:
    QString m_name;
    ProjectText m_text;
    Kinds m_kinds;
};

} // namespace Tool

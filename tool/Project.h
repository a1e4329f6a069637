#pragma once

#include "tool/Arguments.h"
#include "tool/BuiltParameter.h"
#include "tool/ProjectText.h"
#include "tool/ValueKind.h"

namespace Tool {

/// What every command that reads a project starts from: the file, and the types that the user settles.
class Project {
public:
    static void declare(Arguments& arguments);
    /// The same, for commands about the parameters that patterns name.
    static void declareWithPatterns(Arguments& arguments, const QString& syntax = QStringLiteral("PATTERN..."));
    /// Reads what the arguments name. Throws `Problem`.
    explicit Project(const Arguments& arguments);

    const ProjectText& text() const { return m_text; }
    ValueKind kindOf(int node) { return m_kinds.of(node); }
    bool hasContradictedKind(int node) { return m_kinds.isContradicted(node); }
    BuiltParameter built(int node) { return {m_text, node, kindOf(node)}; }
    /// Shows what its masters show.
    BuiltParameter shown(int node);
    /// The parameters that the patterns name, in the order of the file; all of them without a pattern. Throws `Problem`
    /// for a pattern that names nothing.
    std::vector<int> parameters(const QStringList& patterns) const;

private:
    QString m_name;
    ProjectText m_text;
    Kinds m_kinds;
    Masters m_masters;
};

} // namespace Tool

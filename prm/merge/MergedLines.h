#pragma once

#include "prm/document/ParameterPatch.h"
#include "prm/merge/Resolver.h"

#include <array>

namespace Prm::document {

/// The three texts of a merge.
enum Revision : std::size_t { Base, Ours, Theirs };

/// One thing in each of three texts, as the number of a node or line, `none` where it is not there.
using Trio = std::array<int, 3>;

/// A line of which nothing is known.
struct NamedLine {
    /// What stands before "=", or all of it.
    std::string_view name;
    Trio lines;
};

/// Revision of these lines are the same in the three texts: those of one name, where no text has it twice; otherwise
/// those with the same bytes.
std::vector<NamedLine> sameLines(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                 const std::array<std::vector<int>, 3>& lines);

/// The lines of a node with that key.
std::vector<int> linesOf(const ProjectText& text, int node, Key key);

/// The path of a node as the text has it, which may be no UTF-8.
QByteArray bytePath(const ProjectText& text, int node);

/// The lines of ours with what is taken from theirs.
class MergedLines {
public:
    MergedLines(const ProjectText& ours, const ProjectText& theirs);

    void change(const LineChanges& changes);
    void drop(const std::vector<int>& ours);
    /// At the place that they have in theirs, which is after what is before them there.
    void insert(const std::vector<int>& theirs);
    /// These lines of ours as they are, and these of theirs not.
    void restore(const std::vector<int>& ours, const std::vector<int>& theirs);
    void replace(int ours, int theirs);
    /// Theirs in place of ours; either may be `none`.
    void take(int ours, int theirs);

    /// What stands at the same place in both texts.
    void pairNodes(int ours, int theirs);
    void pairLines(int ours, int theirs);

    QByteArray merged();

private:
    QByteArray bytesOf(int theirs) const { return toBytes(m_theirs.line(theirs)); }

    const ProjectText& m_ours;
    const ProjectText& m_theirs;
    LineChanges m_changes;
    /// For each line of theirs.
    std::vector<bool> m_isInserted;
    std::vector<int> m_partners;
};

} // namespace Prm::document

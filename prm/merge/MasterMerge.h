#pragma once

#include "prm/document/ProjectText.h"
#include "prm/merge/Resolver.h"

#include <map>
#include <set>

namespace Prm::document {

/// A parameter of a merged text, as its nodes in ours and theirs.
using MergedNode = std::pair<int, int>;

/// Where masters, and parameters that only one side has, come from in a merged text.
struct MergedMasters {
    /// The side that gives the line of the master. Ours where nothing is noted, theirs for what only theirs has.
    std::map<MergedNode, Side> sides;
    /// The nodes of ours and of theirs that the other side has deleted.
    std::set<int> deletedOurs;
    std::set<int> deletedTheirs;
};

/// Where the changes of both sides together would leave a parameter without its master, or lead from master to master
/// in a circle, as on neither side, one side counts for these masters and for their being there, and that is a
/// conflict.
MergedMasters withoutBrokenMasters(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                   MergedMasters masters, Resolver& resolver);

} // namespace Prm::document

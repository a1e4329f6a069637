#pragma once

#include "prm/document/ProjectText.h"
#include "prm/merge/Resolver.h"

#include <array>

namespace Prm::document {

/// Base, ours and theirs with one path for each group, that of the side which has renamed it. A side has renamed a
/// group that is gone where one that is new has at least half of its parameters, with the same names and lines. Where
/// several groups look alike, none is followed. Only the 16 levels of groups around a parameter are compared.
std::array<QByteArray, 3> withSamePaths(const ProjectText& base, const ProjectText& ours, const ProjectText& theirs,
                                        Resolver& resolver);

} // namespace Prm::document

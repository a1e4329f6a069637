#pragma once

#include "prm/exchange/ImportReport.h"

#include <QByteArray>
#include <QString>
#include <boost/shared_ptr.hpp>

namespace Prm {
class ParameterSet;
}

namespace Prm::document {

/// What an animation file came to.
struct ImportResult {
    /// A root without a name, with a set for each layer and for each precomposition.
    boost::shared_ptr<ParameterSet> root;
    ImportReport report;
};

/// Makes parameters of a Lottie file (JSON animation). Times are frames of the file; names that are in use get a
/// number. Nothing is dropped silently: everything that is not imported is in the report.
///
///     layer                 frame_rate, in, out, start, stretch; parent and composition: the path of another set;
///                           time_remap, in seconds of that composition
///     layer.transform       numbers such as opacity; compounds such as position, of x, y and z
///     layer.Fill_1          what the layer draws, nested as there
///     layer.effects.Blur    effects; masks and styles likewise
///
/// Throws `Problem` with one line that begins with the place: "3:17: ..." by line and column, counted from 1, or a JSON
/// path.
PRM_EXPORT ImportResult importAnimation(const QByteArray& json);

} // namespace Prm::document

#pragma once

#include "prm/Export.h"

#include <QByteArray>
#include <QStringList>
#include <boost/shared_ptr.hpp>

namespace Prm {

class ParameterSet;

/// Sets and parameters for a project text whose application is not there, under a root without a name. They have no
/// data: pass the root to a `ProjectFile` and load the text.
///
/// What a parameter is, is guessed from all values that it has in the text: a `NumericParameter<double>` for numbers, a
/// `PointParameter` for two numbers each, a `Parameter<QString>` for texts between double quotes. A parameter without
/// values is what its master is. Parameters whose values are of no known type are left out; `ProjectFile` keeps their
/// lines.
///
/// `rules` settle what would be a guess, each as "PATTERN=TYPE": the path of a parameter or group, or a shell pattern,
/// and one of "number", "switch" (`Parameter<bool>`), "point" or "text". The last that matches counts.
///
/// Throws `std::runtime_error`, with a message for the user, for a rule that is none, for markers of a conflict of
/// version control, and for more than 100 masters in a row.
///
/// \snippet reading_any_project.cpp open
/// \threads Any; the parameters belong to the calling thread.
PRM_EXPORT boost::shared_ptr<ParameterSet> guessedSets(const QByteArray& text, const QStringList& rules = {});

} // namespace Prm

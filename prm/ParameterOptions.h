#pragma once

#include <QFlags>

namespace Prm {

/// The options of a new parameter.
enum ParameterOption : quint32 {
    Keyframed = 1,  ///< a value set at a time becomes a keyframe
    Splittable = 2, ///< views may have data of their own
    Locked = 4,     ///< a flag for the host
    Hidden = 8      ///< a flag for the host, and a line in project text
};
Q_DECLARE_FLAGS(ParameterOptions, ParameterOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(ParameterOptions)

} // namespace Prm

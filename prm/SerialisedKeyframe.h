#pragma once

#include "prm/Context.h"
#include "prm/Export.h"

#include <QString>

namespace Prm {

/// A copy of one keyframe, for copying between parameters of the same type or as text.
///
/// \snippet parameter_panel.cpp copy
/// \threads The owning thread of the parameter from which it was copied: a compound's refers to the subparameters.
class PRM_EXPORT SerialisedKeyframe {
public:
    virtual ~SerialisedKeyframe();
    /// Time and view.
    virtual Context context() const = 0;
    /// Adds a number of frames to the time.
    virtual void adjustTime(float delta) = 0;
    /// The keyframe as a line of project text.
    virtual QString toString() const = 0;
    /// Reads what `toString` returns. Throws `std::runtime_error` for a text that is no keyframe line.
    virtual void setFromString(const QString& text) = 0;
    /// Whether the other has the same type, time, view, value and interpolation, compared exactly. Here: false.
    virtual bool equals(const SerialisedKeyframe& other) const;
    /// As `toString`, with all digits of the numbers. Here: as `toString`.
    virtual QString toExactString() const;

protected:
    SerialisedKeyframe() = default;
    SerialisedKeyframe(const SerialisedKeyframe&) = default;
    SerialisedKeyframe& operator=(const SerialisedKeyframe&) = default;
};

} // namespace Prm

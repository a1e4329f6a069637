#pragma once

#include "prm/Context.h"
#include "prm/Export.h"

#include <QString>

namespace Prm {

/// One keyframe held as a value of its own, to be copied between parameters of the same type or through text.
///
/// \snippet parameter_panel.cpp copy
/// \threads The thread that owns the parameter it was copied from: that of a compound points to the subparameters.
class PRM_EXPORT SerialisedKeyframe {
public:
    virtual ~SerialisedKeyframe();
    virtual Context context() const = 0;
    /// Shifts the time by that many frames.
    virtual void adjustTime(float delta) = 0;
    virtual QString toString() const = 0;
    /// Throws `std::runtime_error` for a text that is no keyframe line.
    virtual void setFromString(const QString& text) = 0;
    /// Whether the other is of the same kind and exactly like this one in place, value and interpolation. False here.
    virtual bool equals(const SerialisedKeyframe& other) const;
    /// As `toString`, with all digits that its numbers need. The same as `toString` here.
    virtual QString toExactString() const;

protected:
    SerialisedKeyframe() = default;
    SerialisedKeyframe(const SerialisedKeyframe&) = default;
    SerialisedKeyframe& operator=(const SerialisedKeyframe&) = default;
};

} // namespace Prm

#pragma once

#include "prm/Export.h"
#include "prm/Interpolation.h"
#include "prm/Time.h"
#include "prm/View.h"

#include <QString>
#include <QStringView>

#include <optional>
#include <stdexcept>

namespace Prm::detail {

/// Appends "keyframes.append( Key( <time>, <value>, <interpolation> ) )", or the Bezier form with its four numbers,
/// with the view's prefix for every view but the default one. Times and shape numbers have six significant digits and
/// custom kinds the name that project text has; or all digits that they need, and names that read back as the same
/// kind.
enum class Digits { Six, All };
PRM_EXPORT void writeKeyframe(QString& text, View view, Time time, const QString& value, const IType& itype,
                              Digits digits = Digits::Six);

/// A keyframe line that cannot be taken apart, which is the line's fault: what else is thrown while a line is read
/// comes from a host's observers and conversions.
class PRM_EXPORT MalformedKeyframe : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~MalformedKeyframe() override;
};

/// The time of a keyframe line, in single precision, which is part of the format. What is no number is 0, what is too
/// large for one the invalid time.
PRM_EXPORT Time readTime(QStringView text);

/// The time of a keyframe line with all its digits; none where it has no plain number.
PRM_EXPORT std::optional<double> exactTimeIn(QStringView line);

/// The name of a kind, also of a custom kind after the first one, which project text has no name for.
PRM_EXPORT QString exactName(Interpolation kind);
PRM_EXPORT QString exactName(Extrapolation kind);

/// A keyframe line taken apart; the value is still text.
struct KeyframeText {
    /// The invalid view when the line names none.
    View view = View::INVALID();
    Time time;
    /// A part of the line.
    QStringView value;
};

/// Takes a keyframe line apart; `itype` keeps its shape numbers unless the line is a Bezier one. Throws
/// `MalformedKeyframe` ("Cannot parse keyframe string '...'", "Failed to parse Key() block: '...'").
PRM_EXPORT KeyframeText readKeyframe(QStringView line, IType& itype);

} // namespace Prm::detail

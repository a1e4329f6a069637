#pragma once

#include "prm/Export.h"
#include "prm/View.h"

#include <QByteArray>

#include <string_view>

namespace Prm::document {

/// What a line of project text says of its parameter or group; `None` is a line that belongs to nothing.
enum class Key : quint8 {
    None,
    Header,
    Name,
    Views,
    Keyframe,
    Value,
    Hidden,
    Keyframed,
    Before,
    After,
    Master,
};

/// One line taken apart, as a reading only: its bytes stay where they are.
struct LineReading {
    Key key = Key::None;
    /// The dotted path of the parameter, or of the group for `Key::Name`.
    std::string_view path;
    /// The text for the parameter's own reader: everything after the path, from the view's prefix on.
    std::string_view entry;
    /// The view that the line names, invalid when it names none.
    View view = View::INVALID();
};

/// Splits a line without its end. A dot after "=" or "Key(" does not count.
PRM_EXPORT LineReading readLine(std::string_view line);

/// The text after the first "=".
PRM_EXPORT std::string_view textAfterEquals(std::string_view line);
/// The text of the time in a keyframe's declaration, empty where there is none.
PRM_EXPORT std::string_view keyframeTimeText(std::string_view line);
/// That time as the library reads it, but 0 where it is no number.
PRM_EXPORT float keyframeTime(std::string_view line);
PRM_EXPORT QString toText(std::string_view bytes);
/// Whether `toText` holds all of it.
PRM_EXPORT bool isUtf8(std::string_view bytes);
/// The bytes where they are.
PRM_EXPORT std::string_view toView(const QByteArray& bytes);
PRM_EXPORT QByteArray toBytes(std::string_view bytes);

} // namespace Prm::document

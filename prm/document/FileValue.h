#pragma once

#include "prm/Export.h"
#include "prm/KeyframeData.h"
#include "prm/ValueType.h"

#include <map>
#include <vector>

namespace Prm::document {

/// A value as a file writes it, whatever its type, and the line that it comes from. So an edit keeps each value's form:
/// `5.0` stays `5.0`, and values of unknown types go where numbers go.
struct PRM_EXPORT FileValue {
    static constexpr int noLine = -1;

    /// Null where no line gives one.
    QString text;
    /// Counted from 0; `noLine` for what an edit has put there.
    int line = noLine;

    bool operator==(const FileValue& other) const { return text == other.text; }
};

using FileKeyframe = KeyframeData<FileValue>;

inline bool operator==(const FileKeyframe& a, const FileKeyframe& b) {
    return a.time == b.time && a.value == b.value && a.interpolationData == b.interpolationData;
}

/// What a parameter says in one view.
struct FileView {
    /// In ascending order of time.
    std::vector<FileKeyframe> keys;
    FileValue value;

    bool operator==(const FileView& other) const { return keys == other.keys && value == other.value; }
};

using FileViews = std::map<quint32, FileView>;

} // namespace Prm::document

Q_DECLARE_METATYPE(Prm::document::FileValue)

/// Counts as a type that blends, so that keyframes keep their interpolation. Values between keyframes are never asked
/// for.
template <> struct Prm::ValueType<Prm::document::FileValue> : Prm::GeneralValueType<Prm::document::FileValue> {
    static constexpr int componentCount = 1;

    static void write(QString& text, const Prm::document::FileValue& value) { text += value.text; }
    /// The number of the line, a blank, and the text.
    static Prm::document::FileValue read(const QString& text);
    static double component(const Prm::document::FileValue& value, int /*i*/) { return value.text.toDouble(); }
    static Prm::document::FileValue fromComponents(const double* components);
};

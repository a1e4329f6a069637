#pragma once

#include "prm/ValueType.h"

namespace Tool {

/// A value as a file writes it, whatever its type, and the line that it comes from. So an edit keeps each value's form:
/// `5.0` stays `5.0`, and values of unknown types go where numbers go.
struct WrittenValue {
    static constexpr int noLine = -1;

    QString text;
    /// `noLine` for what an edit has put there.
    int line = noLine;

    bool operator==(const WrittenValue& other) const { return text == other.text; }
};

} // namespace Tool

Q_DECLARE_METATYPE(Tool::WrittenValue)

/// Counts as a type that blends, so that keyframes keep their interpolation. Values between keyframes are never asked
/// for.
template <> struct Prm::ValueType<Tool::WrittenValue> : Prm::GeneralValueType<Tool::WrittenValue> {
    static constexpr int componentCount = 1;

    static void write(QString& text, const Tool::WrittenValue& value) { text += value.text; }
    /// The number of the line, a blank, and the text.
    static Tool::WrittenValue read(const QString& text);
    static double component(const Tool::WrittenValue& value, int /*i*/) { return value.text.toDouble(); }
    static Tool::WrittenValue fromComponents(const double* components);
};

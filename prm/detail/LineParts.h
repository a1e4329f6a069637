#pragma once

#include "prm/ParameterStrings.h"
#include "prm/View.h"

#include <QString>

namespace Prm::detail {

// The parts of one parameter line, `<prefix><key>=<text>`, written and read.

/// What stands before the keys of a parameter: the prefix and, if asked for and not empty, the name and a dot.
inline QString lineStart(const QString& prefix, const QString& name, bool withName) {
    return withName && !name.isEmpty() ? prefix + name + QLatin1Char('.') : prefix;
}

/// Takes "name." off a line into `rest`; false when the line belongs to another name.
inline bool behindName(const QString& line, const QString& name, QString& rest) {
    if (line.size() <= name.size() || line.at(name.size()) != QLatin1Char('.') || !line.startsWith(name))
        return false;
    rest = line.mid(name.size() + 1);
    return true;
}

inline bool hasKey(const QString& line, const QString& key) {
    if (line.isEmpty())
        return false;
    // Most keys are told apart by their first letters, long before Qt has folded any.
    const ushort first = line.at(0).unicode();
    const bool mayBegin = first >= 128 || (first | 32) == (key.at(0).unicode() | 32);
    return mayBegin && (line.startsWith(key) || line.startsWith(key, Qt::CaseInsensitive));
}

/// The text between the first and the second "=".
inline QString textBetween(const QString& line) {
    const int start = line.indexOf(QLatin1Char('='));
    if (start < 0)
        return {};
    const int end = line.indexOf(QLatin1Char('='), start + 1);
    return line.mid(start + 1, end < 0 ? -1 : end - start - 1);
}

/// Everything behind the first "=".
inline QString textBehind(const QString& line) {
    const int start = line.indexOf(QLatin1Char('='));
    return start < 0 ? QString() : line.mid(start + 1);
}

/// Appends one line.
inline void addLine(QString& text, const QString& start, const QString& key, const QString& value) {
    text += start;
    text += key;
    text += QLatin1Char('=');
    text += value;
    text += QLatin1Char('\n');
}

} // namespace Prm::detail

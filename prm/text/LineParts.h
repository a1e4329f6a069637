#pragma once

#include "prm/ParameterStrings.h"
#include "prm/View.h"

#include <QString>
#include <QStringView>

#include <algorithm>

namespace Prm::detail {

// The parts of one parameter line, `<prefix><key>=<text>`, written and read.

/// The text before the keys of a parameter: the prefix and, if asked for and not empty, the name and a dot.
inline QString lineStart(const QString& prefix, const QString& name, bool withName) {
    return withName && !name.isEmpty() ? prefix + name + QLatin1Char('.') : prefix;
}

/// Every line is compared several times, each with few letters, for which Qt's comparisons are slow.
inline bool beginsWith(QStringView text, QStringView start) {
    return text.size() >= start.size() && std::equal(start.utf16(), start.utf16() + start.size(), text.utf16());
}

/// Takes "name." off a line into `rest`; false when the line belongs to another name.
inline bool afterName(QStringView line, QStringView name, QStringView& rest) {
    if (line.size() <= name.size() || line[name.size()] != QLatin1Char('.') || !beginsWith(line, name))
        return false;
    rest = line.mid(name.size() + 1);
    return true;
}

inline bool afterName(const QString& line, const QString& name, QString& rest) {
    QStringView found;
    const bool isIts = afterName(QStringView(line), QStringView(name), found);
    if (isIts)
        rest = found.toString();
    return isIts;
}

inline bool hasKey(QStringView line, QStringView key) {
    if (line.isEmpty())
        return false;
    // Most keys differ in their first letters, which are compared faster than Qt folds case.
    const ushort first = line.front().unicode();
    const bool mayBegin = first >= 128 || (first | 32) == (key.front().unicode() | 32);
    return mayBegin && (beginsWith(line, key) || line.startsWith(key, Qt::CaseInsensitive));
}

/// The text between the first and the second "=".
inline QString textBetween(const QString& line) {
    const int start = line.indexOf(QLatin1Char('='));
    if (start < 0)
        return {};
    const int end = line.indexOf(QLatin1Char('='), start + 1);
    return line.mid(start + 1, end < 0 ? -1 : end - start - 1);
}

/// Everything after the first "=".
inline QString textAfter(const QString& line) {
    const int start = line.indexOf(QLatin1Char('='));
    return start < 0 ? QString() : line.mid(start + 1);
}

/// Whether the rest of a line, after the name, has a key that every animatable parameter reads.
inline bool isUntypedLine(QStringView rest) {
    return hasKey(rest, ParameterStrings::hidden) || hasKey(rest, ParameterStrings::masterParameterId);
}

/// The same for parameters with values.
inline bool isParameterLine(QStringView rest) {
    if (beginsWith(rest, ParameterStrings::views))
        return true;
    View view;
    View::extractStringPrefix(rest, view);
    return hasKey(rest, ParameterStrings::keyframes) || hasKey(rest, ParameterStrings::value) || isUntypedLine(rest) ||
           hasKey(rest, ParameterStrings::isKeyframed) || hasKey(rest, ParameterStrings::after) ||
           hasKey(rest, ParameterStrings::before);
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

#pragma once

#include <QString>

#include <stdexcept>
#include <type_traits>

namespace Tool {

/// How the program ends, for those who call it.
enum ExitCode { Fine = 0, Findings = 1, Unusable = 2 };

template <class Part> QString messagePart(const Part& part) {
    if constexpr (std::is_arithmetic_v<Part>)
        return QString::number(part);
    else
        return QString(part);
}

/// A text whose places %1, %2 ... are filled in all at once, so that what is put there may hold such marks itself.
template <class... Parts> QString message(const char* pattern, const Parts&... parts) {
    if constexpr (sizeof...(parts) == 0)
        return QString::fromUtf8(pattern);
    else
        return QString::fromUtf8(pattern).arg(messagePart(parts)...);
}

/// "1 keyframe", "2 keyframes".
inline QString counted(qint64 count, const char* thing) {
    return message(count == 1 ? "%1 %2" : "%1 %2s", count, QString::fromUtf8(thing));
}

/// Ends the program with `Unusable` and one line for the user.
class Problem : public std::runtime_error {
public:
    template <class... Parts>
    explicit Problem(const char* pattern, const Parts&... parts)
        : std::runtime_error(message(pattern, parts...).toStdString()) {}
    QString text() const { return QString::fromUtf8(what()); }
};

/// A problem of the command line: the user is shown where to read on.
class WrongUse : public Problem {
public:
    using Problem::Problem;
};

} // namespace Tool

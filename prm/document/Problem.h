#pragma once

#include "prm/Export.h"

#include <QString>

#include <stdexcept>
#include <type_traits>

namespace Prm::document {

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

/// What is wrong with a text, in one line for the user.
class PRM_EXPORT Problem : public std::runtime_error {
public:
    template <class... Parts>
    explicit Problem(const char* pattern, const Parts&... parts)
        : std::runtime_error(message(pattern, parts...).toStdString()) {}
    QString text() const { return QString::fromUtf8(what()); }
};

} // namespace Prm::document

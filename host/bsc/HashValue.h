#pragma once

#include "host/Export.h"

#include <QByteArray>
#include <QString>

namespace Bsc {

/// The 128 bits that a `Hash` results in.
///
/// \snippet host_services.cpp hash
/// \threads A plain value.
struct PRM_HOST_EXPORT HashValue {
    quint64 high = 0;
    quint64 low = 0;

    /// Sixteen bytes, the most significant first: the same on every machine.
    QByteArray bytes() const;
    /// Those bytes as 32 lower-case hexadecimal digits, fit for a file name.
    QString toString() const;
};

inline bool operator==(const HashValue& a, const HashValue& b) noexcept {
    return a.high == b.high && a.low == b.low;
}
inline bool operator!=(const HashValue& a, const HashValue& b) noexcept {
    return !(a == b);
}
/// The order of the bytes.
inline bool operator<(const HashValue& a, const HashValue& b) noexcept {
    return a.high != b.high ? a.high < b.high : a.low < b.low;
}
inline uint qHash(const HashValue& value, uint seed = 0) noexcept {
    return static_cast<uint>(value.low ^ (value.low >> 32)) ^ seed;
}

} // namespace Bsc

Q_DECLARE_TYPEINFO(Bsc::HashValue, Q_PRIMITIVE_TYPE);

#pragma once

#include "prm/Export.h"

#include <QSize>

namespace Prm {

/// The resolution at which a project is worked on, as a part of its full size.
///
/// \snippet times_and_views.cpp proxy
/// \threads A plain value. `SystemProxyScale` has no lock: a host sets it while no other thread reads it.
class PRM_EXPORT ProxyScale {
public:
    enum Value : quint32 { Full = 0, Half = 1, Quarter = 2, System = 3 };

    constexpr ProxyScale(Value value = Full) : m_value(value) {}
    /// Any number can be stored; `toProxySize` refuses those without a name.
    explicit constexpr ProxyScale(quint32 value) : m_value(static_cast<Value>(value)) {}

    constexpr Value value() const { return m_value; }

    /// Width and height divided as integers, each truncated towards zero; `Full` and `System` leave the size alone.
    /// Throws `std::range_error` ("Illegal proxy scale enum value") for any other stored value.
    QSize toProxySize(const QSize& size) const;

    friend constexpr bool operator==(ProxyScale a, ProxyScale b) { return a.m_value == b.m_value; }
    friend constexpr bool operator!=(ProxyScale a, ProxyScale b) { return a.m_value != b.m_value; }

    /// The scale of the whole process, `System` at start; the host may change it.
    static ProxyScale SystemProxyScale;

private:
    Value m_value;
};

} // namespace Prm

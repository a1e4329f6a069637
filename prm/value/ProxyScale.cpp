#include "prm/ProxyScale.h"

#include <stdexcept>

namespace Prm {

ProxyScale ProxyScale::SystemProxyScale(ProxyScale::System);

QSize ProxyScale::toProxySize(const QSize& size) const {
    switch (m_value) {
    case Full:
    case System:
        return size;
    // Not QSize's own division, which rounds.
    case Half:
        return {size.width() / 2, size.height() / 2};
    case Quarter:
        return {size.width() / 4, size.height() / 4};
    }
    throw std::range_error("Illegal proxy scale enum value");
}

} // namespace Prm

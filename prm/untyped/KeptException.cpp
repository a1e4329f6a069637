#include "prm/untyped/KeptException.h"

#include <utility>

namespace Prm::detail {

namespace {

thread_local KeptException* innermost = nullptr;

} // namespace

KeptException::KeptException(const BasicParameter& parameter)
    : m_parameter(&parameter), m_outer(std::exchange(innermost, this)) {}

KeptException::~KeptException() {
    innermost = m_outer;
}

void KeptException::goOn() const {
    if (m_exception)
        std::rethrow_exception(m_exception);
}

/// Taken, so that silent calls from within, by observers for instance, do not fill it.
KeptException* KeptException::take(const BasicParameter& parameter) noexcept {
    const bool isItsOwn = innermost && innermost->m_parameter == &parameter;
    return isItsOwn ? std::exchange(innermost, nullptr) : nullptr;
}

void KeptException::giveBack(KeptException* keeper) noexcept {
    if (keeper)
        innermost = keeper;
}

} // namespace Prm::detail

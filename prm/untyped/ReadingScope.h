#pragma once

#include "prm/ParameterWithoutType.h"

#include <utility>

namespace Prm {

/// While a line is read, of all changes only VIEW_ADDED is emitted. One guard for all that is put back, because there
/// is a scope for each line.
class ParameterWithoutType::ReadingScope {
public:
    explicit ReadingScope(ParameterWithoutType& parameter)
        : m_parameter(parameter), m_guard(parameter), m_wereBlocked(parameter.blockSignals(true)),
          m_wasPermitted(parameter.overrideBlockedSignals(ParameterChange::VIEW_ADDED, true)),
          m_previous(std::exchange(parameter.m_readingIn, true)) {}
    ~ReadingScope() {
        if (!m_guard.alive())
            return;
        m_parameter.m_readingIn = m_previous;
        m_parameter.overrideBlockedSignals(ParameterChange::VIEW_ADDED, m_wasPermitted);
        if (!m_wereBlocked)
            m_parameter.blockSignals(false);
    }
    Q_DISABLE_COPY(ReadingScope)

private:
    ParameterWithoutType& m_parameter;
    const detail::LifeGuard m_guard;
    const bool m_wereBlocked;
    const bool m_wasPermitted;
    const bool m_previous;
};

} // namespace Prm

#pragma once

#include "prm/ParameterWithoutType.h"

namespace Prm {

class ParameterWithoutType::ReadingScope {
public:
    explicit ReadingScope(ParameterWithoutType& parameter)
        : m_parameter(parameter), m_guard(parameter), m_permit(parameter, ParameterChange::VIEW_ADDED),
          m_wasBlocked(parameter.blockSignals(true)), m_previous(parameter.m_readingIn) {
        m_parameter.m_readingIn = true;
    }
    ~ReadingScope() {
        if (!m_guard.alive())
            return;
        m_parameter.m_readingIn = m_previous;
        if (!m_wasBlocked)
            m_parameter.blockSignals(false);
    }
    Q_DISABLE_COPY(ReadingScope)

private:
    ParameterWithoutType& m_parameter;
    detail::LifeGuard m_guard;
    ScopedSignalPermit m_permit;
    bool m_wasBlocked;
    bool m_previous;
};

} // namespace Prm

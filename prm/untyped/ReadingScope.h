#pragma once

#include "host/bsc/ScopedSignalBlocker.h"
#include "prm/ParameterWithoutType.h"

namespace Prm {

class ParameterWithoutType::ReadingScope {
public:
    explicit ReadingScope(ParameterWithoutType& parameter)
        : m_parameter(parameter), m_guard(parameter), m_blocker(parameter),
          m_permit(parameter, ParameterChange::VIEW_ADDED), m_previous(parameter.m_readingIn) {
        m_parameter.m_readingIn = true;
    }
    ~ReadingScope() {
        if (m_guard.alive())
            m_parameter.m_readingIn = m_previous;
    }
    Q_DISABLE_COPY(ReadingScope)

private:
    ParameterWithoutType& m_parameter;
    detail::LifeGuard m_guard;
    Bsc::ScopedSignalBlocker m_blocker;
    ScopedSignalPermit m_permit;
    bool m_previous;
};

} // namespace Prm

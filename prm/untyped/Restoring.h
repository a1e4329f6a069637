#pragma once

#include "prm/BasicParameter.h"

#include <exception>

namespace Prm::detail {

/// Changes a parameter; when that throws, goes back before the exception goes on. What going back throws is dropped: it
/// is an observer's, and the first exception is under way.
template <class Change, class Back>
void changeOrGoBack(const BasicParameter& parameter, const Change& change, const Back& back) {
    const LifeGuard guard(parameter);
    try {
        change();
    } catch (...) {
        try {
            if (guard.alive())
                back();
        } catch (...) { // NOLINT(bugprone-empty-catch)
        }
        throw;
    }
}

/// Takes several steps, all of them; then the first of their exceptions goes on.
class FirstException {
public:
    template <class Step> void during(const Step& step) {
        try {
            step();
        } catch (...) {
            if (!m_first)
                m_first = std::current_exception();
        }
    }
    void goOn() const {
        if (m_first)
            std::rethrow_exception(m_first);
    }

private:
    std::exception_ptr m_first;
};

} // namespace Prm::detail

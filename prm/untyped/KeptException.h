#pragma once

#include "prm/Export.h"

#include <exception>

namespace Prm {
class BasicParameter;
}

namespace Prm::detail {

/// Keeps the exception that the silent form of an operation swallows for the throwing form that has called it, so that
/// the exception goes on to the caller although a virtual operation that never throws lies between.
class PRM_EXPORT KeptException {
public:
    /// For calls of this parameter's silent forms on this thread.
    explicit KeptException(const BasicParameter& parameter);
    ~KeptException();
    KeptException(const KeptException&) = delete;
    KeptException& operator=(const KeptException&) = delete;

    /// Throws what was kept, if anything.
    void goOn() const;

    /// Calls the function and swallows what it throws. The innermost keeper keeps it if it is for this parameter.
    template <class Function> static void during(const BasicParameter& parameter, const Function& function) noexcept {
        KeptException* const keeper = take(parameter);
        try {
            function();
        } catch (...) {
            if (keeper)
                keeper->m_exception = std::current_exception();
        }
        giveBack(keeper);
    }

private:
    static KeptException* take(const BasicParameter& parameter) noexcept;
    static void giveBack(KeptException* keeper) noexcept;

    const BasicParameter* m_parameter;
    KeptException* m_outer;
    std::exception_ptr m_exception;
};

} // namespace Prm::detail

#pragma once

#include "prm/Export.h"
#include "prm/untyped/VirtualTable.h"

#include <atomic>
#include <cstdint>

namespace Prm {

template <class T> class Parameter;

namespace detail {

/// The gate between `detail::evaluate` and the hooks of a host's class. One class has hooks that do what
/// `detail::evaluate` does: `CurveParameter<T>` for types that blend, otherwise `Parameter<T>`.
template <class T> class PRM_EXPORT HookGate {
public:
    /// For the constructor of that class.
    static void setEvaluated(const Parameter<T>& parameter) {
        evaluatedTable().store(virtualTableOf(&parameter), std::memory_order_relaxed);
    }
    /// Whether the class of a parameter implements a virtual operation otherwise than that class.
    template <class Operation> static bool overrides(const Parameter<T>& parameter, Operation operation) {
        const char* const table = evaluatedTable().load(std::memory_order_relaxed);
        const void* const evaluated = implementationIn<Parameter<T>>(table, operation);
        return !evaluated || implementationOf<Parameter<T>>(parameter, operation) != evaluated;
    }
    /// Whether values come from hooks.
    PRM_ALWAYS_INLINE bool asksHooks(const Parameter<T>& parameter) const {
        const auto table = reinterpret_cast<std::uintptr_t>(virtualTableOf(&parameter));
        const std::uintptr_t known = m_evaluatedAs.load(std::memory_order_relaxed);
        return known != table && (known == table + 1 || learnsToAskHooks(parameter));
    }

private:
    static std::atomic<const char*>& evaluatedTable() {
        static std::atomic<const char*> table{nullptr};
        return table;
    }
    PRM_NEVER_INLINE bool learnsToAskHooks(const Parameter<T>& parameter) const;

    /// The virtual table that the parameter had when it was evaluated last, one more if its class overrides a hook.
    mutable std::atomic<std::uintptr_t> m_evaluatedAs{1};
};

} // namespace detail

} // namespace Prm

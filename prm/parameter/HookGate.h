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
    /// What the class of a parameter overrides: nothing that evaluation uses; hooks; hooks, and the two operations that
    /// decide from which views a value is made.
    enum Overridden : std::uintptr_t { Nothing, Hooks, HooksAndTraits };
    PRM_ALWAYS_INLINE Overridden overridden(const Parameter<T>& parameter) const {
        const auto table = reinterpret_cast<std::uintptr_t>(virtualTableOf(&parameter));
        const std::uintptr_t known = m_evaluatedAs.load(std::memory_order_relaxed);
        if (known == table)
            return Nothing;
        return known - table <= HooksAndTraits ? static_cast<Overridden>(known - table) : learn(parameter);
    }

private:
    static std::atomic<const char*>& evaluatedTable() {
        static std::atomic<const char*> table{nullptr};
        return table;
    }
    PRM_NEVER_INLINE Overridden learn(const Parameter<T>& parameter) const;

    /// The virtual table that the parameter had when it was evaluated last, plus what its class overrides.
    mutable std::atomic<std::uintptr_t> m_evaluatedAs{HooksAndTraits};
};

} // namespace detail

} // namespace Prm

#pragma once

#include <utility>

namespace Prm::detail {

class LifeGuard;

/// Base of objects that an observer may destroy while one of their own operations is still running. A `LifeGuard` on
/// that operation's stack knows afterwards whether the object still exists. Costs one pointer, allocates nothing,
/// and belongs to the thread that owns the object.
class Mortal {
protected:
    Mortal() = default;
    Mortal(const Mortal&) {}
    Mortal& operator=(const Mortal&) { return *this; }
    inline ~Mortal();

private:
    friend class LifeGuard;
    mutable LifeGuard* m_guards = nullptr;
};

// The guard takes itself off the list, unless the object is gone, and the list with it. The compiler sees only the
// "unless".
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif

/// Knows whether the object that it was made for is still alive.
class LifeGuard {
public:
    explicit LifeGuard(const Mortal& object) : m_object(&object) { enter(); }
    /// Of the same object, if it is alive.
    LifeGuard(const LifeGuard& other) noexcept : m_object(other.m_object) { enter(); }
    LifeGuard& operator=(const LifeGuard&) = delete;
    ~LifeGuard() {
        if (m_object)
            leave();
    }

    bool alive() const { return m_object != nullptr; }

private:
    friend class Mortal;

    void enter() noexcept {
        if (m_object)
            m_next = std::exchange(m_object->m_guards, this);
    }
    void leave() {
        LifeGuard** link = &m_object->m_guards;
        while (*link != this)
            link = &(*link)->m_next;
        *link = m_next;
    }

    const Mortal* m_object;
    LifeGuard* m_next = nullptr;
};

#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 12
#pragma GCC diagnostic pop
#endif

Mortal::~Mortal() {
    for (LifeGuard* guard = m_guards; guard; guard = guard->m_next)
        guard->m_object = nullptr;
}

} // namespace Prm::detail

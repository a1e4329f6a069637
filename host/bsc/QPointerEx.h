#pragma once

#include "host/Export.h"

#include <QHashFunctions>
#include <QObject>
#include <QPointer>
#include <QWeakPointer>

namespace Bsc::detail {

/// The identity of an object during its life. Weak pointers to one object are equal, also after its death, and unequal
/// to those to a later object at the same address. Null for null.
PRM_HOST_EXPORT QWeakPointer<const QObject> lifeOf(const QObject* object);

/// A guarded pointer whose identity survives what it points to, so that it can be an element of a `UniqBag` or a key of
/// a `QHash`. Once the object is deleted it returns null, and still equals, with the same hash, the pointers that were
/// made to that object, and no others: neither null nor a pointer to a new object at the same address.
///
/// Used as `QPointerEx<Foo, QPointer>`. Foo derives from QObject, not virtually, and may be incomplete where the type
/// is only named. The same thread rules as for QPointer.
template <class T, template <class> class Pointer> class QPointerEx {
public:
    QPointerEx() = default;
    /// May throw `std::bad_alloc`. The object must not have reached the destructor of QObject.
    QPointerEx(T* object) : m_object(object), m_life(lifeOf(object)) {}
    // Copies also serve as moves: a pointer that was moved from would keep an address without an identity.
    QPointerEx(const QPointerEx&) = default;
    QPointerEx& operator=(const QPointerEx&) = default;
    ~QPointerEx() = default;

    /// The object while it lives, else null.
    T* data() const { return isNull() ? nullptr : m_object; }
    T* get() const { return data(); }
    T* operator->() const { return data(); }
    T& operator*() const { return *data(); }

    /// Whether there is no object to use: none was ever set, or it was deleted.
    bool isNull() const { return m_life.isNull(); }
    explicit operator bool() const { return !isNull(); }

    /// Whether both were made to the same object, alive or dead, or both to none.
    friend bool operator==(const QPointerEx& a, const QPointerEx& b) { return a.m_life == b.m_life; }
    friend bool operator!=(const QPointerEx& a, const QPointerEx& b) { return !(a == b); }
    friend uint qHash(const QPointerEx& pointer, uint seed = 0) { return ::qHash(pointer.m_object, seed); }

private:
    T* m_object = nullptr;
    QWeakPointer<const QObject> m_life;
};

} // namespace Bsc::detail

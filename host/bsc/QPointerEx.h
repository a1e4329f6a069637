#pragma once

#include <QHashFunctions>
#include <QObject>
#include <QPointer>

namespace Bsc::detail {

/// The identity of an object during its life: the record that Qt keeps of it for all guarded pointers to it. The record
/// outlives the object for as long as a guarded pointer is left, so neither the address of the object nor that of the
/// record can be mistaken for a later object's. Null for null. The caller holds a guarded pointer to the object.
inline const void* lifeOf(const QObject* object) {
    if (!object)
        return nullptr;
    QtSharedPointer::ExternalRefCountData* const record = QtSharedPointer::ExternalRefCountData::getAndRef(object);
    record->weakref.deref();
    return record;
}

/// A guarded pointer whose identity survives what it points to, so that it can be an element of a `UniqBag` or a key of
/// a `QHash`. Once the object dies it gives null, and still equals, with the same hash, the pointers that were made to
/// that object, and no others: neither null nor a pointer to a new object at the same address.
///
/// Used as `QPointerEx<Foo, QPointer>`. Foo derives from QObject, not virtually, and may be incomplete where the type
/// is only named. The same thread rules as for QPointer.
template <class T, template <class> class Pointer> class QPointerEx {
public:
    QPointerEx() = default;
    /// May throw `std::bad_alloc`. The object must not have reached the destructor of QObject.
    QPointerEx(T* object) : m_guard(object), m_life(lifeOf(object)) {}
    // Copies also serve as moves: a pointer that was moved from would keep an identity that nothing guards.
    QPointerEx(const QPointerEx&) = default;
    QPointerEx& operator=(const QPointerEx&) = default;
    ~QPointerEx() = default;

    /// The object while it lives, else null.
    T* data() const { return m_guard.data(); }
    T* get() const { return data(); }
    T* operator->() const { return data(); }
    T& operator*() const { return *data(); }

    /// Whether there is no object to use: none was ever set, or it has died.
    bool isNull() const { return m_guard.isNull(); }
    explicit operator bool() const { return !isNull(); }

    /// Whether both were made to the same object, alive or dead, or both to none.
    friend bool operator==(const QPointerEx& a, const QPointerEx& b) { return a.m_life == b.m_life; }
    friend bool operator!=(const QPointerEx& a, const QPointerEx& b) { return !(a == b); }
    friend uint qHash(const QPointerEx& pointer, uint seed = 0) { return ::qHash(pointer.m_life, seed); }

private:
    Pointer<T> m_guard;
    const void* m_life = nullptr;
};

} // namespace Bsc::detail

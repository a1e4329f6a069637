#pragma once

#include <cstdint>
#include <cstring>

namespace Prm::detail {

// C++ cannot tell whether a class overrides a virtual operation; the virtual tables of the Itanium C++ ABI, which g++
// and clang use, show it.

/// The virtual table of an object, which is different for each class. Null if the layout of objects is not known.
inline const char* virtualTableOf(const void* object) {
#if defined(__GXX_ABI_VERSION) && !defined(_MSC_VER)
    const char* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return table;
#else
    static_cast<void>(object);
    return nullptr;
#endif
}

/// Whether two objects are known to be of the same class. Both pointers are to the same base of it.
inline bool areOfOneClass(const void* one, const void* other) {
    const char* const table = virtualTableOf(one);
    return table && table == virtualTableOf(other);
}

/// The function that a virtual operation calls by a table of `Object`, the class that declares the operation; null
/// where there is no table. It is only to be compared: an override has an address of its own, and so has a copy of an
/// inline function in another library.
template <class Object, class Operation> const void* implementationIn(const char* table, Operation Object::*operation) {
#if defined(__GXX_ABI_VERSION) && !defined(_MSC_VER)
    struct {
        std::intptr_t pointer;
        std::intptr_t adjustment;
    } parts{};
    static_assert(sizeof parts == sizeof operation, "another layout of pointers to members");
    std::memcpy(&parts, &operation, sizeof parts);
#if defined(__arm__) || defined(__aarch64__)
    const std::intptr_t offset = parts.pointer;
#else
    const std::intptr_t offset = parts.pointer - 1;
#endif
    const void* function = nullptr;
    if (table)
        std::memcpy(&function, table + offset, sizeof function);
    return function;
#else
    static_cast<void>(table);
    static_cast<void>(operation);
    return nullptr;
#endif
}

template <class Object, class Operation>
const void* implementationOf(const Object& object, Operation Object::*operation) {
    return implementationIn(virtualTableOf(&object), operation);
}

} // namespace Prm::detail

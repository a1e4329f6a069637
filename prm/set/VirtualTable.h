#pragma once

#include <cstdint>
#include <cstring>

namespace Prm::detail {

/// The function that a virtual operation of an object calls, as the object's virtual table holds it; null where the
/// layout of tables is not known. It is only to be compared: an override has an address of its own, and so has a copy
/// of an inline function in another library.
///
/// Follows the Itanium C++ ABI, which g++ and clang have in common. `Object` is where the table is that declares the
/// operation.
template <class Object, class Operation>
const void* implementationOf(const Object& object, Operation Object::*operation) {
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
    const char* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
    const void* function = nullptr;
    std::memcpy(&function, table + offset, sizeof function);
    return function;
#else
    static_cast<void>(object);
    static_cast<void>(operation);
    return nullptr;
#endif
}

} // namespace Prm::detail

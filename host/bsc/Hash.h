#pragma once

#include "host/Export.h"
#include "host/bsc/HashValue.h"

#include <cstddef>
#include <memory>

namespace Bsc {

/// Hashes a stream of bytes to 128 bits (XXH3). The result depends only on the bytes and their order, and is the same
/// on every machine and in every run, so that it can name files in a shared cache. Not for secrets: collisions can be
/// made on purpose.
///
/// A copy continues from the state of the original.
///
/// \snippet host_services.cpp hash
/// \threads One thread at a time for each object; different objects share nothing.
class PRM_HOST_EXPORT Hash {
public:
    /// The hash of no bytes yet. Throws `std::bad_alloc`.
    Hash();
    Hash(const Hash& other);
    Hash& operator=(const Hash& other);
    ~Hash();

    /// Adds bytes of memory. Convert numbers to one byte order first if machines of different byte orders must agree.
    /// Size 0 does nothing, even with null; null with another size throws `std::invalid_argument`.
    void addData(const void* data, std::size_t size);
    /// The hash of all bytes so far. More may be added afterwards.
    HashValue result() const;

private:
    struct Release {
        void operator()(void* state) const noexcept;
    };
    /// Allocated by the hashing library, whose header is not included here.
    std::unique_ptr<void, Release> m_state;
};

} // namespace Bsc

#pragma once

#include "host/Export.h"
#include "host/bsc/HashValue.h"

#include <cstddef>
#include <memory>

namespace Bsc {

/// Hashes a stream of bytes to 128 bits (XXH3). Only the bytes and their order count, not how they were cut into
/// pieces; equal bytes give equal results on every machine, in every run, so that results can name files in a shared
/// cache. Not for secrets: whoever chooses the bytes can make two streams collide.
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

    /// Adds bytes as they lie in memory. Numbers have to be brought into one byte order first where machines of
    /// different order shall agree. No bytes change nothing, also with null; null with a size throws
    /// `std::invalid_argument`.
    void addData(const void* data, std::size_t size);
    /// The hash of all bytes so far. More may be added afterwards.
    HashValue result() const;

private:
    struct Release {
        void operator()(void* state) const noexcept;
    };
    /// Made and sized by the hashing library, whose header stays out of this one.
    std::unique_ptr<void, Release> m_state;
};

} // namespace Bsc

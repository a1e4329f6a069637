#include "host/bsc/Hash.h"

#include <xxhash.h>

#include <new>
#include <stdexcept>

namespace Bsc {

namespace {

XXH3_state_t* typed(void* state) {
    return static_cast<XXH3_state_t*>(state);
}

XXH3_state_t* makeState() {
    XXH3_state_t* const state = XXH3_createState();
    if (!state)
        throw std::bad_alloc();
    return state;
}

} // namespace

void Hash::Release::operator()(void* state) const noexcept {
    XXH3_freeState(typed(state));
}

Hash::Hash() : m_state(makeState()) {
    XXH3_128bits_reset(typed(m_state.get()));
}

Hash::Hash(const Hash& other) : m_state(makeState()) {
    XXH3_copyState(typed(m_state.get()), typed(other.m_state.get()));
}

Hash& Hash::operator=(const Hash& other) {
    if (this != &other)
        XXH3_copyState(typed(m_state.get()), typed(other.m_state.get()));
    return *this;
}

Hash::~Hash() = default;

void Hash::addData(const void* data, std::size_t size) {
    if (size == 0)
        return;
    if (!data)
        throw std::invalid_argument("Bsc::Hash: no data to add");
    XXH3_128bits_update(typed(m_state.get()), data, size);
}

HashValue Hash::result() const {
    const XXH128_hash_t digest = XXH3_128bits_digest(typed(m_state.get()));
    return {digest.high64, digest.low64};
}

} // namespace Bsc

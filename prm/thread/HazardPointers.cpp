#include "prm/thread/HazardPointers.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace Prm::detail {

namespace {

std::atomic<HazardPointers*> firstRecord{nullptr};

} // namespace

#if defined(__GNUC__)
__thread HazardPointers* t_hazardPointers = nullptr;
#else
thread_local HazardPointers* t_hazardPointers = nullptr;
#endif

Protected::~Protected() = default;

HazardPointers& HazardPointers::takeForThisThread() {
    static thread_local bool ended = false;
    struct Returned {
        ~Returned() {
            t_hazardPointers->m_taken.store(false, std::memory_order_release);
            t_hazardPointers = nullptr;
            ended = true;
        }
    };
    t_hazardPointers = &takeOne();
    // What is taken by the last destructors of a thread stays taken.
    if (!ended) {
        static thread_local Returned returned;
        static_cast<void>(returned);
    }
    return *t_hazardPointers;
}

HazardPointers& HazardPointers::takeOne() {
    for (HazardPointers* free = firstRecord.load(std::memory_order_acquire); free; free = free->m_next) {
        bool taken = false;
        if (free->m_taken.compare_exchange_strong(taken, true))
            return *free;
    }
    static std::atomic<std::uint32_t> lastNumber{0};
    auto* const made = new HazardPointers;
    made->m_number = ++lastNumber;
    made->m_next = firstRecord.load();
    while (!firstRecord.compare_exchange_weak(made->m_next, made)) {
    }
    return *made;
}

bool HazardPointers::isProtectedElsewhere(const Protected* block) const {
    for (const HazardPointers* other = firstRecord.load(); other; other = other->m_next) {
        const auto names = [=](const auto& pointer) { return pointer.load() == block; };
        if (other != this && std::any_of(other->m_pointers.begin(), other->m_pointers.end(), names))
            return true;
    }
    return false;
}

void HazardPointers::waitForReaders(const Protected* block) const {
    for (int attempt = 0; isProtectedElsewhere(block); ++attempt)
        waitALittle(attempt);
}

void waitALittle(int attempt) {
    constexpr int patience = 64;
    if (attempt < patience)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::microseconds(50));
}

/// False where this thread has marked it already.
bool HazardPointers::mark(Protected& block) {
    for (HeldCopy* copy = m_innermostCopy; copy; copy = copy->m_below) {
        if (copy->m_block == &block || copy->m_guide == &block)
            copy->m_guide = nullptr;
    }
    return block.m_editor.exchange(m_number) == 0;
}

Replacement::Replacement(Protected& guide, std::vector<Protected*> discarded)
    : m_guide(guide), m_discarded(std::move(discarded)) {
    HazardPointers& thread = HazardPointers::ofThisThread();
    for (Protected* const block : m_discarded)
        thread.mark(*block);
    for (const Protected* const block : m_discarded)
        thread.waitForReaders(block);
}

Replacement::~Replacement() {
    // They keep their mark: a reader that has just published one takes that back and looks again.
    std::for_each(m_discarded.begin(), m_discarded.end(), retire);
}

void retire(Protected* block) {
    HazardPointers::ofThisThread().waitForReaders(block);
    delete block;
}

} // namespace Prm::detail

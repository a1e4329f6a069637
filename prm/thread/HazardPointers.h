#pragma once

#include "prm/Export.h"

#include <QtGlobal>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Prm::detail {

/// Hazard pointers: reading on any thread while the owning thread edits.
///
/// A thread that reads a block first publishes the block's address in a record of its own (it *protects* the block).
/// The owning thread edits a block in place while it has the block *exclusively*: it marks the block, then waits until
/// no record of another thread names it. A reader that finds the mark withdraws its pointer and tries again. A block
/// that is no longer reachable is *retired*: it is deleted when no record names it. Publishing and marking are
/// sequentially consistent, so of a reader and a writer at the same time at least one sees the other.
///
/// Readers write only to their own records, so they do not slow each other down. No code of a host runs while a block
/// is protected. So protections do not nest, a writer waits only briefly, and there is no deadlock.

class HazardPointers;
class HeldCopy;
class Protected;
PRM_EXPORT void retire(Protected* block);

/// One block of data that is read on any thread. Deleted through this base.
class PRM_EXPORT Protected {
public:
    Protected() = default;
    /// A copy is another block, which no thread reads or edits yet.
    Protected(const Protected&) {}
    Protected& operator=(const Protected&) { return *this; }
    virtual ~Protected();

private:
    friend class Exclusive;
    friend class HazardPointers;
    friend class Protection;

    /// The number of the thread that edits the block, or 0. Last, so that what a derived class begins with shares its
    /// word.
    std::atomic<std::uint32_t> m_editor{0};
};

/// One thread's record. Records are never freed; a new thread takes over that of one that has ended.
class PRM_EXPORT HazardPointers {
public:
    PRM_ALWAYS_INLINE static HazardPointers& ofThisThread();
    /// A number that the thread keeps from one protection to the next.
    int& cursor() { return m_cursor; }

private:
    friend class Exclusive;
    friend class HeldCopy;
    friend class Protection;
    friend class Replacement;
    friend PRM_EXPORT void retire(Protected* block);

    /// The block that is read, and the one whose lists lead to it.
    static constexpr std::size_t capacity = 2;

    static HazardPointers& takeForThisThread();
    static HazardPointers& takeOne();
    bool mark(Protected& block);
    bool isProtectedElsewhere(const Protected* block) const;
    void waitForReaders(const Protected* block) const;

    /// Read by writers; this cache line is written by the thread alone.
    alignas(64) std::array<std::atomic<const Protected*>, capacity> m_pointers{};
    int m_cursor = 0;
    std::uint32_t m_number = 0;
    HeldCopy* m_innermostCopy = nullptr;
    HazardPointers* m_next = nullptr;
    std::atomic<bool> m_taken{true};
};

// Reached at once, and what follows is inlined, because an evaluation takes only a few times as long as a call.
#if defined(__GNUC__)
extern PRM_EXPORT __thread HazardPointers* t_hazardPointers __attribute__((tls_model("initial-exec")));
#else
extern PRM_EXPORT thread_local HazardPointers* t_hazardPointers;
#endif

HazardPointers& HazardPointers::ofThisThread() {
    return t_hazardPointers ? *t_hazardPointers : takeForThisThread();
}

/// Lets other threads run, longer with every attempt (back-off).
PRM_EXPORT void waitALittle(int attempt);

/// What this thread protects until the scope ends: one block, and meanwhile perhaps another one, its guide, whose lists
/// say which block that is. There is one scope at a time on a thread.
class Protection {
public:
    PRM_ALWAYS_INLINE Protection() : m_thread(HazardPointers::ofThisThread()) {
        Q_ASSERT(!m_thread.m_pointers[0].load());
    }
    PRM_ALWAYS_INLINE ~Protection() { release(); }
    Protection(const Protection&) = delete;
    Protection& operator=(const Protection&) = delete;

    /// Protects the block that was read from the source. Returns false, with nothing protected, if the source has
    /// changed, in which case the block may already be deleted, or if a thread edits the block.
    template <class Block> PRM_ALWAYS_INLINE bool protect(const Block* block, const std::atomic<Block*>& source) {
        return publish(0, block, [&] { return source.load() == block; });
    }
    /// The same for a block that lives at least as long as the protection, or as the guide is protected.
    PRM_ALWAYS_INLINE bool protect(const Protected& block) {
        return publish(0, &block, [] { return true; });
    }
    PRM_ALWAYS_INLINE bool protectGuide(const Protected& guide) {
        return publish(1, &guide, [] { return true; });
    }
    void releaseGuide() { m_thread.m_pointers[1].store(nullptr, std::memory_order_release); }
    PRM_ALWAYS_INLINE void release() { m_thread.m_pointers[0].store(nullptr, std::memory_order_release); }
    HazardPointers& thread() const { return m_thread; }

private:
    template <class IsStillThere>
    PRM_ALWAYS_INLINE bool publish(std::size_t place, const Protected* block, const IsStillThere& isStillThere) {
        m_thread.m_pointers[place].store(block, std::memory_order_seq_cst);
        if (isStillThere() && isReadable(*block))
            return true;
        m_thread.m_pointers[place].store(nullptr, std::memory_order_release);
        return false;
    }
    PRM_ALWAYS_INLINE bool isReadable(const Protected& block) const {
        const std::uint32_t editor = block.m_editor.load(std::memory_order_seq_cst);
        return editor == 0 || editor == m_thread.m_number;
    }

    HazardPointers& m_thread;
};

/// A scope in which no other thread reads a block, so that it can be edited in place. Scopes of one block may be
/// nested.
class PRM_EXPORT Exclusive {
public:
    /// Null: no block.
    explicit Exclusive(Protected* block)
        : m_thread(HazardPointers::ofThisThread()), m_block(block && m_thread.mark(*block) ? block : nullptr) {
        if (block)
            m_thread.waitForReaders(block);
    }
    explicit Exclusive(Protected& block) : Exclusive(&block) {}
    ~Exclusive() {
        if (m_block)
            m_block->m_editor.store(0, std::memory_order_release);
    }
    Exclusive(const Exclusive&) = delete;
    Exclusive& operator=(const Exclusive&) = delete;

private:
    HazardPointers& m_thread;
    /// Null where a scope around this one has marked the block.
    Protected* const m_block;
};

/// The same of a guide and of blocks that are replaced; these are retired at the end, when they must have become
/// unreachable.
class PRM_EXPORT Replacement {
public:
    Replacement(Protected& guide, std::vector<Protected*> discarded);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

private:
    const Exclusive m_guide;
    const std::vector<Protected*> m_discarded;
};

/// Deletes a block that is no longer reachable, once no thread reads it.
PRM_EXPORT void retire(Protected* block);

/// A copy of a block's contents that this thread reads while code of a host runs. The copies of a thread are a stack.
/// An edit on this thread invalidates the copies of the blocks that it changes.
class PRM_EXPORT HeldCopy {
public:
    HeldCopy(const HeldCopy&) = delete;
    HeldCopy& operator=(const HeldCopy&) = delete;

    static const HeldCopy* innermost() { return HazardPointers::ofThisThread().m_innermostCopy; }
    const HeldCopy* below() const { return m_below; }
    /// Whether the copy was found by way of the guide, and is still true.
    bool isFoundBy(const Protected& guide) const { return m_guide == &guide; }
    bool isTrue() const { return m_guide != nullptr; }
    HazardPointers& thread() const { return m_thread; }

protected:
    /// Of a block that was found by way of the guide.
    HeldCopy(const Protected& block, const Protected& guide, HazardPointers& thread)
        : m_guide(&guide), m_block(&block), m_thread(thread), m_below(std::exchange(thread.m_innermostCopy, this)) {}
    HeldCopy(const HeldCopy& around, HazardPointers& thread)
        : m_guide(around.m_guide), m_block(around.m_block), m_thread(thread),
          m_below(std::exchange(thread.m_innermostCopy, this)) {}
    ~HeldCopy() { m_thread.m_innermostCopy = m_below; }

private:
    friend class HazardPointers;

    /// Null once the copy is no longer true.
    const Protected* m_guide;
    const Protected* m_block;
    HazardPointers& m_thread;
    HeldCopy* const m_below;
};

} // namespace Prm::detail

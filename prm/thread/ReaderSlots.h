#pragma once

#include "prm/Export.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Prm::detail {

/// How evaluation on any thread lives beside the edits of the owning thread.
///
/// Every thread announces the blocks that it reads in a record of its own; nothing that two readers share is written,
/// so readers do not slow each other down. A writer marks its block, looks through the records, and waits until no
/// other thread reads that block; a reader that finds its block marked steps back and tries again. The announcement and
/// the mark are both sequentially consistent, so at least one side always sees the other.
///
/// A thread that somebody waits for must not wait for a writer that is itself still waiting: it may pass a mark that is
/// only `Waiting`, and the writer looks once more after it has raised the mark to `Writing`. A writer in that last
/// state waits for nobody: whenever it has to, for readers of a further block or for another writer, it lowers all its
/// marks to `Waiting` meanwhile. So an edit calls out only where its data may be read.

class Lockable;
class ReaderRecord;
class WriteScope;
PRM_EXPORT void retire(Lockable* block);

/// What is announced and marked: one block of data. Deleted through this base once nobody reads it any more.
class PRM_EXPORT Lockable {
public:
    Lockable() = default;
    /// A copy is another block: unmarked and unread.
    Lockable(const Lockable&) {}
    Lockable& operator=(const Lockable&) { return *this; }
    virtual ~Lockable();

private:
    friend class BriefReadScope;
    friend class BriefWriteScope;
    friend class ReaderRecord;
    friend class ReadScope;
    friend class WriteScope;
    friend PRM_EXPORT void retire(Lockable* block);

    Lockable* m_nextRetired = nullptr;
    /// The number of the writing thread and one of a record's marks, or 0. Last, so that what a derived class begins
    /// with shares its word.
    std::atomic<std::uint32_t> m_mark{0};
};

/// One thread's announcements. Records are never freed; a new thread takes over that of one that has ended.
class PRM_EXPORT ReaderRecord {
public:
    static constexpr int capacity = 7;
    // What a mark says beside the number of the thread.
    static constexpr std::uint32_t waiting = 1;
    static constexpr std::uint32_t writing = 2;
    static constexpr std::uint32_t marks = waiting | writing;

    /// This thread's record.
    static ReaderRecord& mine();
    PRM_ALWAYS_INLINE static ReaderRecord& mineAtOnce();
    /// Stands for the thread that holds the record.
    std::uint32_t thread() const { return m_thread.load(std::memory_order_relaxed); }

private:
    friend class BriefReadScope;
    friend class BriefWriteScope;
    friend class ReadScope;
    friend class WriteScope;
    friend PRM_EXPORT void retire(Lockable* block);

    /// The one that stands for the thread.
    static ReaderRecord& bottom();
    static ReaderRecord& takeOne(ReaderRecord* below);
    static void giveBack(ReaderRecord& record);
    static bool isReadElsewhere(const Lockable* block, std::uint32_t thread);
    static bool isReadHere(const Lockable* block);
    static void deleteRetired(ReaderRecord& record);

    /// Read by writers; this cache line is written by the thread alone.
    alignas(64) std::array<std::atomic<const Lockable*>, capacity> m_announced{};
    int m_count = 0;
    int m_lastPosition = 0;

    /// The number of the one that stands for the thread: the same for all records that the thread holds.
    std::atomic<std::uint32_t> m_thread{0};
    /// A number of its own, with room for the marks.
    std::uint32_t m_number = 0;
    /// The record whose announcements came before, when one record was too small.
    ReaderRecord* m_below = nullptr;
    ReaderRecord* m_next = nullptr;
    Lockable* m_retired = nullptr;
    /// The innermost scope in which this thread writes.
    WriteScope* m_writing = nullptr;
    std::atomic<bool> m_taken{true};
};

#if defined(__GNUC__)
extern PRM_EXPORT __thread ReaderRecord* t_readerRecord __attribute__((tls_model("initial-exec")));
#else
extern PRM_EXPORT thread_local ReaderRecord* t_readerRecord;
#endif

ReaderRecord& ReaderRecord::mineAtOnce() {
    return t_readerRecord ? *t_readerRecord : mine();
}

/// Announcements of this thread that end with the scope. Scopes nest like a stack.
class PRM_EXPORT ReadScope {
public:
    PRM_ALWAYS_INLINE ReadScope() : m_record(ReaderRecord::mineAtOnce()), m_base(m_record.m_count) {}
    PRM_ALWAYS_INLINE ~ReadScope() {
        if (m_base > 0 || m_record.m_count != 1 || m_record.m_retired)
            retract();
        else
            dropLast();
    }
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;

    /// Announces a block that may be gone already: the caller looks afterwards whether it is still in its place, and
    /// only then calls `mayRead`. False when this thread reads it already, and nothing was announced.
    PRM_ALWAYS_INLINE bool announce(const Lockable* block) {
        if (m_base > 0)
            return announceAgain(block);
        m_record.m_announced[static_cast<std::size_t>(m_record.m_count++)].store(block, std::memory_order_seq_cst);
        return true;
    }

    /// Whether no writer keeps the announced block from being read.
    PRM_ALWAYS_INLINE bool mayRead(const Lockable& block) const {
        const std::uint32_t mark = block.m_mark.load(std::memory_order_seq_cst);
        return mark == 0 || mayPass(mark);
    }

    /// Takes back one announcement of this scope.
    void withdraw(const Lockable* block);

    /// Takes back what this scope has announced.
    void retract();

    /// A number that the thread keeps from one scope to the next.
    int& lastPosition() const { return m_record.m_lastPosition; }

    /// Lets other threads get on, longer with every attempt.
    static void standBack(int attempt);

private:
    bool mayPass(std::uint32_t mark) const;
    bool isWaitedFor() const;
    bool announceAgain(const Lockable* block);
    bool announceInNewRecord(const Lockable* block);
    void dropNewRecords();
    PRM_ALWAYS_INLINE void dropLast() {
        m_record.m_announced[static_cast<std::size_t>(--m_record.m_count)].store(nullptr, std::memory_order_release);
    }

    ReaderRecord& m_record;
    int m_base;
};

/// The announcement of one block by a thread that reads nothing else and calls no function of a host's meanwhile: so
/// nothing nests in it, and it waits for nobody.
class BriefReadScope {
public:
    PRM_ALWAYS_INLINE BriefReadScope()
        : m_record(t_readerRecord && t_readerRecord->m_count == 0 ? t_readerRecord : nullptr) {}
    /// Takes over what another one has announced.
    explicit BriefReadScope(ReaderRecord& announcing) : m_record(&announcing) {}
    PRM_ALWAYS_INLINE ~BriefReadScope() {
        if (m_record)
            m_record->m_announced[0].store(nullptr, std::memory_order_release);
    }
    BriefReadScope(const BriefReadScope&) = delete;
    BriefReadScope& operator=(const BriefReadScope&) = delete;

    /// As in a `ReadScope`, but false where only that one can help.
    PRM_ALWAYS_INLINE bool announce(const Lockable* block) {
        if (m_record)
            m_record->m_announced[0].store(block, std::memory_order_seq_cst);
        return m_record != nullptr;
    }
    PRM_ALWAYS_INLINE bool mayRead(const Lockable& block) const {
        return block.m_mark.load(std::memory_order_seq_cst) == 0;
    }
    int& lastPosition() const { return m_record->m_lastPosition; }
    /// Leaves the announcement to another one.
    PRM_ALWAYS_INLINE ReaderRecord& handOver() { return *std::exchange(m_record, nullptr); }

private:
    ReaderRecord* m_record;
};

/// Keeps every other thread out of blocks that are going to be edited in place; blocks that this thread already writes
/// or reads are no obstacle. Scopes nest.
class PRM_EXPORT WriteScope {
public:
    /// The block may be thrown away within the scope, by `retire` or by a scope inside.
    explicit WriteScope(Lockable& block);
    /// All at once: no block stays closed to readers while another one is still waited for. The discarded blocks have
    /// become unreachable by the end of the scope, which retires them; nothing may call out of the scope.
    WriteScope(std::vector<Lockable*> kept, std::vector<Lockable*> discarded);
    ~WriteScope();
    WriteScope(const WriteScope&) = delete;
    WriteScope& operator=(const WriteScope&) = delete;

private:
    friend class ReadScope;

    void acquire(Lockable* const* blocks, std::size_t count);
    bool isReadElsewhere(std::uint32_t thread) const;
    static bool isRead(const WriteScope* innermost);
    static void markAll(const WriteScope* innermost, std::uint32_t mark);
    static void keepReadersOut(const WriteScope* innermost);

    ReadScope m_reading;
    Lockable* m_single = nullptr;
    /// What to release, behind it what to leave marked.
    std::vector<Lockable*> m_several;
    std::vector<Lockable*> m_discarded;
    /// What this scope has marked, and none around it.
    Lockable* const* m_marked = nullptr;
    std::size_t m_count = 0;
    std::size_t m_keptCount = 1;
    WriteScope* m_outer = nullptr;
};

/// The writing of one block by a thread that calls no function of a host's meanwhile: so nothing nests in it, and it
/// waits for nobody.
class BriefWriteScope {
public:
    PRM_ALWAYS_INLINE explicit BriefWriteScope(Lockable& block) : m_block(isMarked(block) ? &block : nullptr) {}
    PRM_ALWAYS_INLINE ~BriefWriteScope() {
        if (m_block)
            m_block->m_mark.store(0, std::memory_order_release);
    }
    BriefWriteScope(const BriefWriteScope&) = delete;
    BriefWriteScope& operator=(const BriefWriteScope&) = delete;

    /// False where only a `WriteScope` can help: someone reads the block, or this thread writes it already.
    bool mayWrite() const { return m_block != nullptr; }

private:
    PRM_ALWAYS_INLINE static bool isMarked(Lockable& block) {
        const std::uint32_t thread = ReaderRecord::mineAtOnce().thread();
        std::uint32_t free = 0;
        if (!block.m_mark.compare_exchange_strong(free, thread | ReaderRecord::writing))
            return false;
        if (!ReaderRecord::isReadElsewhere(&block, thread))
            return true;
        block.m_mark.store(0, std::memory_order_release);
        return false;
    }

    Lockable* const m_block;
};

/// Deletes a block that nobody can reach any more, as soon as no thread reads it: waits for other threads, and leaves
/// it to the end of its own reading when this thread itself reads it.
PRM_EXPORT void retire(Lockable* block);

} // namespace Prm::detail

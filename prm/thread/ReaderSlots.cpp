#include "prm/thread/ReaderSlots.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>
#include <utility>

namespace Prm::detail {

namespace {

constexpr std::uint32_t waiting = ReaderRecord::waiting;
constexpr std::uint32_t writing = ReaderRecord::writing;

std::atomic<ReaderRecord*> firstRecord{nullptr};

std::uint32_t threadOf(std::uint32_t mark) {
    return mark & ~ReaderRecord::marks;
}

/// The bottom record stands for its thread.
std::uint32_t thisThread() {
    return ReaderRecord::mine().thread();
}

bool isWrittenHere(const std::atomic<std::uint32_t>& mark) {
    return threadOf(mark.load(std::memory_order_relaxed)) == thisThread();
}

void letOthersOn(int attempt) {
    constexpr int patience = 64;
    if (attempt < patience)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::microseconds(50));
}

} // namespace

#if defined(__GNUC__)
__thread ReaderRecord* t_readerRecord = nullptr;
#else
thread_local ReaderRecord* t_readerRecord = nullptr;
#endif

Lockable::~Lockable() = default;

ReaderRecord& ReaderRecord::mine() {
    if (t_readerRecord)
        return *t_readerRecord;
    static thread_local bool ended = false;
    struct Returned {
        ~Returned() {
            if (t_readerRecord)
                giveBack(*t_readerRecord);
            t_readerRecord = nullptr;
            ended = true;
        }
    };
    // What is taken by the last destructors of a thread stays taken.
    if (!ended) {
        static thread_local Returned returned;
        static_cast<void>(returned);
    }
    t_readerRecord = &takeOne(nullptr);
    return *t_readerRecord;
}

ReaderRecord& ReaderRecord::bottom() {
    ReaderRecord* record = &mine();
    while (record->m_below)
        record = record->m_below;
    return *record;
}

ReaderRecord& ReaderRecord::takeOne(ReaderRecord* below) {
    ReaderRecord* record = firstRecord.load(std::memory_order_acquire);
    for (; record; record = record->m_next) {
        bool expected = false;
        if (record->m_taken.compare_exchange_strong(expected, true))
            break;
    }
    const bool made = !record;
    if (made) {
        static std::atomic<std::uint32_t> lastNumber{0};
        record = new ReaderRecord;
        record->m_number = lastNumber.fetch_add(marks + 1) + marks + 1;
    }
    record->m_below = below;
    record->m_thread.store(below ? below->m_thread.load() : record->m_number);
    if (made) {
        record->m_next = firstRecord.load();
        while (!firstRecord.compare_exchange_weak(record->m_next, record)) {
        }
    }
    return *record;
}

void ReaderRecord::giveBack(ReaderRecord& record) {
    deleteRetired(record);
    record.m_below = nullptr;
    record.m_taken.store(false, std::memory_order_release);
}

bool ReaderRecord::isReadElsewhere(const Lockable* block, std::uint32_t thread) {
    for (const ReaderRecord* record = firstRecord.load(); record; record = record->m_next) {
        // Ordered as well: the record may just have gone from this thread to another.
        if (record->m_thread.load() == thread)
            continue;
        const auto& announced = record->m_announced;
        if (std::any_of(announced.begin(), announced.end(), [=](const auto& slot) { return slot.load() == block; }))
            return true;
    }
    return false;
}

bool ReaderRecord::isReadHere(const Lockable* block) {
    for (const ReaderRecord* record = t_readerRecord; record; record = record->m_below) {
        for (int i = record->m_count; i-- > 0;) {
            if (record->m_announced[static_cast<std::size_t>(i)].load(std::memory_order_relaxed) == block)
                return true;
        }
    }
    return false;
}

void ReaderRecord::deleteRetired(ReaderRecord& record) {
    while (Lockable* block = record.m_retired) {
        record.m_retired = block->m_nextRetired;
        delete block;
    }
}

bool ReadScope::mayPass(std::uint32_t mark) const {
    return threadOf(mark) == m_record.thread() || ((mark & waiting) != 0 && isWaitedFor());
}

/// Whether others may wait for what this thread reads or writes around this scope. Any thread that reads something
/// could pass; but then a few that always do would keep a writer waiting for good.
bool ReadScope::isWaitedFor() const {
    if (ReaderRecord::bottom().m_writing)
        return true;
    int count = m_base;
    for (const ReaderRecord* record = &m_record; record; record = record->m_below) {
        for (int i = 0; i < count; ++i) {
            const Lockable* const block = record->m_announced[static_cast<std::size_t>(i)].load();
            const std::uint32_t mark = block ? block->m_mark.load() : 0;
            if (mark != 0 && threadOf(mark) != m_record.thread())
                return true;
        }
        count = ReaderRecord::capacity;
    }
    return false;
}

/// Below a scope that reads something.
bool ReadScope::announceAgain(const Lockable* block) {
    if (ReaderRecord::isReadHere(block))
        return false;
    ReaderRecord& record = *t_readerRecord;
    if (record.m_count == ReaderRecord::capacity)
        return announceInNewRecord(block);
    record.m_announced[static_cast<std::size_t>(record.m_count++)].store(block, std::memory_order_seq_cst);
    return true;
}

bool ReadScope::announceInNewRecord(const Lockable* block) {
    ReaderRecord& record = ReaderRecord::takeOne(t_readerRecord);
    t_readerRecord = &record;
    record.m_announced[0].store(block, std::memory_order_seq_cst);
    record.m_count = 1;
    return true;
}

void ReadScope::withdraw(const Lockable* block) {
    for (ReaderRecord* record = t_readerRecord; record; record = record == &m_record ? nullptr : record->m_below) {
        for (int i = record == &m_record ? m_base : 0; i < record->m_count; ++i) {
            std::atomic<const Lockable*>& slot = record->m_announced[static_cast<std::size_t>(i)];
            if (slot.load(std::memory_order_relaxed) == block)
                slot.store(nullptr, std::memory_order_release);
        }
    }
}

void ReadScope::retract() {
    if (t_readerRecord != &m_record)
        dropNewRecords();
    while (m_record.m_count > m_base)
        dropLast();
    if (m_record.m_retired && m_record.m_count == 0)
        ReaderRecord::deleteRetired(m_record);
}

void ReadScope::dropNewRecords() {
    while (t_readerRecord != &m_record) {
        ReaderRecord& record = *t_readerRecord;
        t_readerRecord = record.m_below;
        while (record.m_count > 0)
            record.m_announced[static_cast<std::size_t>(--record.m_count)].store(nullptr, std::memory_order_release);
        ReaderRecord::giveBack(record);
    }
}

void ReadScope::standBack(int attempt) {
    const WriteScope* const innermost = ReaderRecord::bottom().m_writing;
    WriteScope::markAll(innermost, waiting);
    letOthersOn(attempt);
    WriteScope::keepReadersOut(innermost);
}

WriteScope::WriteScope(Lockable& block) : m_single(&block) {
    // Announced as well, so that a block which is thrown away meanwhile outlives this scope.
    m_reading.announce(&block);
    if (!isWrittenHere(block.m_mark))
        acquire(&m_single, 1);
}

WriteScope::WriteScope(std::vector<Lockable*> kept, std::vector<Lockable*> discarded)
    : m_several(std::move(kept)), m_discarded(std::move(discarded)) {
    const auto writtenHere = [](const Lockable* block) { return isWrittenHere(block->m_mark); };
    m_several.erase(std::remove_if(m_several.begin(), m_several.end(), writtenHere), m_several.end());
    m_keptCount = m_several.size();
    std::remove_copy_if(m_discarded.begin(), m_discarded.end(), std::back_inserter(m_several), writtenHere);
    acquire(m_several.data(), m_several.size());
}

WriteScope::~WriteScope() {
    if (m_count > 0)
        ReaderRecord::bottom().m_writing = m_outer;
    std::for_each(m_marked, m_marked + std::min(m_count, m_keptCount),
                  [](Lockable* block) { block->m_mark.store(0, std::memory_order_release); });
    // Discarded blocks keep their mark: a reader that has just announced one steps back and looks again.
    std::for_each(m_discarded.begin(), m_discarded.end(), retire);
}

void WriteScope::acquire(Lockable* const* blocks, std::size_t count) {
    if (count == 0)
        return;
    ReaderRecord& record = ReaderRecord::bottom();
    std::for_each(blocks, blocks + count, [&](Lockable* block) {
        std::uint32_t free = 0;
        for (int attempt = 0; !block->m_mark.compare_exchange_strong(free, record.thread() | writing); ++attempt) {
            free = 0;
            ReadScope::standBack(attempt);
        }
    });
    m_marked = blocks;
    m_count = count;
    m_outer = std::exchange(record.m_writing, this);
    // The scopes around this one have seen to their readers, and their marks are up again.
    if (isReadElsewhere(record.thread()))
        keepReadersOut(this);
}

/// Whether other threads read what this scope has marked.
bool WriteScope::isReadElsewhere(std::uint32_t thread) const {
    return std::any_of(m_marked, m_marked + m_count,
                       [=](const Lockable* block) { return ReaderRecord::isReadElsewhere(block, thread); });
}

bool WriteScope::isRead(const WriteScope* innermost) {
    const std::uint32_t thread = thisThread();
    for (const WriteScope* scope = innermost; scope; scope = scope->m_outer) {
        if (scope->isReadElsewhere(thread))
            return true;
    }
    return false;
}

void WriteScope::markAll(const WriteScope* innermost, std::uint32_t mark) {
    const std::uint32_t thread = thisThread();
    for (const WriteScope* scope = innermost; scope; scope = scope->m_outer) {
        std::for_each(scope->m_marked, scope->m_marked + scope->m_count,
                      [=](Lockable* block) { block->m_mark.store(thread | mark); });
    }
}

void WriteScope::keepReadersOut(const WriteScope* innermost) {
    markAll(innermost, writing);
    while (isRead(innermost)) {
        markAll(innermost, waiting);
        for (int attempt = 0; isRead(innermost); ++attempt)
            letOthersOn(attempt);
        markAll(innermost, writing);
    }
}

void retire(Lockable* block) {
    if (!block)
        return;
    for (int attempt = 0; ReaderRecord::isReadElsewhere(block, thisThread()); ++attempt)
        ReadScope::standBack(attempt);
    if (!ReaderRecord::isReadHere(block)) {
        delete block;
        return;
    }
    ReaderRecord& bottom = ReaderRecord::bottom();
    block->m_nextRetired = bottom.m_retired;
    bottom.m_retired = block;
}

} // namespace Prm::detail

#include "prm/thread/ReaderSlots.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <set>
#include <thread>

using namespace Prm::detail;

namespace {

class Block : public Lockable {
public:
    explicit Block(std::atomic<bool>& gone) : m_gone(gone) {}
    ~Block() override { m_gone = true; }

private:
    std::atomic<bool>& m_gone;
};

TEST(ReaderSlots, ARetiredBlockOutlivesItsReaders) {
    std::atomic<bool> gone{false};
    retire(new Block(gone));
    EXPECT_TRUE(gone.exchange(false)) << "read by nobody";
    {
        const ReadScope around;
        auto* const block = new Block(gone);
        ReadScope reading;
        EXPECT_TRUE(reading.announce(block));
        { const WriteScope writing({}, {block}); }
        EXPECT_FALSE(gone) << "read by the thread that retires it";
    }
    EXPECT_TRUE(gone.exchange(false));

    auto* const block = new Block(gone);
    ReadScope reading;
    reading.announce(block);
    std::thread other([&] { retire(block); });
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(gone) << "read by another thread";
    reading.retract();
    other.join();
    EXPECT_TRUE(gone);
}

TEST(ReaderSlots, ABlockIsAnnouncedOnceHoweverDeepItIsRead) {
    std::array<Lockable, 3 * ReaderRecord::capacity> blocks;
    ReadScope around;
    EXPECT_TRUE(around.announce(&blocks[0]));
    for (int round = 0; round < 2; ++round) {
        ReadScope inner;
        for (const Lockable& block : blocks)
            EXPECT_EQ(inner.announce(&block), &block != &blocks[0]);
        const ReadScope innermost;
        for (const Lockable& block : blocks)
            EXPECT_FALSE(ReadScope().announce(&block));
    }
}

TEST(ReaderSlots, ThreadsTakeOverTheRecordsOfThoseThatEnded) {
    struct Late {
        ~Late() {
            Lockable block;
            ReadScope reading;
            EXPECT_TRUE(reading.announce(&block));
        }
    };
    std::set<const ReaderRecord*> records;
    for (int i = 0; i < 20; ++i)
        std::thread([&] { records.insert(&ReaderRecord::mine()); }).join();
    EXPECT_EQ(records.size(), 1u);
    // A thread may read until its very end.
    std::thread([] {
        static thread_local Late late;
        static_cast<void>(late);
        ReaderRecord::mine();
    }).join();
}

} // namespace

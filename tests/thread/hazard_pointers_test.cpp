#include "prm/thread/HazardPointers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <set>
#include <thread>

using namespace Prm::detail;

namespace {

class Block : public Protected {
public:
    explicit Block(std::atomic<bool>& gone) : m_gone(gone) {}
    ~Block() override { m_gone = true; }

private:
    std::atomic<bool>& m_gone;
};

TEST(HazardPointers, ARetiredBlockOutlivesItsReaders) {
    std::atomic<bool> gone{false};
    retire(new Block(gone));
    EXPECT_TRUE(gone.exchange(false)) << "not read";

    auto* const block = new Block(gone);
    Protection reading;
    EXPECT_TRUE(reading.protect(*block));
    std::thread other([&] { retire(block); });
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(gone) << "read by another thread";
    reading.release();
    other.join();
    EXPECT_TRUE(gone);
}

TEST(HazardPointers, ABlockIsClosedUntilTheOutermostEditEnds) {
    Protected block;
    const auto isOpenElsewhere = [&] {
        bool open = false;
        std::thread([&] { open = Protection().protect(block); }).join();
        return open;
    };
    {
        const Exclusive outer(block);
        { const Exclusive inner(block); }
        EXPECT_FALSE(isOpenElsewhere());
        EXPECT_TRUE(Protection().protect(block)) << "the thread that edits";
    }
    EXPECT_TRUE(isOpenElsewhere());
}

TEST(HazardPointers, AnEditEndsTheUseOfWhatItMakesUntrue) {
    struct Copy : HeldCopy {
        Copy(const Protected& block, const Protected& guide) : HeldCopy(block, guide, HazardPointers::ofThisThread()) {}
    };
    Protected guide;
    Protected first;
    Protected second;
    const Copy around(first, guide);
    {
        const Copy held(second, guide);
        EXPECT_EQ(HeldCopy::innermost(), &held);
        const Exclusive edit(second);
        EXPECT_FALSE(held.isTrue());
        EXPECT_TRUE(around.isFoundBy(guide));
    }
    EXPECT_EQ(HeldCopy::innermost(), &around);
    const Exclusive edit(guide);
    EXPECT_FALSE(around.isTrue());
}

TEST(HazardPointers, ThreadsTakeOverTheRecordsOfThoseThatEnded) {
    struct Late {
        ~Late() {
            const Protected block;
            EXPECT_TRUE(Protection().protect(block));
        }
    };
    std::set<const HazardPointers*> records;
    for (int i = 0; i < 20; ++i)
        std::thread([&] { records.insert(&HazardPointers::ofThisThread()); }).join();
    EXPECT_EQ(records.size(), 1u);
    // A thread may read until its very end.
    std::thread([] {
        static thread_local Late late;
        static_cast<void>(late);
        HazardPointers::ofThisThread();
    }).join();
}

} // namespace

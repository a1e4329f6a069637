#include "host/bsc/QPointerEx.h"
#include "host/bsc/ScopedSignalBlocker.h"
#include "host/bsc/UniqBag.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using Guarded = Bsc::detail::QPointerEx<QObject, QPointer>;

class Undeclared;
[[maybe_unused]] const Bsc::UniqBag<Bsc::detail::QPointerEx<Undeclared, QPointer>> bagOfAnIncompleteType;

template <class T> std::vector<T> inOrder(const Bsc::UniqBag<T>& bag) {
    return std::vector<T>(bag.begin(), bag.end());
}

TEST(UniqBag, KeepsOneOfEachInTheOrderOfInsertion) {
    Bsc::UniqBag<int> bag{30, 10, 20};
    const Bsc::UniqBag<int> copy(bag);
    EXPECT_FALSE(bag.insert(10));
    EXPECT_TRUE(bag.erase(*bag.begin())) << "the reference is the element's own";
    EXPECT_FALSE(bag.erase(30) || bag.contains(30) || bag == copy);
    EXPECT_TRUE(bag.insert(30));
    EXPECT_EQ(bag, copy) << "order does not count";
    EXPECT_EQ(inOrder(bag), (std::vector<int>{10, 20, 30}));
    EXPECT_EQ(inOrder(copy), (std::vector<int>{30, 10, 20}));
    bag = Bsc::UniqBag<int>(std::move(bag));
    EXPECT_TRUE(bag.erase(20) && bag.insert(20));
    bag.clear();
    EXPECT_TRUE(bag.empty() && bag.insert(10));
}

TEST(QPointerEx, IdentityOutlivesTheObject) {
    auto object = std::make_unique<QObject>();
    const Guarded guarded(object.get());
    const Guarded again(object.get());
    Bsc::UniqBag<Guarded> bag{guarded};
    const uint hash = qHash(guarded);
    object.reset();
    EXPECT_TRUE(guarded.isNull() && !guarded && !guarded.data());
    EXPECT_EQ(qHash(guarded), hash);
    EXPECT_NE(guarded, Guarded()) << "the dead are not the same as none";
    EXPECT_TRUE(!bag.insert(again) && bag.erase(again) && bag.empty());
}

TEST(QPointerEx, NewObjectAtTheAddressOfADeadOneIsAnother) {
    alignas(QObject) unsigned char room[sizeof(QObject)];
    Bsc::UniqBag<Guarded> bag;
    for (std::size_t generation = 1; generation <= 3; ++generation) {
        auto* object = new (room) QObject;
        EXPECT_TRUE(!bag.contains(object) && bag.insert(object) && !bag.insert(object)) << generation;
        EXPECT_EQ((--bag.end())->get(), object) << generation;
        object->~QObject();
    }
    EXPECT_EQ(bag, Bsc::UniqBag<Guarded>(bag));
    EXPECT_EQ(bag.size(), 3u) << "the dead are not taken for each other either";
}

TEST(ScopedSignalBlocker, UnblocksOnlyWhatItBlocked) {
    auto object = std::make_unique<QObject>();
    {
        const Bsc::ScopedSignalBlocker outer(*object);
        { const Bsc::ScopedSignalBlocker inner(object.get()); }
        EXPECT_TRUE(object->signalsBlocked());
    }
    EXPECT_FALSE(object->signalsBlocked());
    const Bsc::ScopedSignalBlocker none(nullptr);
    const Bsc::ScopedSignalBlocker survivor(*object);
    object.reset();
}

} // namespace

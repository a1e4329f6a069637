#include "host/bsc/Hash.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// The values come from the hashing library's own one-shot function; a change would orphan every shared cache.
TEST(Hash, SameBytesGiveTheSameHashEverywhere) {
    QByteArray many(1000, '\0');
    for (int i = 0; i < many.size(); ++i)
        many[i] = static_cast<char>(i % 251);
    const QByteArray rows[][2] = {
        {"", "99aa06d3014798d86001c324468d497f"},
        {"a", "a96faf705af16834e6c632b61e964e1f"},
        {"animatable values", "98b91d0932347641cfb9d93ca0f3c44c"},
        {many.left(200), "cb0395310643ba0edd97e9af3609d9f5"},
        {many, "18bf41bc8229e27733ef703fb2b20ed1"},
    };
    for (const auto& [bytes, expected] : rows) {
        Bsc::Hash hash;
        for (const char byte : bytes) {
            const Bsc::Hash before(hash);
            hash.addData(&byte, 1);
            hash.addData(nullptr, 0);
            EXPECT_NE(before.result(), hash.result()) << bytes.size();
        }
        EXPECT_EQ(hash.result().toString(), QString::fromLatin1(expected)) << bytes.size();
        EXPECT_EQ(hash.result().bytes(), QByteArray::fromHex(expected)) << bytes.size();
    }
}

TEST(Hash, AssignmentForgetsWhatWasAdded) {
    Bsc::Hash hash;
    hash.addData("forgotten", 9);
    hash = Bsc::Hash();
    EXPECT_EQ(hash.result(), Bsc::Hash().result());
    EXPECT_THROW(hash.addData(nullptr, 1), std::invalid_argument);
}

} // namespace

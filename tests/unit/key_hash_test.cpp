// The hash of keys out of files: that of SipHash-1-3, under a secret that no file can know.
#include "foundation/key_hash.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace pelt {
namespace {

// The bytes 1, 2, 3 and so on.
uint64_t hash_of_count(HashSecret secret, size_t size) {
    std::vector<unsigned char> bytes;
    for (size_t i = 1; i <= size; ++i) { bytes.push_back(static_cast<unsigned char>(i)); }
    return hash_bytes(secret, bytes.data(), bytes.size());
}

// The values are those of Python 3.11, whose hash of bytes is SipHash-1-3, with PYTHONHASHSEED=0, a secret of zeros.
TEST(KeyHash, BytesAreHashedAsSipHash13) {
    constexpr HashSecret ZEROS{0, 0};
    EXPECT_EQ(hash_of_count(ZEROS, 1), 0x44bc103b1f8540edU);
    EXPECT_EQ(hash_of_count(ZEROS, 7), 0xb1cd85cc334196faU);
    EXPECT_EQ(hash_of_count(ZEROS, 8), 0x884ccc87cb0e5fb0U);
    EXPECT_EQ(hash_of_count(ZEROS, 9), 0x27ed508fe95acb3U);
    EXPECT_EQ(hash_of_count(ZEROS, 15), 0x75e46d4257851550U);
    EXPECT_EQ(hash_of_count(ZEROS, 16), 0xe05d12a0a4b2d063U);
    EXPECT_EQ(hash_of_count(ZEROS, 31), 0x47670cb24a35602fU);
}

TEST(KeyHash, BothHalvesOfTheSecretMatter) {
    EXPECT_NE(hash_of_count({1, 0}, 8), hash_of_count({0, 0}, 8));
    EXPECT_NE(hash_of_count({0, 1}, 8), hash_of_count({0, 0}, 8));
}

TEST(KeyHash, ASecretIsDrawnAnewEachTime) {
    const HashSecret one = hash_secret_draw();
    const HashSecret other = hash_secret_draw();
    EXPECT_TRUE(one.first != other.first && one.second != other.second);
}

TEST(KeyHash, OfTheProcessIsNotThatOfAKnownSecretAndStaysTheSame) {
    const std::string text = "shoulder";
    EXPECT_NE(key_hash(text.data(), text.size()), hash_bytes({0, 0}, text.data(), text.size()));
    EXPECT_EQ(key_hash(text.data(), text.size()), key_hash(text.data(), text.size()));
    EXPECT_EQ(KeyHash{}(text), static_cast<size_t>(key_hash(text.data(), text.size())));
    EXPECT_EQ(key_hash(7), key_hash(7));
}

TEST(KeyHash, EachByteOfAnIntegerMatters) {
    for (const int32_t key : {0, 1, 32767, -1, INT32_MAX, INT32_MIN}) {
        for (int bit = 0; bit < 32; ++bit) {
            const auto other = static_cast<int32_t>(static_cast<uint32_t>(key) ^ 1U << bit);
            EXPECT_NE(key_hash(key), key_hash(other)) << key << " " << bit;
        }
    }
}

TEST(KeyHash, TenThousandIntegersInARowHaveAsManyValues) {
    std::set<uint64_t> values;
    for (int32_t key = 0; key < 10000; ++key) { values.insert(key_hash(key)); }
    EXPECT_EQ(values.size(), 10000u);
}

}  // namespace
}  // namespace pelt

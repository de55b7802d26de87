/// \file
/// The bucket of a hash: the hash modulo the number of buckets.

#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "vorel/core/HashMap.h"

namespace {

using vorel::detail::remainderOf;

constexpr std::uint64_t kMaxHash = std::numeric_limits<std::uint64_t>::max();

constexpr std::uint32_t kCounts[] = {
    1,          2,          3,          4,          5,          7,          11,         29,       31,
    64,         67,         101,        127,        128,        255,        1000,       4093,     4096,
    4099,       65535,      65536,      65537,      1048573,    1048576,    16777213,   16777216, 1431655765,
    0x7FFFFFFF, 0x80000000, 0x80000001, 0xAAAAAAAB, 0xFFFFFFFB, 0xFFFFFFFE, 0xFFFFFFFF,
};

// Hashes next to multiples of the count detect a computed quotient that is off by one.
TEST(HashMapBuckets, IndexIsTheHashModuloTheCount) {
    std::mt19937_64 random(20261121);
    for (const std::uint32_t count : kCounts) {
        const std::uint64_t most = kMaxHash / count;
        for (int round = 0; round < 2000; ++round) {
            const std::uint64_t quotient =
                round < 100 ? most - static_cast<unsigned int>(round) : (random() >> random() % 64) % most;
            for (const std::uint64_t hash : {quotient * count, quotient * count + count - 1, quotient * count - 1,
                                             static_cast<std::uint64_t>(random()), kMaxHash - quotient}) {
                ASSERT_EQ(remainderOf(hash, count), hash % count) << hash << " modulo " << count;
            }
        }
        for (const std::uint64_t hash : {std::uint64_t{0}, std::uint64_t{1}, kMaxHash, kMaxHash - 1}) {
            ASSERT_EQ(remainderOf(hash, count), hash % count) << hash << " modulo " << count;
        }
    }
}

TEST(HashMapBuckets, IndexForARandomCountIsTheHashModuloTheCount) {
    std::mt19937_64 random(20261121);
    for (int round = 0; round < 2'000'000; ++round) {
        const auto count = static_cast<std::uint32_t>(random() >> 32 >> random() % 32 | 1);
        const std::uint64_t hash = random() >> random() % 64;
        ASSERT_EQ(remainderOf(hash, count), hash % count) << hash << " modulo " << count;
    }
}

}  // namespace

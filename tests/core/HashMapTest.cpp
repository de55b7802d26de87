#include "vorel/core/HashMap.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using vorel::Exception;
using vorel::HashMap;
using vorel::NameEqual;

using NumberMap = HashMap<int, int>;
using NameMap = HashMap<const char*, unsigned int, NameEqual>;

std::map<int, int> entriesOf(const NumberMap& map) {
    std::map<int, int> entries;
    for (auto it = map.begin(); !(it == map.end()); ++it) {
        EXPECT_TRUE(entries.emplace(it.key(), it.value()).second) << it.key() << " was visited twice";
    }
    return entries;
}

TEST(HashMap, FieldOrder_BucketsThenSpareNodesThenSizeThenThreshold) {
    struct Fields {
        void* buckets;
        unsigned int bucketCount;
        unsigned int bucketSlots;
        void* spareNodes;
        unsigned int spareCount;
        unsigned int spareSlots;
        unsigned int size;
        unsigned int growAt;
    };
    NumberMap map(31);
    map.put(1, 1, 10);
    map.put(2, 2, 20);
    map.put(3, 3, 30);
    map.remove(2, 2);
    Fields fields;
    static_assert(sizeof fields == sizeof map);
    std::memcpy(&fields, static_cast<const void*>(&map), sizeof fields);
    EXPECT_NE(fields.buckets, nullptr);
    EXPECT_EQ(fields.bucketCount, 31u);
    EXPECT_GE(fields.bucketSlots, 31u);
    EXPECT_NE(fields.spareNodes, nullptr);
    EXPECT_EQ(fields.spareCount, 1u);
    EXPECT_EQ(fields.spareSlots, 5u);
    EXPECT_EQ(fields.size, 2u);
    EXPECT_EQ(fields.growAt, 23u);
}

TEST(HashMap, NodeFieldOrder_NextThenHashThenKeyThenValue) {
    struct Node {
        const Node* next;
        std::uint64_t hash;
        const char* key;
        unsigned int value;
    };
    const auto nodeOf = [](const NameMap::Iterator& place) {
        return reinterpret_cast<const Node*>(reinterpret_cast<const char*>(&place.key()) - offsetof(Node, key));
    };
    const char* const names[] = {"older", "newer"};
    NameMap map(31);
    const Node* const older = nodeOf(map.put(7, names[0], 70));
    const Node* const newer = nodeOf(map.put(38, names[1], 71));  // the same bucket
    EXPECT_EQ(older->next, nullptr);
    EXPECT_EQ(older->hash, 7u);
    EXPECT_EQ(older->key, names[0]);
    EXPECT_EQ(older->value, 70u);
    EXPECT_EQ(newer->next, older);
    EXPECT_EQ(newer->hash, 38u);
    EXPECT_EQ(newer->key, names[1]);
    EXPECT_EQ(newer->value, 71u);
}

static_assert(sizeof(NumberMap::Iterator) == 3 * sizeof(void*),
              "an iterator has pointers to the map, the bucket and the node");

// ---- Insertion and search -------------------------------------------------------------------------------------------

TEST(HashMap, Put_ReturnsAnIteratorToTheNewEntry) {
    NumberMap map(31);
    const auto place = map.put(100, 7, 70);
    EXPECT_EQ(place.key(), 7);
    EXPECT_EQ(place.value(), 70);
    EXPECT_EQ(map.size(), 1u);
    EXPECT_TRUE(map.find(7, 100) == place);
    place.value() = 71;
    EXPECT_EQ(map.find(7, 100).value(), 71);
}

TEST(HashMap, Find_ReturnsEndForAMissingKey) {
    NumberMap map(31);
    EXPECT_TRUE(map.find(7, 100) == map.end());
    map.put(100, 7, 70);
    EXPECT_TRUE(map.find(8, 100) == map.end()) << "same hash, different key";
    EXPECT_TRUE(map.find(7, 131) == map.end()) << "same key and bucket, different hash";
    EXPECT_TRUE(map.find(7, 101) == map.end()) << "different bucket";
}

TEST(HashMap, Find_DistinguishesKeysWithTheSameHash) {
    NameMap map(31);
    map.put(5, "first", 1);
    map.put(5, "second", 2);
    map.put(36, "third", 3);  // the same bucket
    EXPECT_EQ(map.find("first", 5).value(), 1u);
    EXPECT_EQ(map.find("second", 5).value(), 2u);
    EXPECT_EQ(map.find("third", 36).value(), 3u);
}

TEST(HashMap, PutTwiceWithOneKey_KeepsBothEntriesAndFindsTheNewer) {
    NumberMap map(31);
    map.put(1, 7, 70);
    map.put(1, 7, 71);
    EXPECT_EQ(map.size(), 2u);
    EXPECT_EQ(map.find(7, 1).value(), 71);
    EXPECT_TRUE(map.remove(7, 1));
    EXPECT_EQ(map.find(7, 1).value(), 70);
    EXPECT_TRUE(map.remove(7, 1));
    EXPECT_TRUE(map.find(7, 1) == map.end());
}

TEST(HashMap, Hashes_Are64BitsWide) {
    NumberMap map(31);
    const std::uint64_t high = std::uint64_t{31} << 40;
    map.put(high + 3, 1, 10);
    map.put(3, 2, 20);
    map.put(0xFFFFFFFFFFFFFFFF, 3, 30);
    EXPECT_EQ(map.find(1, high + 3).value(), 10);
    EXPECT_TRUE(map.find(1, 3) == map.end());
    EXPECT_EQ(map.find(3, 0xFFFFFFFFFFFFFFFF).value(), 30);
    map.resize(101);
    EXPECT_EQ(map.find(1, high + 3).value(), 10);
    EXPECT_EQ(map.find(2, 3).value(), 20);
    EXPECT_EQ(map.find(3, 0xFFFFFFFFFFFFFFFF).value(), 30);
}

TEST(HashMap, Iteration_VisitsEveryEntryOnce) {
    NumberMap map(5);
    EXPECT_TRUE(map.begin() == map.end());
    std::map<int, int> expected;
    for (int key = 0; key < 40; ++key) {
        map.put(static_cast<std::uint64_t>(key % 9) * 7, key, key * key);
        expected[key] = key * key;
        ASSERT_EQ(entriesOf(map), expected);
    }
}

TEST(HashMap, Iteration_FindsASingleEntryInTheFirstOrLastBucket) {
    for (const std::uint64_t hash : {0u, 30u}) {
        NumberMap map(31);
        map.put(hash, 1, 2);
        EXPECT_EQ(entriesOf(map), (std::map<int, int>{{1, 2}}));
    }
}

// ---- Growth ---------------------------------------------------------------------------------------------------------

TEST(HashMap, GrowAt_IsThreeQuartersOfTheBucketsTruncated) {
    struct Case {
        unsigned int buckets;
        unsigned int growAt;
    };
    for (const auto& [buckets, growAt] :
         {Case{1, 0}, Case{2, 1}, Case{3, 2}, Case{4, 3}, Case{5, 3}, Case{11, 8}, Case{31, 23}, Case{100003, 75002}}) {
        const NumberMap map(buckets);
        EXPECT_EQ(map.bucketCount(), buckets);
        EXPECT_EQ(map.growAt(), growAt) << buckets;
    }
}

TEST(HashMap, Growth_From4To11BucketsAtTheFourthInsertion) {
    NumberMap map(4);
    for (int key = 0; key < 3; ++key) {
        map.put(static_cast<std::uint64_t>(key), key, key);
        EXPECT_EQ(map.bucketCount(), 4u);
        EXPECT_EQ(map.growAt(), 3u);
    }
    map.put(3, 3, 3);
    EXPECT_EQ(map.bucketCount(), 11u);
    EXPECT_EQ(map.growAt(), 8u);
    EXPECT_EQ(map.size(), 4u);
}

TEST(HashMap, Growth_ChoosesTheNextPrimeAboveTwiceTheBuckets) {
    struct Case {
        unsigned int from;
        unsigned int to;
    };
    for (const auto& [from, to] : {Case{1, 3}, Case{2, 5}, Case{3, 7}, Case{4, 11}, Case{12, 29}, Case{31, 67}}) {
        NumberMap map(from);
        for (int key = 0; map.bucketCount() == from; ++key) {
            ASSERT_EQ(map.size(), static_cast<unsigned int>(key));
            map.put(0, key, key);
        }
        EXPECT_EQ(map.bucketCount(), to) << from;
        EXPECT_EQ(map.size(), from * 3 / 4 + 1) << "the first insertion at the threshold grows the map";
    }
}

TEST(HashMap, Growth_KeepsEveryEntry) {
    NumberMap map(1);
    for (int key = 0; key < 5000; ++key) {
        map.put(static_cast<std::uint64_t>(key) * 2654435761u, key, -key);
        ASSERT_LE(map.size() - 1, map.growAt());
    }
    for (int key = 0; key < 5000; ++key) {
        const auto found = map.find(key, static_cast<std::uint64_t>(key) * 2654435761u);
        ASSERT_FALSE(found == map.end()) << key;
        ASSERT_EQ(found.value(), -key);
    }
}

TEST(HashMap, Resize_GrowsAndNeverShrinks) {
    NumberMap map(31);
    map.put(1, 1, 10);
    for (const unsigned int count : {0u, 1u, 30u, 31u}) {
        map.resize(count);
        EXPECT_EQ(map.bucketCount(), 31u);
        EXPECT_EQ(map.growAt(), 23u);
    }
    map.resize(32);
    EXPECT_EQ(map.bucketCount(), 32u);
    EXPECT_EQ(map.growAt(), 24u);
    EXPECT_EQ(map.find(1, 1).value(), 10);
}

// Resizing takes the entries of each chain from its head, and inserts each entry at the head of a new chain. So two
// entries with the same key change their order.
TEST(HashMap, Resize_ReversesTheOrderOfAChain) {
    NumberMap map(5);
    map.put(1, 7, 70);
    map.put(1, 7, 71);
    map.resize(11);
    EXPECT_EQ(map.find(7, 1).value(), 70);
    map.resize(23);
    EXPECT_EQ(map.find(7, 1).value(), 71);
}

// ---- Maps without buckets -------------------------------------------------------------------------------------------

TEST(HashMap, WithoutBuckets_OperationsThrow) {
    NumberMap map;
    EXPECT_EQ(map.bucketCount(), 0u);
    EXPECT_TRUE(map.begin() == map.end());
    expectThrows<Exception>([&] { map.put(1, 1, 1); }, {L"Tried to put into a hash map with 0 buckets"});
    expectThrows<Exception>([&] { static_cast<void>(map.find(1, 1)); },
                            {L"Tried to find in a hash map with 0 buckets"});
    expectThrows<Exception>([&] { map.remove(1, 1); }, {L"Tried to remove from hash map with 0 buckets"});
    expectThrows<Exception>([&] { map.resize(0); }, {L"Cannot resize a hash map to 0"});
    map.clear();
    EXPECT_EQ(map.size(), 0u);

    map.resize(3);
    map.put(1, 1, 10);
    EXPECT_EQ(map.find(1, 1).value(), 10);
}

TEST(HashMap, Failures_AreLoggedImmediately) {
    const test::TemporaryLog log;
    NumberMap map;
    EXPECT_THROW(static_cast<void>(map.find(1, 1)), Exception);
    EXPECT_THAT(log.messages(), ::testing::ElementsAre("Vorel Error: Tried to find in a hash map with 0 buckets"));
}

// ---- Removal and spare nodes ----------------------------------------------------------------------------------------

TEST(HashMap, Remove_ReturnsWhetherItFoundAnEntry) {
    NumberMap map(5);
    map.put(1, 1, 10);
    EXPECT_FALSE(map.remove(2, 1));
    EXPECT_FALSE(map.remove(1, 6)) << "same bucket, different hash";
    EXPECT_TRUE(map.remove(1, 1));
    EXPECT_FALSE(map.remove(1, 1));
    EXPECT_EQ(map.size(), 0u);
}

TEST(HashMap, Remove_FromTheHeadTheMiddleAndTheEndOfAChain) {
    for (int removed = 0; removed < 3; ++removed) {
        NumberMap map(7);
        for (int key = 0; key < 3; ++key) {
            map.put(2, key, key);
        }
        EXPECT_TRUE(map.remove(removed, 2));
        EXPECT_EQ(map.size(), 2u);
        for (int key = 0; key < 3; ++key) {
            EXPECT_EQ(map.find(key, 2) == map.end(), key == removed) << key;
        }
    }
}

TEST(HashMap, SpareNodes_AreReusedNewestFirst) {
    NumberMap map(31);
    const int* const first = &map.put(1, 1, 10).value();
    const int* const second = &map.put(2, 2, 20).value();
    map.remove(1, 1);
    map.remove(2, 2);
    const auto third = map.put(3, 3, 30);
    EXPECT_EQ(&third.value(), second);
    EXPECT_EQ(third.key(), 3);
    EXPECT_EQ(third.value(), 30);
    EXPECT_EQ(&map.put(4, 4, 40).value(), first);
    EXPECT_EQ(entriesOf(map), (std::map<int, int>{{3, 30}, {4, 40}}));
}

TEST(HashMap, Clear_KeepsTheBuckets) {
    NumberMap map(5);
    for (int key = 0; key < 20; ++key) {
        map.put(static_cast<std::uint64_t>(key), key, key);
    }
    map.remove(3, 3);
    const unsigned int buckets = map.bucketCount();
    map.clear();
    EXPECT_EQ(map.size(), 0u);
    EXPECT_EQ(map.bucketCount(), buckets);
    EXPECT_TRUE(map.begin() == map.end());
    EXPECT_TRUE(map.find(4, 4) == map.end());
    map.put(4, 4, 44);
    EXPECT_EQ(entriesOf(map), (std::map<int, int>{{4, 44}}));
}

}  // namespace

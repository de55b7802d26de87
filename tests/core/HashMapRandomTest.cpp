/// \file
/// Compares `HashMap` with a model over random sequences of operations. The model has a list of entries per hash, in
/// search order.

#include <algorithm>
#include <cstdint>
#include <list>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "vorel/core/HashMap.h"

namespace {

class MapAndModel {
public:
    explicit MapAndModel(unsigned int seed) : m_random(seed), m_map(1 + below(12)), m_buckets(m_map.bucketCount()) {}

    void step() {
        const unsigned int choice = below(100);
        if (choice < 45) {
            put();
        } else if (choice < 80) {
            remove();
        } else if (choice < 97) {
            find();
        } else if (choice < 99) {
            resize();
        } else if (below(4) == 0) {
            clear();
        }
    }

    void check() const {
        ASSERT_EQ(m_map.size(), m_size);
        ASSERT_EQ(m_map.bucketCount(), m_buckets);
        ASSERT_EQ(m_map.growAt(), m_buckets * std::uint64_t{3} / 4);
        std::vector<Entry> expected;
        for (const auto& [hash, chain] : m_model) {
            expected.insert(expected.end(), chain.begin(), chain.end());
        }
        std::vector<Entry> found;
        for (auto it = m_map.begin(); !(it == m_map.end()); ++it) {
            found.emplace_back(it.key(), it.value());
        }
        std::sort(expected.begin(), expected.end());
        std::sort(found.begin(), found.end());
        ASSERT_EQ(found, expected);
    }

private:
    using Entry = std::pair<int, int>;
    using Chain = std::list<Entry>;

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }

    /// There are few keys and even fewer hashes, so keys are used again and hashes collide.
    int randomKey() { return static_cast<int>(below(40)); }
    static std::uint64_t hashOf(int key) { return static_cast<std::uint64_t>(key % 17) * 0x9E3779B97F4A7C15; }

    static Chain::iterator entryOf(Chain& chain, int key) {
        return std::find_if(chain.begin(), chain.end(), [=](const Entry& entry) { return entry.first == key; });
    }

    void put() {
        if (m_size == m_buckets * std::uint64_t{3} / 4) {
            grow(primeAbove(2 * m_buckets));
        }
        const int key = randomKey();
        const int value = static_cast<int>(below(1000000));
        m_map.put(hashOf(key), key, value);
        Chain& chain = m_model[hashOf(key)];
        chain.emplace_front(key, value);
        ++m_size;
    }

    void remove() {
        const int key = randomKey();
        Chain& chain = m_model[hashOf(key)];
        const auto entry = entryOf(chain, key);
        ASSERT_EQ(m_map.remove(key, hashOf(key)), entry != chain.end());
        if (entry != chain.end()) {
            chain.erase(entry);
            --m_size;
        }
    }

    void find() {
        const int key = randomKey();
        Chain& chain = m_model[hashOf(key)];
        const auto entry = entryOf(chain, key);
        const auto found = m_map.find(key, hashOf(key));
        ASSERT_EQ(found == m_map.end(), entry == chain.end());
        if (entry != chain.end()) {
            ASSERT_EQ(found.key(), key);
            ASSERT_EQ(found.value(), entry->second);
        }
    }

    void resize() {
        const unsigned int count = m_buckets + below(10) - 5;
        if (count != 0 && count < 100000) {
            m_map.resize(count);
            grow(count);
        }
    }

    void clear() {
        m_map.clear();
        m_model.clear();
        m_size = 0;
    }

    /// Growth takes the entries of each chain from its head, and inserts each entry at the head of a new chain. So
    /// the order of entries with the same hash is reversed.
    void grow(unsigned int count) {
        if (count > m_buckets) {
            m_buckets = count;
            for (auto& [hash, chain] : m_model) {
                chain.reverse();
            }
        }
    }

    static unsigned int primeAbove(unsigned int n) {
        const auto isPrime = [](unsigned int candidate) {
            for (unsigned int divisor = 2; divisor < candidate; ++divisor) {
                if (candidate % divisor == 0) {
                    return false;
                }
            }
            return true;
        };
        do {
            ++n;
        } while (!isPrime(n));
        return n;
    }

    std::mt19937 m_random;
    vorel::HashMap<int, int> m_map;
    std::map<std::uint64_t, Chain> m_model;
    unsigned int m_buckets;
    unsigned int m_size = 0;
};

TEST(HashMapRandom, BehavesLikeAMapOfLists) {
    for (unsigned int seed = 1; seed <= 60; ++seed) {
        MapAndModel pair(seed);
        for (unsigned int step = 0; step < 400; ++step) {
            ASSERT_NO_FATAL_FAILURE(pair.step()) << "seed " << seed << ", step " << step;
            ASSERT_NO_FATAL_FAILURE(pair.check()) << "seed " << seed << ", step " << step;
        }
    }
}

}  // namespace

#include <algorithm>
#include <memory>
#include <random>
#include <unordered_map>
#include <vector>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

constexpr std::size_t kMaxLookups = 1000000;

using Numbers = std::vector<std::uint64_t>;

// Both maps use the key itself as its hash.

struct OurMap {
    vorel::HashMap<std::uint64_t, std::uint64_t> map{31};

    void insert(std::uint64_t key) { map.put(key, key, key); }
    [[nodiscard]] std::uint64_t find(std::uint64_t key) const {
        const auto found = map.find(key, key);
        return found == map.end() ? 0 : found.value();
    }
};

struct StandardMap {
    std::unordered_map<std::uint64_t, std::uint64_t> map;

    void insert(std::uint64_t key) { map.emplace(key, key); }
    [[nodiscard]] std::uint64_t find(std::uint64_t key) const {
        const auto found = map.find(key);
        return found == map.end() ? 0 : found->second;
    }
};

/// Random keys. The probability that two of ten million keys are equal is below one in 300,000.
std::shared_ptr<const Numbers> keysOf(std::size_t count) {
    std::mt19937_64 random(20261121);
    auto keys = std::make_shared<Numbers>(count);
    std::generate(keys->begin(), keys->end(), random);
    return keys;
}

template <class Map>
Step insertInto(std::size_t count) {
    return {[keys = keysOf(count)] {
                Map map;
                for (const std::uint64_t key : *keys) {
                    map.insert(key);
                }
                return static_cast<std::uint64_t>(map.map.size());
            },
            count};
}

template <class Map>
Step findIn(std::size_t count) {
    Numbers keys = *keysOf(count);
    auto map = std::make_shared<Map>();
    for (const std::uint64_t key : keys) {
        map->insert(key);
    }
    std::shuffle(keys.begin(), keys.end(), std::mt19937_64(1));
    keys.resize(std::min(count, kMaxLookups));
    const std::size_t lookups = keys.size();
    return {[map, keys = std::move(keys)] {
                std::uint64_t sum = 0;
                for (const std::uint64_t key : keys) {
                    sum += map->find(key);
                }
                return sum;
            },
            lookups};
}

}  // namespace

void maps(Growth& growth) {
    constexpr std::size_t kBytesPerEntry = 64;  // a node, the header of its block, and a bucket
    const std::vector<std::size_t> numbers = numbersUpTo(kTenMillion);
    growth.measure({"HashMap: insert into a new map, destroy the map", numbers, kBytesPerEntry, insertInto<OurMap>,
                    "std::unordered_map", insertInto<StandardMap>});
    growth.measure({"HashMap: find, in random order", numbers, kBytesPerEntry, findIn<OurMap>, "std::unordered_map",
                    findIn<StandardMap>});
}

}  // namespace bench

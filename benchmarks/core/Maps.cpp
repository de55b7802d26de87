#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "Cases.h"
#include "FlatTable.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using Number = std::uint64_t;

/// The hash that all maps use: the finalizer of MurmurHash3 (Austin Appleby).
struct Mixed {
    std::size_t operator()(Number key) const noexcept {
        key = (key ^ key >> 33) * 0xFF51AFD7ED558CCD;
        key = (key ^ key >> 33) * 0xC4CEB9FE1A85EC53;
        return key ^ key >> 33;
    }
};

using OurMap = vorel::HashMap<Number, unsigned int>;
using StandardMap = std::unordered_map<Number, unsigned int, Mixed>;
using FlatMap = FlatTable<Number, unsigned int, std::equal_to<>>;

void insert(OurMap& map, Number key, unsigned int value) {
    map.put(Mixed()(key), key, value);
}

void insert(StandardMap& map, Number key, unsigned int value) {
    map.emplace(key, value);
}

void insert(FlatMap& map, Number key, unsigned int value) {
    map.insert(key, Mixed()(key), value);
}

unsigned int valueOf(const OurMap& map, Number key) {
    const auto found = map.find(key, Mixed()(key));
    return found == map.end() ? 0 : found.value();
}

unsigned int valueOf(const StandardMap& map, Number key) {
    const auto found = map.find(key);
    return found == map.end() ? 0 : found->second;
}

unsigned int valueOf(const FlatMap& map, Number key) {
    const unsigned int* const found = map.find(key, Mixed()(key));
    return found ? *found : 0;
}

std::vector<Number> keysOf(std::size_t count) {
    std::mt19937_64 random(20261121);
    std::vector<Number> keys(count);
    for (Number& key : keys) {
        key = random();
    }
    return keys;
}

template <class Map>
void fill(Map& map, const std::vector<Number>& keys) {
    unsigned int value = 0;
    for (const Number key : keys) {
        insert(map, key, ++value);
    }
}

template <class Map>
Pass findAll(const Map& map, const std::vector<Number>& keys) {
    return [&map, &keys] {
        std::uint64_t sum = 0;
        for (const Number key : keys) {
            sum += valueOf(map, key);
        }
        return sum;
    };
}

template <class Map, class... Arguments>
Pass insertAll(const std::vector<Number>& keys, Arguments... arguments) {
    return [&keys, arguments...] {
        Map map(arguments...);
        fill(map, keys);
        return std::uint64_t{map.size()};
    };
}

constexpr unsigned int kFirstBuckets = 31;
constexpr std::size_t kCounts[] = {30, 1000, 100000};

}  // namespace

void findInMaps(Family& family) {
    for (const std::size_t count : kCounts) {
        const std::vector<Number> keys = keysOf(count);
        OurMap ours(kFirstBuckets);
        StandardMap standard;
        FlatMap flat;
        fill(ours, keys);
        fill(standard, keys);
        fill(flat, keys);
        family.compare("find among " + std::to_string(count), count, findAll(ours, keys),
                       {{"std::unordered_map", findAll(standard, keys)}, {"Swiss table", findAll(flat, keys)}});
    }
}

void insertIntoMaps(Family& family) {
    for (const std::size_t count : kCounts) {
        const std::vector<Number> keys = keysOf(count);
        family.compare(
            "insert " + std::to_string(count), count, insertAll<OurMap>(keys, kFirstBuckets),
            {{"std::unordered_map", insertAll<StandardMap>(keys)}, {"Swiss table", insertAll<FlatMap>(keys)}});
    }
}

}  // namespace bench

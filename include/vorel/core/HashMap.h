/// \file
/// `HashMap<Key, Value, KeyEqual>`: a chained hash map, for tables that are filled once and read often.
///
/// The caller supplies the hash of each key. The map stores it with the key and never computes one. The nodes of
/// removed entries are kept and reused. The map has no lock; its users must guard it.
///
///     vorel::HashMap<const char*, unsigned int> pages(31);
///     pages.put(hashOf("UTF-8"), "UTF-8", 65001);
///     auto found = pages.find("utf-8", hashOf("utf-8"));
///     if (found != pages.end()) { found.value(); }
///
/// Keys that are pointers to text are compared as texts, ignoring the case of the letters A to Z, unless `KeyEqual` is
/// given. An entry is found only with the hash that it was inserted with, so the hash of such a key must ignore case in
/// the same way.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "vorel/core/Array.h"
#include "vorel/core/PointerStack.h"
#include "vorel/core/Protocol.h"

namespace vorel {

/// The smallest odd prime above `n`; 2 for 1. `n` must not be 0. When an insertion grows a map, the new bucket count
/// comes from this function.
///
///     1 -> 2    2 -> 3    7 -> 11    8 -> 11    24 -> 29
inline std::uint64_t nextPrime(std::uint64_t n) noexcept {
    if (n == 1) {
        return 2;
    }
    const auto isPrime = [](std::uint64_t odd) {
        const auto limit = static_cast<std::uint64_t>(std::sqrt(static_cast<double>(odd)) + 1.0);
        for (std::uint64_t divisor = 3; divisor < limit; divisor += 2) {
            if (odd % divisor == 0) {
                return false;
            }
        }
        return true;
    };
    std::uint64_t candidate = n + (n % 2 == 0 ? 1 : 2);
    while (!isPrime(candidate)) {
        candidate += 2;
    }
    return candidate;
}

namespace detail {

/// `hash` modulo `count`. `count` must not be 0. The function multiplies `hash` by a reciprocal of `count`, which it
/// computes with a floating-point division. On many processors, a 64-bit integer division would take several times as
/// long. The reciprocal depends on `count` only. So a loop with one `count` computes the reciprocal once. Outside a
/// loop, the processor can compute the reciprocal at the same time as the hash.
///
/// `count` is shifted until its highest bit is bit 31. The reciprocal is at most 2^95 divided by the shifted count. The
/// floating-point estimate is smaller than this limit by less than 2^15. One step of Newton's method reduces the
/// difference to slightly more than 1. So the quotient is exact or too small by 1. If it is too small, the last line
/// corrects the remainder. The larger the count, the rarer this correction is.
inline std::uint32_t remainderOf(std::uint64_t hash, std::uint32_t count) noexcept {
#if defined(__SIZEOF_INT128__)
    __extension__ using Wide = unsigned __int128;
    constexpr double kBelow2To93 = 0x1.ffffffffffff8p92;  // the margin is larger than the rounding of the division
    const int leadingZeros = std::countl_zero(count);
    const std::uint32_t shifted = count << leadingZeros;
    const std::uint64_t estimate = static_cast<std::uint64_t>(static_cast<std::int64_t>(kBelow2To93 / shifted)) * 4;
    const std::uint64_t error = 0 - estimate * shifted;  // 2^95 minus the product
    const std::uint64_t reciprocal = estimate + static_cast<std::uint64_t>(Wide{estimate} * error >> 95);
    const std::uint64_t quotient = static_cast<std::uint64_t>(Wide{hash} * reciprocal >> 64) >> (31 - leadingZeros);
    const std::uint64_t rest = hash - quotient * count;
    return static_cast<std::uint32_t>(rest < count ? rest : rest - count);
#else
    return static_cast<std::uint32_t>(hash % count);
#endif
}

}  // namespace detail

/// Compares null-terminated names, ignoring the case of the letters A to Z only. Two null names are equal; a null name
/// differs from every other name.
struct NameEqual {
    /// Whether the names are equal.
    template <class T>
    bool operator()(const T* a, const T* b) const noexcept {
        if (!a || !b) {
            return a == b;
        }
        for (; folded(*a) == folded(*b); ++a, ++b) {
            if (!*a) {
                return true;
            }
        }
        return false;
    }

private:
    template <class T>
    static constexpr T folded(T unit) noexcept {
        return unit >= 'A' && unit <= 'Z' ? static_cast<T>(unit + ('a' - 'A')) : unit;
    }
};

namespace detail {

/// Whether `Key` is a pointer to text.
template <class Key>
inline constexpr bool kIsTextPointer = std::is_pointer_v<Key> &&
                                       (std::is_same_v<std::remove_const_t<std::remove_pointer_t<Key>>, char> ||
                                        std::is_same_v<std::remove_const_t<std::remove_pointer_t<Key>>, wchar_t>);

/// The equality of keys that a map uses by default.
template <class Key>
using DefaultKeyEqual = std::conditional_t<kIsTextPointer<Key>, NameEqual, std::equal_to<Key>>;

}  // namespace detail

/// A chained hash map. The caller passes the hash of a key to every operation. The default `KeyEqual` is `NameEqual`
/// for pointers to `char` or `wchar_t`, and `std::equal_to` for all other keys.
template <class Key, class Value, class KeyEqual = detail::DefaultKeyEqual<Key>>
class HashMap {
    struct Node {
        Node* next;
        std::uint64_t hash;
        Key key;
        Value value;
    };

public:
    /// A position in the map: an entry, or the end. It becomes invalid when the map grows, when its entry is removed,
    /// and by `clear`.
    class Iterator {
    public:
        /// Key and value of the entry. The iterator must not be at the end.
        [[nodiscard]] const Key& key() const noexcept { return m_node->key; }
        [[nodiscard]] Value& value() const noexcept { return m_node->value; }

        /// Moves to the next entry, or to the end. The order is unspecified. The iterator must not be at the end.
        Iterator& operator++() noexcept {
            m_node = m_node->next;
            skipEmptyBuckets();
            return *this;
        }

        /// Whether both iterators are at the same position.
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.m_node == b.m_node; }

    private:
        friend class HashMap;

        Iterator(const HashMap* map, Node* const* bucket, Node* node) noexcept
            : m_map(map), m_bucket(bucket), m_node(node) {}

        /// Moves to the next non-empty bucket if the current chain has ended.
        void skipEmptyBuckets() noexcept {
            while (!m_node && m_bucket && ++m_bucket != m_map->m_buckets.end()) {
                m_node = *m_bucket;
            }
            if (!m_node) {
                m_bucket = nullptr;
            }
        }

        const HashMap* m_map;
        Node* const* m_bucket;
        Node* m_node;
    };

    /// Creates a map of `bucketCount` buckets. If the map has 0 buckets, `put`, `find` and `remove` throw until the map
    /// is resized.
    /// \throws MemoryException if the buckets cannot be allocated.
    explicit HashMap(unsigned int bucketCount = 0) {
        if (bucketCount != 0) {
            resize(bucketCount);
        }
    }

    HashMap(const HashMap&) = delete;
    HashMap& operator=(const HashMap&) = delete;

    /// Releases every node. The first failure of a key's or value's destructor is recorded and rethrown. If this
    /// failure is not a library exception, an `Exception` is thrown instead. While another exception unwinds the stack,
    /// the failure is recorded and swallowed.
    ~HashMap() noexcept(false) {
        detail::runDestructor(L"HashMap", [this] { clear(); });
    }

    /// The number of entries, and the number of buckets.
    [[nodiscard]] unsigned int size() const noexcept { return m_size; }
    [[nodiscard]] unsigned int bucketCount() const noexcept { return m_buckets.size(); }

    /// The limit for the number of entries: three quarters of the bucket count, rounded down. At this limit, an
    /// insertion grows the map before it adds the entry.
    [[nodiscard]] unsigned int growAt() const noexcept { return m_growAt; }

    /// Inserts an entry and returns its position. Does not search for an equal key. If two entries have the same key,
    /// lookups find the newer one until the map grows; growing reverses the order within a bucket.
    /// \throws Exception "Tried to put into a hash map with 0 buckets"; MemoryException if the buckets cannot grow;
    ///         `std::bad_alloc` if a node cannot be allocated, because nodes come from the global `operator new` by
    ///         design; the exceptions of the default constructors and the assignments of key and value. After an
    ///         exception, the map has the same entries as before.
    Iterator put(std::uint64_t hash, const Key& key, const Value& value) {
        if (bucketCount() == 0) {
            detail::throwFailure(L"Tried to put into a hash map with 0 buckets");
        }
        if (m_size >= m_growAt) {
            const std::uint64_t grown = nextPrime(std::uint64_t{2} * bucketCount());
            if (grown > 0xFFFFFFFFu) {
                detail::throwMemory(0xFFFFFFFFu, sizeof(Node*));
            }
            resize(static_cast<unsigned int>(grown));
        }
        std::unique_ptr<Node> node(m_spareNodes.empty() ? new Node{} : m_spareNodes.pop());
        node->hash = hash;
        node->key = key;
        node->value = value;
        Node*& head = bucketOf(hash);
        node->next = head;
        head = node.release();
        ++m_size;
        return Iterator(this, &head, head);
    }

    /// The first entry of `key` in its bucket, or the end.
    /// \throws Exception "Tried to find in a hash map with 0 buckets".
    [[nodiscard]] Iterator find(const Key& key, std::uint64_t hash) const {
        // The index is computed first, so that the compiler can move the division out of a loop of searches.
        const unsigned int index = detail::remainderOf(hash, std::max(bucketCount(), 1u));
        if (bucketCount() == 0) {
            detail::throwFailure(L"Tried to find in a hash map with 0 buckets");
        }
        Node* const& head = m_buckets.begin()[index];
        for (Node* node = head; node; node = node->next) {
            if (matches(*node, key, hash)) {
                return Iterator(this, &head, node);
            }
        }
        return end();
    }

    /// Removes the entry that `find` returns, and returns whether there was one. Its node, with the key and the
    /// value, is kept for reuse.
    /// \throws Exception "Tried to remove from hash map with 0 buckets"; MemoryException if the node cannot be kept:
    ///         the entry is then not removed.
    bool remove(const Key& key, std::uint64_t hash) {
        if (bucketCount() == 0) {
            detail::throwFailure(L"Tried to remove from hash map with 0 buckets");
        }
        for (Node** link = &bucketOf(hash); *link; link = &(*link)->next) {
            Node* const node = *link;
            if (matches(*node, key, hash)) {
                m_spareNodes.push(node);
                *link = node->next;
                --m_size;
                return true;
            }
        }
        return false;
    }

    /// Grows the map to `newCount` buckets. Does nothing if the map has at least as many buckets already.
    /// \throws MemoryException; the map is unchanged. Exception "Cannot resize a hash map to 0" if `newCount` is 0 and
    ///         the map has no buckets.
    void resize(unsigned int newCount) {
        if (newCount > bucketCount()) {
            Array<Node*> grown;
            grown.setCount(newCount);
            for (Node* chain : m_buckets) {
                while (chain) {
                    Node* const node = chain;
                    chain = node->next;
                    Node*& head = grown[detail::remainderOf(node->hash, newCount)];
                    node->next = head;
                    head = node;
                }
            }
            m_growAt = static_cast<unsigned int>(newCount * 0.75);
            m_buckets = std::move(grown);
        }
        if (bucketCount() == 0) {
            detail::throwFailure(L"Cannot resize a hash map to 0");
        }
    }

    /// Releases every node, including the spare nodes. The buckets are kept.
    /// \throws Exception or any other class: the first failure of a destructor of a key or value, after every node is
    ///         released and the map is empty. Later failures are recorded in the log as "HashMap::~HashMap: ...
    ///         suppressed" and swallowed.
    void clear() {
        m_size = 0;
        unsigned int bucket = 0;
        detail::releaseAll(L"HashMap", [&] {
            while (bucket < bucketCount() && !m_buckets[bucket]) {
                ++bucket;
            }
            if (bucket < bucketCount()) {
                Node*& head = m_buckets[bucket];
                delete std::exchange(head, head->next);
                return true;
            }
            if (m_spareNodes.empty()) {
                return false;
            }
            delete m_spareNodes.pop();
            return true;
        });
    }

    /// The first entry, in unspecified order; the end for an empty map.
    [[nodiscard]] Iterator begin() const noexcept {
        if (m_size == 0) {
            return end();
        }
        Iterator first(this, m_buckets.begin(), *m_buckets.begin());
        first.skipEmptyBuckets();
        return first;
    }

    /// The position after the last entry.
    [[nodiscard]] Iterator end() const noexcept { return Iterator(this, nullptr, nullptr); }

private:
    static bool matches(const Node& node, const Key& key, std::uint64_t hash) {
        return node.hash == hash && KeyEqual()(node.key, key);
    }

    [[nodiscard]] unsigned int indexOf(std::uint64_t hash) const noexcept {
        return detail::remainderOf(hash, bucketCount());
    }
    Node*& bucketOf(std::uint64_t hash) { return m_buckets.begin()[indexOf(hash)]; }

    Array<Node*> m_buckets;
    PointerStack<Node> m_spareNodes;
    unsigned int m_size = 0;
    unsigned int m_growAt = 0;
};

}  // namespace vorel

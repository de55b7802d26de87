/// \file
/// `HashMap<Key, Value, KeyEqual>`: the library's chained hash map, for tables that are filled once and read often.
///
/// The caller supplies the hash of each key; the map keeps it with the key and never computes one. Nodes of removed
/// entries wait on a stack of spare nodes and are used again. The map has no lock of its own: its users guard it.
///
///     vorel::HashMap<const char*, unsigned int> pages(31);
///     pages.put(hashOf("UTF-8"), "UTF-8", 65001);
///     auto found = pages.find("utf-8", hashOf("utf-8"));
///     if (found != pages.end()) { found.value(); }
///
/// Keys that are pointers to text are compared as texts, ignoring the case of the Latin letters A to Z, unless the map
/// names another equality. An entry is found only by the hash that it was put in with: the hash of such a key has to
/// ignore the same case.
#pragma once

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

/// The bucket-count rule: the smallest odd prime above `n`, and 2 for 1.
///
///     1 → 2    2 → 3    7 → 11    8 → 11    24 → 29
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

/// Equality of null-terminated names without regard to the case of the Latin letters A to Z, and of no others. Two
/// null names are equal; a null and a non-null name are not.
struct NameEqual {
    /// Whether two names are equal; see above.
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

/// Whether keys are pointers to text, which are compared as texts.
template <class Key>
inline constexpr bool kIsTextPointer = std::is_pointer_v<Key> &&
                                       (std::is_same_v<std::remove_const_t<std::remove_pointer_t<Key>>, char> ||
                                        std::is_same_v<std::remove_const_t<std::remove_pointer_t<Key>>, wchar_t>);

/// The equality of keys when a map names none.
template <class Key>
using DefaultKeyEqual = std::conditional_t<kIsTextPointer<Key>, NameEqual, std::equal_to<Key>>;

}  // namespace detail

/// A chained map; every operation takes the hash of its key from the caller. `KeyEqual` is `NameEqual` for keys that
/// are pointers to `char` or `wchar_t`, and `std::equal_to` for all others, unless it is given.
template <class Key, class Value, class KeyEqual = detail::DefaultKeyEqual<Key>>
class HashMap {
    struct Node {
        Node* next;
        std::uint64_t hash;
        Key key;
        Value value;
    };

public:
    /// A place in the map: an entry, or the end. Insertion that grows the map, removal of the entry and `clear` make
    /// it invalid.
    class Iterator {
    public:
        /// Key and value of the entry; not for the end.
        [[nodiscard]] const Key& key() const noexcept { return m_node->key; }
        [[nodiscard]] Value& value() const noexcept { return m_node->value; }

        /// The next entry, in no order that means anything.
        Iterator& operator++() noexcept {
            m_node = m_node->next;
            settle();
            return *this;
        }

        /// Whether both are the same place.
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.m_node == b.m_node; }

    private:
        friend class HashMap;

        Iterator(const HashMap* map, Node* const* bucket, Node* node) noexcept
            : m_map(map), m_bucket(bucket), m_node(node) {}

        /// Goes on to the next chain while the present one has ended.
        void settle() noexcept {
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

    /// A map of `bucketCount` buckets. One of 0 buckets can only be resized.
    /// \throws MemoryException when the buckets cannot be had.
    explicit HashMap(unsigned int bucketCount = 0) {
        if (bucketCount != 0) {
            resize(bucketCount);
        }
    }

    HashMap(const HashMap&) = delete;
    HashMap& operator=(const HashMap&) = delete;

    /// Releases every node, and then passes the first failure on by the rules of a destructor that may throw.
    ~HashMap() noexcept(false) {
        detail::guardedDestructor(L"HashMap", [this] { clear(); });
    }

    /// Number of entries, and number of buckets.
    [[nodiscard]] unsigned int size() const noexcept { return m_size; }
    [[nodiscard]] unsigned int bucketCount() const noexcept { return m_buckets.size(); }

    /// The number of entries at which the next insertion first grows the map: three quarters of the bucket count.
    [[nodiscard]] unsigned int growAt() const noexcept { return m_growAt; }

    /// Inserts an entry and returns its place. An equal key is not looked for: of two entries of one key, lookups
    /// find the newer, until the map next grows: that turns the order within a bucket round.
    /// \throws Exception "Tried to put into a hash map with 0 buckets"; MemoryException when the buckets cannot grow;
    ///         the standard allocation failure when no node can be had (meant: nodes come from the global allocation
    ///         operator). The map then holds what it held.
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
        if (bucketCount() == 0) {
            detail::throwFailure(L"Tried to find in a hash map with 0 buckets");
        }
        Node* const& head = m_buckets[indexOf(hash)];
        for (Node* node = head; node; node = node->next) {
            if (matches(*node, key, hash)) {
                return Iterator(this, &head, node);
            }
        }
        return end();
    }

    /// Removes the entry of `key` that `find` finds, keeps its node for reuse, and says whether there was one.
    /// \throws Exception "Tried to remove from hash map with 0 buckets"; MemoryException, with the entry still there,
    ///         when its node cannot be put aside.
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

    /// Grows the table to `bucketCount` buckets; it never shrinks.
    /// \throws MemoryException, with the map as it was; Exception "Cannot resize a hash map to 0" when the map has no
    ///         bucket then.
    void resize(unsigned int newCount) {
        if (newCount > bucketCount()) {
            Array<Node*> grown;
            grown.setCount(newCount);
            for (Node* chain : m_buckets) {
                while (chain) {
                    Node* const node = chain;
                    chain = node->next;
                    Node*& head = grown[static_cast<unsigned int>(node->hash % newCount)];
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

    /// Releases every node, the spare ones too; the buckets stay.
    /// \throws the first failure of a key's or value's destructor, after every node was released: the map is empty
    ///         then. Later failures are recorded in the log as "HashMap::~HashMap: … suppressed", and swallowed.
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

    /// The first entry, in no order that means anything; the end of an empty map.
    [[nodiscard]] Iterator begin() const noexcept {
        if (m_size == 0) {
            return end();
        }
        Iterator first(this, m_buckets.begin(), *m_buckets.begin());
        first.settle();
        return first;
    }

    /// The place behind the last entry.
    [[nodiscard]] Iterator end() const noexcept { return Iterator(this, nullptr, nullptr); }

private:
    static bool matches(const Node& node, const Key& key, std::uint64_t hash) {
        return node.hash == hash && KeyEqual()(node.key, key);
    }

    [[nodiscard]] unsigned int indexOf(std::uint64_t hash) const noexcept {
        return static_cast<unsigned int>(hash % bucketCount());
    }
    Node*& bucketOf(std::uint64_t hash) { return m_buckets[indexOf(hash)]; }

    Array<Node*> m_buckets;
    PointerStack<Node> m_spareNodes;
    unsigned int m_size = 0;
    unsigned int m_growAt = 0;
};

}  // namespace vorel

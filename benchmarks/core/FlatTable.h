/// \file
/// A hash map with which `HashMap` is compared. It uses open addressing by the method of Abseil's "Swiss tables"
/// (M. Kulukundis, CppCon 2017). Each slot has a control byte: seven bits of the hash, or `kEmpty` if the slot is free.
/// A lookup compares sixteen control bytes at once.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <emmintrin.h>

namespace bench {

template <class Key, class Value, class Equal>
class FlatTable {
public:
    [[nodiscard]] const Value* find(const Key& key, std::uint64_t hash) const {
        for (std::size_t group = groupOf(hash), step = 0;; group = (group + ++step) & m_groupMask) {
            const __m128i control = load(group);
            for (unsigned int equal = bytesEqual(control, tagOf(hash)); equal != 0; equal &= equal - 1) {
                const Slot& slot = m_slots[group * kGroup + static_cast<std::size_t>(std::countr_zero(equal))];
                if (Equal()(slot.first, key)) {
                    return &slot.second;
                }
            }
            if (bytesEqual(control, kEmpty) != 0) {
                return nullptr;
            }
        }
    }

    void insert(const Key& key, std::uint64_t hash, const Value& value) {
        if (m_size == m_slots.size() / 8 * 7) {
            grow();
        }
        place(key, hash, value);
        ++m_size;
    }

    [[nodiscard]] std::size_t size() const { return m_size; }

private:
    using Slot = std::pair<Key, Value>;

    static constexpr std::size_t kGroup = 16;
    static constexpr signed char kEmpty = -128;

    static signed char tagOf(std::uint64_t hash) { return static_cast<signed char>(hash & 0x7F); }
    [[nodiscard]] std::size_t groupOf(std::uint64_t hash) const { return hash >> 7 & m_groupMask; }

    [[nodiscard]] __m128i load(std::size_t group) const {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_control.data() + group * kGroup));
    }

    static unsigned int bytesEqual(__m128i control, signed char byte) {
        return static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(control, _mm_set1_epi8(byte))));
    }

    void place(const Key& key, std::uint64_t hash, const Value& value) {
        for (std::size_t group = groupOf(hash), step = 0;; group = (group + ++step) & m_groupMask) {
            const unsigned int empty = bytesEqual(load(group), kEmpty);
            if (empty != 0) {
                const std::size_t slot = group * kGroup + static_cast<std::size_t>(std::countr_zero(empty));
                m_control[slot] = tagOf(hash);
                m_slots[slot] = {key, value};
                m_hashes[slot] = hash;
                return;
            }
        }
    }

    void grow() {
        FlatTable larger;
        const std::size_t slots = m_slots.empty() ? kGroup : 2 * m_slots.size();
        larger.m_control.assign(slots, kEmpty);
        larger.m_slots.resize(slots);
        larger.m_hashes.resize(slots);
        larger.m_groupMask = slots / kGroup - 1;
        for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
            if (m_control[slot] != kEmpty) {
                larger.place(m_slots[slot].first, m_hashes[slot], m_slots[slot].second);
            }
        }
        larger.m_size = m_size;
        *this = std::move(larger);
    }

    std::vector<signed char> m_control;
    std::vector<Slot> m_slots;
    std::vector<std::uint64_t> m_hashes;
    std::size_t m_groupMask = 0;
    std::size_t m_size = 0;
};

}  // namespace bench

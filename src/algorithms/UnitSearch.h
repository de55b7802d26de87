/// \file
/// Searches text of known length for a code unit, for units of a set, or for another text, and counts units. Reads
/// nothing outside the text.
///
/// These functions are faster than the runtime's if the result is near the start of the text. SSE2 is part of every
/// 64-bit x86 processor, so no dispatch is needed.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// Compares sixteen bytes of text with one unit.
template <class T>
class UnitBlocks {
public:
    static constexpr std::size_t kUnits = 16 / sizeof(T);

    explicit UnitBlocks(T unit) noexcept {
        if constexpr (sizeof(T) == 1) {
            m_wanted = _mm_set1_epi8(static_cast<char>(unit));
        } else {
            static_assert(sizeof(T) == 2);
            m_wanted = _mm_set1_epi16(static_cast<short>(unit));
        }
    }

    /// A mask with one bit for each byte of the block. The bit is set if the byte belongs to a wanted unit.
    [[nodiscard]] unsigned int equalBytes(const T* block) const noexcept {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
        const __m128i equal = sizeof(T) == 1 ? _mm_cmpeq_epi8(units, m_wanted) : _mm_cmpeq_epi16(units, m_wanted);
        return static_cast<unsigned int>(_mm_movemask_epi8(equal));
    }

private:
    __m128i m_wanted;
};

/// The position of the first `unit` in `text`; npos if there is none.
template <class T>
std::size_t findUnit(std::basic_string_view<T> text, T unit) noexcept {
    const UnitBlocks<T> blocks(unit);
    std::size_t at = 0;
    for (; text.size() - at >= UnitBlocks<T>::kUnits; at += UnitBlocks<T>::kUnits) {
        const unsigned int equal = blocks.equalBytes(text.data() + at);
        if (equal != 0) {
            return at + static_cast<std::size_t>(std::countr_zero(equal)) / sizeof(T);
        }
    }
    for (; at < text.size(); ++at) {
        if (text[at] == unit) {
            return at;
        }
    }
    return std::basic_string_view<T>::npos;
}

/// The number of times that `unit` occurs in `text`.
template <class T>
std::size_t countUnit(std::basic_string_view<T> text, T unit) noexcept {
    const UnitBlocks<T> blocks(unit);
    std::size_t bytes = 0;
    std::size_t at = 0;
    for (; text.size() - at >= UnitBlocks<T>::kUnits; at += UnitBlocks<T>::kUnits) {
        bytes += static_cast<std::size_t>(std::popcount(blocks.equalBytes(text.data() + at)));
    }
    std::size_t count = bytes / sizeof(T);
    for (; at < text.size(); ++at) {
        count += text[at] == unit;
    }
    return count;
}

/// The position of the first occurrence of `wanted` in `text`; npos if there is none. `wanted` must not be empty.
template <class T>
std::size_t findText(std::basic_string_view<T> text, std::basic_string_view<T> wanted) noexcept {
    constexpr std::size_t kNone = std::basic_string_view<T>::npos;
    if (wanted.size() > text.size()) {
        return kNone;
    }
    // An occurrence can begin only at one of these units.
    const std::basic_string_view<T> starts = text.substr(0, text.size() - wanted.size() + 1);
    for (std::size_t at = 0; at < starts.size(); ++at) {
        const std::size_t distance = findUnit(starts.substr(at), wanted.front());
        if (distance == kNone) {
            return kNone;
        }
        at += distance;
        if (wanted.size() == 1 || text.substr(at + 1, wanted.size() - 1) == wanted.substr(1)) {
            return at;
        }
    }
    return kNone;
}

/// A set of units. It has one bit for each unit below 256; larger units are compared with each member of the set.
template <class T>
class UnitSet {
public:
    using View = std::basic_string_view<T>;

    /// The text of `units` must outlive the set.
    explicit UnitSet(View units) noexcept : m_units(units) {
        for (const T unit : units) {
            const std::size_t value = valueOf(unit);
            if (value < kBits) {
                m_bits[value / 64] |= std::uint64_t{1} << value % 64;
            } else {
                m_hasLarge = true;
            }
        }
    }

    [[nodiscard]] bool contains(T unit) const noexcept {
        const std::size_t value = valueOf(unit);
        return value < kBits ? (m_bits[value / 64] >> value % 64 & 1) != 0
                             : m_hasLarge && m_units.find(unit) != View::npos;
    }

    /// The position of the first member in `text`; npos if there is none.
    [[nodiscard]] std::size_t findIn(View text) const noexcept {
        if (m_units.size() == 1) {
            return findUnit(text, m_units.front());
        }
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (contains(text[at])) {
                return at;
            }
        }
        return View::npos;
    }

    /// The number of units in `text` that are members.
    [[nodiscard]] std::size_t countIn(View text) const noexcept {
        if (m_units.size() == 1) {
            return countUnit(text, m_units.front());
        }
        std::size_t count = 0;
        for (const T unit : text) {
            count += contains(unit);
        }
        return count;
    }

private:
    static constexpr std::size_t kBits = 256;

    static constexpr std::size_t valueOf(T unit) noexcept {
        if constexpr (sizeof(T) == 1) {
            return static_cast<unsigned char>(unit);
        } else {
            return static_cast<std::uint16_t>(unit);
        }
    }

    View m_units;
    std::uint64_t m_bits[kBits / 64] = {};
    bool m_hasLarge = false;
};

}  // namespace vorel::algorithms

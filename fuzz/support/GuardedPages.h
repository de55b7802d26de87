/// \file
/// Memory between two inaccessible pages, for the input and the output of an algorithm.
///
/// Algorithms may read blocks that extend past a text, but only in pages that contain a part of the text. If a text is
/// at the end of its page, every read past it faults; if it is at the start, every read before it faults. The memory
/// around the text in its pages is noise, which must not affect a result.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include <sys/mman.h>

#include "support/Check.h"

namespace fuzz {

/// The position of a block in its pages.
enum class Place {
    AtEnd,    ///< ends at the start of an inaccessible page
    AtStart,  ///< begins at the end of an inaccessible page
    Across,   ///< lies at the border of two accessible pages; `Placement::before` says how much is before the border
};

/// The position of a block in its pages, and the noise around the block.
struct Placement {
    Place place;
    unsigned char noise;
    std::size_t before;  ///< maximum number of elements before the border; only for `Place::Across`
};

/// Each `allocate` and each `copy` invalidates the previous block.
class GuardedPages {
public:
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t kMaxBytes = 8 * kPage;

    GuardedPages()
        : m_block(static_cast<unsigned char*>(
              mmap(nullptr, kMaxBytes + 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        check(m_block != MAP_FAILED, "pages can be allocated");
        check(mprotect(m_block, kPage, PROT_NONE) == 0, "the page before is inaccessible");
        check(mprotect(m_block + kPage + kMaxBytes, kPage, PROT_NONE) == 0, "the page after is inaccessible");
    }
    ~GuardedPages() { munmap(m_block, kMaxBytes + 2 * kPage); }

    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// Returns a block of `count` elements, which may take at most half of the pages. The block and the memory around
    /// it are filled with noise.
    template <class T>
    T* allocate(std::size_t count, const Placement& around) {
        const std::size_t bytes = count * sizeof(T);
        check(bytes <= kMaxBytes / 2, "the block fits into its pages");
        std::memset(first(), around.noise, kMaxBytes);
        switch (around.place) {
        case Place::AtEnd: return reinterpret_cast<T*>(first() + kMaxBytes - bytes);
        case Place::AtStart: return reinterpret_cast<T*>(first());
        case Place::Across: break;
        }
        return reinterpret_cast<T*>(first() + kMaxBytes / 2 - std::min(around.before, count) * sizeof(T));
    }

    /// A copy of `elements`.
    template <class T>
    T* copy(std::basic_string_view<T> elements, const Placement& around) {
        T* const to = allocate<T>(elements.size(), around);
        std::copy(elements.begin(), elements.end(), to);
        return to;
    }

    /// A copy of `text` and its terminator.
    template <class T>
    T* copyText(const std::basic_string<T>& text, const Placement& around) {
        return copy(std::basic_string_view<T>(text.c_str(), text.size() + 1), around);
    }

private:
    [[nodiscard]] unsigned char* first() const noexcept { return m_block + kPage; }

    unsigned char* m_block;
};

/// The pages for the input and the pages for the output of a target. They are created once, because every run of the
/// target uses them.
inline GuardedPages& inputPages() {
    static GuardedPages pages;
    return pages;
}

inline GuardedPages& outputPages() {
    static GuardedPages pages;
    return pages;
}

}  // namespace fuzz

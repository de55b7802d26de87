/// \file
/// Memory between two pages that must not be touched, for what a kernel reads and for what it writes.
///
/// Kernels may read blocks that reach beyond a text, as long as they stay in a page of which the text has a part. So a
/// text that ends with its page shows every read that goes too far, and one that begins with it every read before it.
/// What lies around the text in its own pages is noise, on which no result may depend.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include <sys/mman.h>

#include "support/Check.h"

namespace fuzz {

/// Where in its pages a block lies.
enum class Place {
    AtEnd,    ///< ends where the forbidden page behind begins
    AtStart,  ///< begins where the forbidden page in front ends
    Across,   ///< lies around the border of two pages that may be touched
};

/// How a block lies in its pages, and what lies around it.
struct Surroundings {
    Place place;
    unsigned char noise;
    std::size_t before;  ///< the elements in front of the border, with `Place::Across`
};

/// Each `room` and each `copy` gives up what was placed before.
class GuardedPages {
public:
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t kMostBytes = 8 * kPage;

    GuardedPages()
        : m_block(static_cast<unsigned char*>(
              mmap(nullptr, kMostBytes + 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        check(m_block != MAP_FAILED, "there are pages to be had");
        check(mprotect(m_block, kPage, PROT_NONE) == 0, "the page in front is forbidden");
        check(mprotect(m_block + kPage + kMostBytes, kPage, PROT_NONE) == 0, "the page behind is forbidden");
    }
    ~GuardedPages() { munmap(m_block, kMostBytes + 2 * kPage); }

    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// Room for `count` elements, of half of the pages at most. They are noise, as is what lies around them.
    template <class T>
    T* room(std::size_t count, const Surroundings& around) {
        const std::size_t bytes = count * sizeof(T);
        check(bytes <= kMostBytes / 2, "the block has room in its pages");
        std::memset(first(), around.noise, kMostBytes);
        switch (around.place) {
        case Place::AtEnd: return reinterpret_cast<T*>(first() + kMostBytes - bytes);
        case Place::AtStart: return reinterpret_cast<T*>(first());
        case Place::Across: break;
        }
        return reinterpret_cast<T*>(first() + kMostBytes / 2 - std::min(around.before, count) * sizeof(T));
    }

    /// A copy of `elements`.
    template <class T>
    T* copy(std::basic_string_view<T> elements, const Surroundings& around) {
        T* const to = room<T>(elements.size(), around);
        std::copy(elements.begin(), elements.end(), to);
        return to;
    }

    /// A copy of `text` and its terminator.
    template <class T>
    T* copyText(const std::basic_string<T>& text, const Surroundings& around) {
        return copy(std::basic_string_view<T>(text.c_str(), text.size() + 1), around);
    }

private:
    [[nodiscard]] unsigned char* first() const noexcept { return m_block + kPage; }

    unsigned char* m_block;
};

/// What a target reads from and writes to: made once, for it is asked for at every input.
inline GuardedPages& inputPages() {
    static GuardedPages pages;
    return pages;
}

inline GuardedPages& outputPages() {
    static GuardedPages pages;
    return pages;
}

}  // namespace fuzz

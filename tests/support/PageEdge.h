/// \file
/// Memory between two pages that must not be touched: what reads or writes one element too far faults at once.
///
///     test::PageEdge<wchar_t> edge(4096);
///     const wchar_t* text = edge.placeAtEnd(L"abc");   // the byte behind the 'c' is out of bounds
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string_view>

#include <windows.h>

namespace test {

/// Room for `most` elements of `T`; each `place…` gives up what was placed before.
template <class T>
class PageEdge {
public:
    explicit PageEdge(std::size_t most)
        : m_bytes((most * sizeof(T) + kPage - 1) / kPage * kPage),
          m_block(static_cast<unsigned char*>(
              VirtualAlloc(nullptr, m_bytes + 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))) {
        if (!m_block || !forbid(m_block) || !forbid(m_block + kPage + m_bytes)) {
            throw std::runtime_error("no guarded pages to be had");
        }
    }
    ~PageEdge() { VirtualFree(m_block, 0, MEM_RELEASE); }

    PageEdge(const PageEdge&) = delete;
    PageEdge& operator=(const PageEdge&) = delete;

    /// `count` elements, the last of which ends where the forbidden page begins.
    T* lastElements(std::size_t count) {
        if (count * sizeof(T) > m_bytes) {
            throw std::length_error("more elements than the guarded pages hold");
        }
        return reinterpret_cast<T*>(m_block + kPage + m_bytes - count * sizeof(T));
    }
    /// The place where a forbidden page ends.
    T* firstElement() { return reinterpret_cast<T*>(m_block + kPage); }

    T* placeAtEnd(std::basic_string_view<T> elements) {
        T* const place = lastElements(elements.size());
        elements.copy(place, elements.size());
        return place;
    }
    T* placeAtStart(std::basic_string_view<T> elements) {
        lastElements(elements.size());
        elements.copy(firstElement(), elements.size());
        return firstElement();
    }

private:
    static constexpr std::size_t kPage = 4096;

    static bool forbid(unsigned char* page) {
        DWORD before = 0;
        return VirtualProtect(page, kPage, PAGE_NOACCESS, &before) != FALSE;
    }

    std::size_t m_bytes;
    unsigned char* m_block;
};

}  // namespace test

/// \file
/// Memory between two inaccessible pages. An access past either end faults at once.
///
///     test::PageEdge<wchar_t> edge(4096);
///     const wchar_t* text = edge.placeAtEnd(L"abc");   // the byte after the 'c' is inaccessible
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string_view>

#include <windows.h>

namespace test {

/// Memory for `maxElements` elements of `T`. Each `place…` call may overwrite the elements placed before.
template <class T>
class PageEdge {
public:
    explicit PageEdge(std::size_t maxElements)
        : m_bytes((maxElements * sizeof(T) + kPage - 1) / kPage * kPage),
          m_block(static_cast<unsigned char*>(
              VirtualAlloc(nullptr, m_bytes + 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))) {
        if (!m_block || !forbid(m_block) || !forbid(m_block + kPage + m_bytes)) {
            throw std::runtime_error("cannot allocate guarded pages");
        }
    }
    ~PageEdge() { VirtualFree(m_block, 0, MEM_RELEASE); }

    PageEdge(const PageEdge&) = delete;
    PageEdge& operator=(const PageEdge&) = delete;

    /// The last `count` elements before the inaccessible page at the end of the memory.
    T* lastElements(std::size_t count) {
        if (count * sizeof(T) > m_bytes) {
            throw std::length_error("more elements than the guarded pages hold");
        }
        return reinterpret_cast<T*>(m_block + kPage + m_bytes - count * sizeof(T));
    }
    /// The first element after the inaccessible page at the start of the memory.
    T* firstElement() { return reinterpret_cast<T*>(m_block + kPage); }

    T* placeAtEnd(std::basic_string_view<T> elements) {
        T* const first = lastElements(elements.size());
        elements.copy(first, elements.size());
        return first;
    }
    T* placeAtStart(std::basic_string_view<T> elements) {
        lastElements(elements.size());  // throws if the elements do not fit
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

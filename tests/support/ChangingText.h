/// \file
/// A text that changes while a function reads it, for example after the function has counted the units and before it
/// copies them. A text in shared memory can change this way. The first and the last units of the text are in different
/// pages. At first, both pages are inaccessible. An access to an inaccessible page is a fault. The fault handler makes
/// this page accessible and the other page inaccessible. Each fault, including the first, is called a switch. The text
/// changes at the switch that the test chooses, so the result does not depend on timing.
///
///     test::ChangingText<char> text("aaaa", "%%%%");
///     unsigned int nth = 0;
///     do {
///         text.changeAt(++nth);
///         vorel::util::urlEncode(text.data(), output, false, false);
///     } while (text.switches() >= nth);   // ends when the function reads the text with fewer than `nth` switches
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>

#include <windows.h>

namespace test {

/// The memory of the text. Only one object may exist at a time, and only one thread may use it.
class SwitchingPages {
public:
    static constexpr std::size_t kPage = 4096;

    SwitchingPages()
        : m_section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kBytes, nullptr)) {
        m_read = view();
        m_write = view();
        s_current = this;
        m_handler = AddVectoredExceptionHandler(1, &SwitchingPages::onFault);
        if (!m_read || !m_write || !m_handler) {
            throw std::runtime_error("cannot map memory with two views");
        }
    }
    ~SwitchingPages() {
        RemoveVectoredExceptionHandler(m_handler);
        s_current = nullptr;
        UnmapViewOfFile(m_read);
        UnmapViewOfFile(m_write);
        CloseHandle(m_section);
    }

    SwitchingPages(const SwitchingPages&) = delete;
    SwitchingPages& operator=(const SwitchingPages&) = delete;

    /// The three pages are mapped twice. `read` is the view for the function under test. `write` is a view that is
    /// always accessible.
    [[nodiscard]] unsigned char* read() const { return m_read; }
    [[nodiscard]] unsigned char* write() const { return m_write; }

    /// Makes the first and the last page of the view `read` inaccessible. The `nth` fault after this call copies
    /// `bytes` to `position`.
    void arm(unsigned int nth, unsigned char* position, std::string bytes) {
        m_nth = nth;
        m_position = position;
        m_bytes = std::move(bytes);
        m_faults = 0;
        protect(0, PAGE_NOACCESS);
        protect(2, PAGE_NOACCESS);
    }

    /// The number of faults since `arm`.
    [[nodiscard]] unsigned int faults() const { return m_faults; }

private:
    static constexpr std::size_t kBytes = 3 * kPage;

    [[nodiscard]] unsigned char* view() const {
        return static_cast<unsigned char*>(MapViewOfFile(m_section, FILE_MAP_ALL_ACCESS, 0, 0, kBytes));
    }

    void protect(std::size_t page, DWORD protection) const {
        DWORD before = 0;
        VirtualProtect(m_read + page * kPage, kPage, protection, &before);
    }

    static LONG CALLBACK onFault(EXCEPTION_POINTERS* fault) {
        if (fault->ExceptionRecord->ExceptionCode != static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION)) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        SwitchingPages& pages = *s_current;
        const ULONG_PTR page =
            (fault->ExceptionRecord->ExceptionInformation[1] - reinterpret_cast<ULONG_PTR>(pages.m_read)) / kPage;
        if (page != 0 && page != 2) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        if (++pages.m_faults == pages.m_nth) {
            std::memcpy(pages.m_position, pages.m_bytes.data(), pages.m_bytes.size());
        }
        pages.protect(page, PAGE_READWRITE);
        pages.protect(2 - page, PAGE_NOACCESS);
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    static inline SwitchingPages* s_current = nullptr;

    HANDLE m_section;
    unsigned char* m_read = nullptr;
    unsigned char* m_write = nullptr;
    void* m_handler = nullptr;
    unsigned int m_nth = 0;
    unsigned char* m_position = nullptr;
    std::string m_bytes;
    unsigned int m_faults = 0;
};

/// A text with units of type `T`. At first, the text repeats one pattern. At the chosen switch, its first and last
/// pages change to another pattern; the middle page does not change.
template <class T>
class ChangingText {
public:
    /// The length of the text in units. The text nearly fills a string buffer of 8,192 bytes, so a result that is more
    /// than 40 bytes longer does not fit into such a buffer.
    static constexpr std::size_t kUnits = (2 * SwitchingPages::kPage - 40) / sizeof(T) - 1;

    ChangingText(const std::basic_string<T>& before, const std::basic_string<T>& after)
        : m_before(bytesOf(before)), m_after(bytesOf(after)) {}

    /// Restores the first text, and changes it at the `nth` switch between the first and the last page.
    void changeAt(unsigned int nth) {
        unsigned char* const position = m_pages.write() + kOffset;
        std::memcpy(position, m_before.data(), m_before.size());
        m_pages.arm(nth, position, m_after);
    }

    /// The number of switches since `changeAt`.
    [[nodiscard]] unsigned int switches() const { return m_pages.faults(); }

    [[nodiscard]] T* data() const { return reinterpret_cast<T*>(m_pages.read() + kOffset); }

private:
    static constexpr std::size_t kEnd = 2032;  // bytes of the text in the first page; the last page has about as many
    static constexpr std::size_t kOffset = SwitchingPages::kPage - kEnd;

    /// The repeated pattern, with 'a' in the middle page, and a terminator.
    static std::string bytesOf(const std::basic_string<T>& pattern) {
        std::basic_string<T> text(kUnits + 1, T{'a'});
        for (std::size_t at = 0; at != kUnits; ++at) {
            const std::size_t byte = at * sizeof(T);
            if (byte < kEnd || byte >= kEnd + SwitchingPages::kPage) {
                text[at] = pattern[at % pattern.size()];
            }
        }
        text[kUnits] = T{};
        return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(T)};
    }

    std::string m_before;
    std::string m_after;
    SwitchingPages m_pages;
};

}  // namespace test

/// \file
/// How the library requests, trims and frees the system's text for an error.

#include "platform/SystemMessage.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ImportHook.h"

namespace {

using test::ImportHook;
using vorel::platform::SystemMessage;

/// Replaces the functions of the system. Returns `text` for the code 0x80070005, and records the blocks that are freed.
// cppcheck-suppress unsafeClassCanLeak; the library frees the text
class System {
public:
    explicit System(std::wstring text) : m_text(std::move(text)) {}

    [[nodiscard]] const std::vector<void*>& freed() const { return m_freed; }
    [[nodiscard]] void* given() const { return m_given; }

private:
    std::wstring m_text;
    std::vector<void*> m_freed;
    void* m_given = nullptr;
    ImportHook<importedFormatMessageW> m_format{
        [this](DWORD flags, const void* source, DWORD code, DWORD language, wchar_t* buffer, DWORD size, va_list*) {
            EXPECT_EQ(flags, 0x1300u) << "the system allocates the text, reads its own tables, and ignores insertions";
            EXPECT_EQ(source, nullptr);
            EXPECT_EQ(code, 0x80070005u);
            EXPECT_EQ(language, 0x0400u);
            EXPECT_EQ(size, 0u);
            const std::size_t bytes = (m_text.size() + 1) * sizeof(wchar_t);
            m_given = LocalAlloc(LMEM_FIXED, bytes);  // cppcheck-suppress LocalAllocCalled; freed by LocalFree
            std::copy_n(m_text.c_str(), m_text.size() + 1, static_cast<wchar_t*>(m_given));
            *reinterpret_cast<void**>(buffer) = m_given;
            return static_cast<DWORD>(m_text.size());
        }};
    ImportHook<importedLocalFree> m_free{[this](HLOCAL block) {
        m_freed.push_back(block);
        return m_free.original(block);
    }};
};

TEST(SystemMessage, IsTrimmedAtBothEndsAndFreed) {
    struct Case {
        const wchar_t* text;
        std::wstring_view trimmed;
    };
    for (const Case& c :
         {Case{L"\r\n \ttwo words \r\n", L"two words"}, Case{L"text", L"text"}, Case{L" \r\n\t", L""}, Case{L"", L""},
          Case{L"\x20\x09\x0A\x0B\x0C\x0D.\x0D\x0C\x0B\x0A\x09\x20", L"."},
          // Code points next to the trimmed code points are not trimmed, and neither are white space outside ASCII and
          // the byte order mark.
          Case{L"\x08.\x08", L"\x08.\x08"}, Case{L"\x0E.\x0E", L"\x0E.\x0E"}, Case{L"\x1F.\x1F", L"\x1F.\x1F"},
          Case{L"\x85.\x85", L"\x85.\x85"}, Case{L"\xA0.\xA0", L"\xA0.\xA0"}, Case{L"\x2003.\x2003", L"\x2003.\x2003"},
          Case{L"\x3000.\x3000", L"\x3000.\x3000"}, Case{L"\xFEFF.\xFEFF", L"\xFEFF.\xFEFF"}}) {
        const System system(c.text);
        {
            const SystemMessage message(static_cast<int>(0x80070005));
            EXPECT_EQ(message.trimmed(), c.trimmed);
            EXPECT_TRUE(system.freed().empty());
        }
        EXPECT_EQ(system.freed(), std::vector<void*>{system.given()});
    }
}

}  // namespace

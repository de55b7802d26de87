#include <windows.h>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::BaseString;
namespace util = vorel::util;

/// Text of about `size` bytes in UTF-8: `ascii` of ten characters are ASCII letters, the others are `first` to `last`.
std::wstring textOf(std::size_t size, unsigned int first, unsigned int last, unsigned int ascii) {
    std::mt19937_64 random(20261121);
    std::wstring text;
    for (std::size_t bytes = 0; bytes < size;) {
        if (random() % 10 < ascii) {
            text += static_cast<wchar_t>(L'a' + random() % 26);
            ++bytes;
        } else {
            const auto code = static_cast<unsigned int>(first + random() % (last - first + 1));
            if (code > 0xFFFF) {
                text += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
                text += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
            } else {
                text += static_cast<wchar_t>(code);
            }
            bytes += code > 0xFFFF ? 4 : code > 0x7FF ? 3 : code > 0x7F ? 2 : 1;
        }
    }
    return text;
}

/// The peers without tables or vector instructions: they convert one character at a time, and check the capacity and
/// the lead bytes.
std::uint64_t decodeScalar(const char* utf8, std::size_t count, std::wstring& buffer) {
    const auto* byte = reinterpret_cast<const unsigned char*>(utf8);
    const auto* const end = byte + count;
    wchar_t* out = buffer.data();
    const wchar_t* const start = out;
    const wchar_t* const lastPosition = out + buffer.size() - 2;
    while (byte < end && *byte != 0 && out <= lastPosition) {
        unsigned int value = *byte++;
        if (value >= 0x80) {
            if (value < 0xC0 || value > 0xF4) {
                return 0;
            }
            const int trailing = value < 0xE0 ? 1 : value < 0xF0 ? 2 : 3;
            value &= 0x3Fu >> trailing;
            for (int left = trailing; left != 0; --left) {
                value = value << 6 | (*byte++ & 0x3Fu);
            }
        }
        // cppcheck-suppress knownConditionTrueFalse; trailing bytes increase the value
        if (value > 0xFFFF) {
            *out++ = static_cast<wchar_t>(0xD7C0 + (value >> 10));
            *out++ = static_cast<wchar_t>(0xDC00 + (value & 0x3FF));
        } else {
            *out++ = static_cast<wchar_t>(value);
        }
    }
    *out = 0;
    return static_cast<std::uint64_t>(out - start);
}

std::uint64_t encodeScalar(const wchar_t* unit, std::size_t count, std::string& buffer) {
    const wchar_t* const end = unit + count;
    char* out = buffer.data();
    const char* const start = out;
    const char* const lastPosition = out + buffer.size() - 4;
    while (unit < end && *unit != 0 && out <= lastPosition) {
        unsigned int value = *unit++;
        if (value < 0x80) {
            *out++ = static_cast<char>(value);
            continue;
        }
        if ((value & 0xFC00) == 0xD800 && (*unit & 0xFC00) == 0xDC00) {
            value = 0x10000 + ((value & 0x3FF) << 10) + (*unit++ & 0x3FFu);
        }
        const int trailing = value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
        *out++ = static_cast<char>((0xF00u >> trailing & 0xFF) | value >> 6 * trailing);
        for (int left = trailing - 1; left >= 0; --left) {
            *out++ = static_cast<char>(0x80 | (value >> 6 * left & 0x3F));
        }
    }
    *out = 0;
    return static_cast<std::uint64_t>(out - start);
}

void compare(Family& family, const std::string& name, const std::wstring& text) {
    BaseString<char> utf8;
    util::ConvertStringtoUTF8(text.c_str(), utf8, -1);
    BaseString<wchar_t> wide;
    BaseString<char> narrow;
    std::wstring wideBuffer(utf8.length() + 16, L'\0');
    std::string narrowBuffer(4 * text.size() + 16, '\0');
    const auto bytes = static_cast<int>(utf8.length());
    const auto units = static_cast<int>(text.size());
    family.compare("UTF-8 to wide, " + name, 1,
                   [&] {
                       util::ConvertUTF8toString(wide, utf8.c_str(), bytes, true);
                       return std::uint64_t{wide.data()[0]};
                   },
                   {{"MultiByteToWideChar",
                     [&] {
                         return static_cast<std::uint64_t>(MultiByteToWideChar(
                             CP_UTF8, 0, utf8.c_str(), bytes, wideBuffer.data(), static_cast<int>(wideBuffer.size())));
                     }},
                    {"scalar loop", [&] { return decodeScalar(utf8.c_str(), utf8.length(), wideBuffer); }}});
    family.compare("wide to UTF-8, " + name, 1,
                   [&] {
                       util::ConvertStringtoUTF8(text.c_str(), narrow, units);
                       return static_cast<std::uint64_t>(narrow.data()[0]);
                   },
                   {{"WideCharToMultiByte",
                     [&] {
                         return static_cast<std::uint64_t>(
                             WideCharToMultiByte(CP_UTF8, 0, text.c_str(), units, narrowBuffer.data(),
                                                 static_cast<int>(narrowBuffer.size()), nullptr, nullptr));
                     }},
                    {"scalar loop", [&] { return encodeScalar(text.c_str(), text.size(), narrowBuffer); }}});
}

}  // namespace

void unicode(Family& family) {
    for (const std::size_t size : {kLarge, kSmall}) {
        compare(family, "ASCII, " + sizeName(size), textOf(size, 0x61, 0x7A, 0));
        compare(family, "mixed two-byte, " + sizeName(size), textOf(size, 0x400, 0x44F, 3));
        compare(family, "three-byte, " + sizeName(size), textOf(size, 0x4E00, 0x9FFF, 0));
        compare(family, "four-byte, " + sizeName(size), textOf(size, 0x1F300, 0x1F5FF, 0));
    }
}

}  // namespace bench

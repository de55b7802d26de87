#include <array>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::BaseString;
namespace util = vorel::util;

constexpr char kDigits[] = "0123456789ABCDEF";

bool isEscaped(unsigned char byte) {
    return byte >= 128 || std::string_view(" \"#%<>[\\]^`{|}~").find(static_cast<char>(byte)) != std::string_view::npos;
}

/// The peer: a table marks the bytes to escape, and each character is appended individually.
std::uint64_t encodeByteByByte(const std::string& text, std::string& out) {
    static const std::string kTable = [] {
        std::string table(256, '\0');
        for (unsigned int byte = 0; byte < 256; ++byte) {
            table[byte] = isEscaped(static_cast<unsigned char>(byte)) ? '\1' : '\0';
        }
        return table;
    }();
    out.clear();
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (kTable[byte] != 0) {
            out += '%';
            out += kDigits[byte >> 4];
            out += kDigits[byte & 15];
        } else {
            out += c;
        }
    }
    return out.size();
}

int valueOf(char c) {
    const std::size_t value = std::string_view("0123456789ABCDEF").find(c);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

std::uint64_t decodeByteByByte(const std::string& text, std::string& out) {
    static const std::array<int, 256> kTable = [] {
        std::array<int, 256> table = {};
        for (unsigned int byte = 0; byte < 256; ++byte) {
            table[byte] = valueOf(static_cast<char>(byte));
        }
        return table;
    }();
    out.clear();
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%' && at + 2 < text.size()) {
            const int high = kTable[static_cast<unsigned char>(text[at + 1])];
            const int low = kTable[static_cast<unsigned char>(text[at + 2])];
            if ((high | low) >= 0) {
                out += static_cast<char>(high << 4 | low);
                at += 2;
                continue;
            }
        }
        out += text[at];
    }
    return out.size();
}

/// Random lower-case letters and digits, and characters that must be escaped: on average, one in `run` characters.
std::string wordsOf(std::size_t size, std::uint64_t run) {
    std::mt19937_64 random(20261121);
    std::string text;
    while (text.size() < size) {
        text += random() % run == 0 ? " \"<\xC3"[random() % 4] : "abcdefghijklmnopqrstuvwxyz0123456789"[random() % 36];
    }
    return text;
}

void compare(Family& family, std::size_t size, std::uint64_t run) {
    const std::string text = wordsOf(size, run);
    BaseString<char> output;
    std::string plain;
    plain.reserve(3 * size);
    const std::string what = sizeName(size) + ", 1 in " + std::to_string(run);
    family.compare("URL encode, " + what, 1,
                   [&] {
                       util::urlEncode(text.c_str(), output, false, false);
                       return std::uint64_t{output.length()};
                   },
                   {{"table loop, reserved string", [&] { return encodeByteByByte(text, plain); }}});
    const std::string encoded(util::urlEncode(text.c_str(), false, false).view());
    family.compare("URL decode, " + what, 1,
                   [&] {
                       util::urlDecode(encoded.c_str(), output, 0);
                       return std::uint64_t{output.length()};
                   },
                   {{"table loop, reserved string", [&] { return decodeByteByByte(encoded, plain); }}});
}

}  // namespace

void urls(Family& family) {
    for (const std::size_t size : {kLarge, kSmall}) {
        compare(family, size, 8);
        compare(family, size, 50);
    }
}

}  // namespace bench

#include <array>
#include <cstring>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::Array;
using vorel::BaseString;
namespace util = vorel::util;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The peers: simple table loops that write into preallocated buffers.
template <class T>
std::size_t encodeBase64(const unsigned char* bytes, std::size_t count, T* out) {
    T* const start = out;
    for (; count >= 3; count -= 3, bytes += 3, out += 4) {
        out[0] = static_cast<T>(kAlphabet[bytes[0] >> 2]);
        out[1] = static_cast<T>(kAlphabet[(bytes[0] & 3) << 4 | bytes[1] >> 4]);
        out[2] = static_cast<T>(kAlphabet[(bytes[1] & 15) << 2 | bytes[2] >> 6]);
        out[3] = static_cast<T>(kAlphabet[bytes[2] & 63]);
    }
    if (count != 0) {
        const unsigned int second = count == 2 ? bytes[1] : 0u;
        out[0] = static_cast<T>(kAlphabet[bytes[0] >> 2]);
        out[1] = static_cast<T>(kAlphabet[(bytes[0] & 3u) << 4 | second >> 4]);
        out[2] = static_cast<T>(count == 2 ? kAlphabet[(second & 15) << 2] : '=');
        out[3] = static_cast<T>('=');
        out += 4;
    }
    *out = 0;
    return static_cast<std::size_t>(out - start);
}

const std::array<int, 256>& base64Values() {
    static const std::array<int, 256> kValues = [] {
        std::array<int, 256> values = {};
        values.fill(-1);
        for (int value = 0; value < 64; ++value) {
            values[static_cast<unsigned char>(kAlphabet[value])] = value;
        }
        values['='] = 0;
        return values;
    }();
    return kValues;
}

template <class T>
std::size_t decodeBase64(const T* text, unsigned char* out) {
    const std::array<int, 256>& values = base64Values();
    unsigned char* const start = out;
    for (; *text; text += 4, out += 3) {
        const int a = values[static_cast<unsigned char>(text[0])];
        const int b = values[static_cast<unsigned char>(text[1])];
        const int c = values[static_cast<unsigned char>(text[2])];
        const int d = values[static_cast<unsigned char>(text[3])];
        if ((a | b | c | d) < 0) {
            break;
        }
        out[0] = static_cast<unsigned char>(a << 2 | b >> 4);
        out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
        out[2] = static_cast<unsigned char>(c << 6 | d);
        if (text[3] == '=') {
            out += text[2] == '=' ? 1 : 2;
            break;
        }
    }
    return static_cast<std::size_t>(out - start);
}

template <class T>
std::size_t encodeHex(const unsigned char* bytes, std::size_t count, T* out) {
    for (std::size_t at = 0; at < count; ++at) {
        out[2 * at] = static_cast<T>("0123456789ABCDEF"[bytes[at] >> 4]);
        out[2 * at + 1] = static_cast<T>("0123456789ABCDEF"[bytes[at] & 15]);
    }
    out[2 * count] = 0;
    return 2 * count;
}

const std::array<unsigned char, 256>& hexValues() {
    static const std::array<unsigned char, 256> kValues = [] {
        std::array<unsigned char, 256> values = {};
        for (unsigned char value = 0; value < 16; ++value) {
            values[static_cast<unsigned char>("0123456789ABCDEF"[value])] = value;
            values[static_cast<unsigned char>("0123456789abcdef"[value])] = value;
        }
        return values;
    }();
    return kValues;
}

template <class T>
std::size_t decodeHex(const T* text, std::size_t length, unsigned char* out) {
    const std::array<unsigned char, 256>& values = hexValues();
    for (std::size_t at = 0; at < length / 2; ++at) {
        out[at] = static_cast<unsigned char>(values[static_cast<unsigned char>(text[2 * at])] << 4 |
                                             values[static_cast<unsigned char>(text[2 * at + 1])]);
    }
    return length / 2;
}

template <class T>
void compare(Family& family, std::size_t size, const std::string& width) {
    const std::string data = randomBytes(size);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(data.data());
    Array<unsigned char> array;
    array.append(bytes, static_cast<unsigned int>(size));
    std::basic_string<T> plain(2 * size + 8, T{});
    std::string plainBytes(size + 8, '\0');
    auto* const plainOut = reinterpret_cast<unsigned char*>(plainBytes.data());
    BaseString<T> text;
    Array<unsigned char> decoded;
    const std::string what = sizeName(size) + ", " + width;
    const auto copyOf = [&plain](const void* from, std::size_t count) {
        return Pass([&plain, from, count] {
            std::memcpy(plain.data(), from, count);
            return static_cast<std::uint64_t>(plain[0]);
        });
    };
    family.compare("Base64 encode, " + what, 1,
                   [&] {
                       util::Base64::Encode(array, text);
                       return std::uint64_t{text.length()};
                   },
                   {{"table loop", [&] { return std::uint64_t{encodeBase64(bytes, size, plain.data())}; }},
                    {"memcpy of the bytes", copyOf(bytes, size)}});
    util::Base64::Encode(array, text);
    family.compare("Base64 decode, " + what, 1,
                   [&] {
                       util::Base64::Decode(text.c_str(), decoded);
                       return std::uint64_t{decoded.size()};
                   },
                   {{"table loop", [&] { return std::uint64_t{decodeBase64(text.c_str(), plainOut)}; }},
                    {"memcpy of the bytes", copyOf(bytes, size)}});
    family.compare("hex encode, " + what, 1,
                   [&] {
                       util::byteArrayToHexString(array, text, true);
                       return std::uint64_t{text.length()};
                   },
                   {{"table loop", [&] { return std::uint64_t{encodeHex(bytes, size, plain.data())}; }},
                    {"memcpy of the bytes", copyOf(bytes, size)}});
    util::byteArrayToHexString(array, text, true);
    family.compare("hex decode, " + what, 1,
                   [&] {
                       util::hexStringToByteArray(text.c_str(), text.length(), decoded);
                       return std::uint64_t{decoded.size()};
                   },
                   {{"table loop", [&] { return std::uint64_t{decodeHex(text.c_str(), text.length(), plainOut)}; }},
                    {"memcpy of the bytes", copyOf(bytes, size)}});
}

}  // namespace

void binaryToText(Family& family) {
    for (const std::size_t size : {kLarge, kSmall}) {
        compare<char>(family, size, "narrow");
        compare<wchar_t>(family, size, "wide");
    }
}

}  // namespace bench

#include "vorel/text/Base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <type_traits>

#include "LibraryState.h"
#include "text/OutputTail.h"
#include "text/SixBitText.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

char Base64::base64encode[64] = {};
int Base64::base64decode[256] = {};
const char Base64::base64pad = '=';

// In the library's state the tables have their place in the order in which things are created.
const bool Base64::initialized = [] {
    const detail::LibraryState* const state = detail::libraryState();
    return state ? state->base64Tables : initializeBase64Tables();
}();

namespace {

constexpr int kInvalid = -128;
constexpr std::size_t kGroupsBetweenBlocks = 8;

template <class T>
constexpr bool isBreak(T c) noexcept {
    return c == '\t' || c == '\n' || c == '\r' || c == ' ';
}

/// The next character behind white space as a number. The terminator is not passed.
template <class T>
unsigned int takeCharacter(const T*& place) {
    while (isBreak(*place)) {
        ++place;
    }
    const unsigned int character = static_cast<std::make_unsigned_t<T>>(*place);
    if (character > 0xFF) {
        throw Exception(L"Unicode character found in Base64 text");
    }
    place += character != 0 ? 1 : 0;
    return character;
}

enum class GroupEnd {
    None,
    Text,
    Invalid,
};

/// Takes a group of four characters, and writes its bytes at `out`, which has room for three.
template <class T>
GroupEnd takeGroup(const T*& place, const int* table, char pad, unsigned char* out, std::size_t& written) {
    const unsigned int first = takeCharacter(place);
    written = 0;
    if (first == 0) {
        return GroupEnd::Text;
    }
    unsigned int characters[4] = {first};
    int values[4] = {table[first]};
    for (std::size_t at = 1; at < std::size(values); ++at) {
        characters[at] = takeCharacter(place);
        values[at] = table[characters[at]];
    }
    if (std::find(std::begin(values), std::end(values), kInvalid) != std::end(values)) {
        return GroupEnd::Invalid;
    }
    const auto sixBits = [&](std::size_t at) { return static_cast<unsigned int>(values[at]); };
    kernels::decodeFour(sixBits(0), sixBits(1), sixBits(2), sixBits(3), out);
    const auto isPad = [&](std::size_t at) { return characters[at] == static_cast<unsigned char>(pad); };
    written = isPad(2) ? 1 : isPad(3) ? 2 : 3;
    return written < 3 ? GroupEnd::Text : GroupEnd::None;
}

template <class T>
int decode(const T* text, const int* table, char pad, Array<unsigned char>& bytes) {
    if (!text) {
        bytes.clear();
        return 0;
    }
    text::ArrayTail<unsigned char> out(bytes, 0);
    for (;;) {
        if (out.room() < text::kBlockBytes + text::kBlockOverhang) {
            // Asked only when there is too little: the text has to be measured for it.
            out.reserve(std::char_traits<T>::length(text) / 4 * 3 + text::kBlockBytes + text::kBlockOverhang);
        }
        const std::size_t blocks =
            text::decodeWholeBlocks(text, kernels::kBase64Rows, kernels::Strangers::Stop, out.free(), out.room());
        if (blocks != 0) {
            text += blocks * text::kBlockCharacters;
            out.written(blocks * text::kBlockBytes);
            std::memset(out.free(), 0, text::kBlockOverhang);  // what is not in use is zero
            if (*text == 0) {
                return 0;
            }
            continue;  // there may be little room left
        }
        for (std::size_t group = 0; group < kGroupsBetweenBlocks; ++group) {
            unsigned char group3[3];
            std::size_t written = 0;
            const GroupEnd end = takeGroup(text, table, pad, group3, written);
            std::copy_n(group3, written, out.free());
            out.written(written);
            if (end != GroupEnd::None) {
                return end == GroupEnd::Invalid ? 1 : 0;
            }
        }
    }
}

template <class T>
void encode(const unsigned char* data, std::size_t count, const char* alphabet, char pad, BaseString<T>& text) {
    T* out = text::roomFor(std::uint64_t{count} / 3 * 4 + 4, text);
    out = text::encodeWholeGroups(data, count, alphabet, out);
    if (const std::size_t rest = count % 3; rest != 0) {
        const unsigned char* const tail = data + (count - rest);
        kernels::encodeThree(tail[0], rest == 2 ? tail[1] : 0u, 0u, alphabet, out);
        std::fill(out + rest + 1, out + 4, static_cast<T>(pad));
        out += 4;
    }
    text::endAt(out, text);
}

}  // namespace

Base64& Base64::operator=(const Base64&) = default;

bool Base64::initializeBase64Tables() noexcept {
    std::fill(std::begin(base64decode), std::end(base64decode), kInvalid);
    for (std::size_t value = 0; value < std::size(base64encode); ++value) {
        base64encode[value] = kernels::kBase64Alphabet[value];
        base64decode[static_cast<unsigned char>(base64encode[value])] = static_cast<int>(value);
    }
    base64decode[static_cast<unsigned char>(base64pad)] = 0;
    return true;
}

void Base64::Encode(const Array<unsigned char>& bytes, BaseString<char>& text) {
    detail::guarded(L"Base64", L"Encode(char)",
                    [&] { encode(bytes.data(), bytes.size(), base64encode, base64pad, text); });
}

void Base64::Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text) {
    detail::guarded(L"Base64", L"Encode(wchar_t)",
                    [&] { encode(bytes.data(), bytes.size(), base64encode, base64pad, text); });
}

void Base64::EncodeRange(const unsigned char* data, unsigned int start, unsigned int count, BaseString<char>& text) {
    detail::guarded(L"Base64", L"EncodeRange(CString)",
                    [&] { encode(data ? data + start : nullptr, data ? count : 0, base64encode, base64pad, text); });
}

void Base64::EncodeRange(const unsigned char* data, unsigned int start, unsigned int count, BaseString<wchar_t>& text) {
    detail::guarded(L"Base64", L"EncodeRange(String)",
                    [&] { encode(data ? data + start : nullptr, data ? count : 0, base64encode, base64pad, text); });
}

int Base64::Decode(const char* text, Array<unsigned char>& bytes) {
    return detail::guarded(L"Base64", L"Decode(char)", [&] { return decode(text, base64decode, base64pad, bytes); });
}

int Base64::Decode(const wchar_t* text, Array<unsigned char>& bytes) {
    return detail::guarded(L"Base64", L"Decode(wchar_t)", [&] { return decode(text, base64decode, base64pad, bytes); });
}

}  // namespace vorel::util

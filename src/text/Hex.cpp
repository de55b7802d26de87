#include "vorel/text/Hex.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kernels/Characters.h"
#include "kernels/HexDigits.h"
#include "text/SixBitText.h"
#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

template <class T>
void encode(const Array<unsigned char>& bytes, kernels::HexCase letters, BaseString<T>& text) {
    T* const out = text::roomFor(std::uint64_t{2} * bytes.size(), text);
    if (out) {
        text::endAt(kernels::encodeHex(bytes.data(), bytes.size(), letters, out), text);
    }
}

constexpr std::size_t kBlock = 16;  // digits

/// Decodes pairs of digits: whole blocks at once, and the others by `takePair(first, second, byte)`, which says whether
/// to go on. What is left over of an odd number is handed over with the terminator.
template <class T, class TakePair>
bool decodePairs(const T* text, std::size_t length, unsigned char* out, TakePair&& takePair) {
    for (std::size_t at = 0; at < length;) {
        const std::size_t blocks = kernels::decodeHex(text + at, (length - at) / kBlock, out + at / 2);
        at += blocks * kBlock;
        for (std::size_t end = at + kBlock; at < length && at < end; at += 2) {
            if (!takePair(text[at], text[at + 1], out + at / 2)) {
                return false;
            }
        }
    }
    return true;
}

/// What the status decoder takes a unit for: a digit has 0 to 15.
int looseValueOf(wchar_t unit) noexcept {
    const bool isSmallLetter = unit >= 'a' && unit <= 'z';
    const int character = (isSmallLetter ? unit - 'a' + 'A' : unit) & 0xFF;
    return character < '9' + 1 ? character - '0' : character - 'A' + 10;
}

bool takeLoosePair(wchar_t first, wchar_t second, unsigned char* out) noexcept {
    const int high = looseValueOf(first);
    const int low = looseValueOf(second);
    if (high < 0 || high > 15 || low < 0 || low > 15) {
        return false;
    }
    *out = static_cast<unsigned char>(high * 16 + low);
    return true;
}

/// The value of a digit, and 0 for everything else.
template <class T>
unsigned int valueOrZero(T c) noexcept {
    const unsigned int value = kernels::hexDigitValue(c);
    return value < 16 ? value : 0;
}

template <class T>
void decodeSilently(const T* text, std::size_t length, Array<unsigned char>& bytes) {
    if (!text || length == 0 || length % 2 != 0) {
        return;
    }
    if (length / 2 > 0xFFFFFFFFu) {
        detail::throwMemory(0xFFFFFFFFu, 1);
    }
    bytes.setCount(static_cast<unsigned int>(length / 2));
    decodePairs(text, length, bytes.data(), [](T first, T second, unsigned char* out) {
        *out = static_cast<unsigned char>(valueOrZero(first) << 4 | valueOrZero(second));
        return true;
    });
}

template <class T>
std::size_t lengthOf(const T* text) noexcept {
    return text ? std::char_traits<T>::length(text) : 0;
}

}  // namespace

Hex& Hex::operator=(const Hex&) = default;

void Hex::Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text) {
    encode(bytes, kernels::HexCase::Upper, text);
}

int Hex::Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes) {
    std::wstring_view digits = text.view();
    bytes.setCount(static_cast<unsigned int>(digits.size() / 2));
    if (digits.size() >= 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        digits.remove_prefix(2);
    }
    return decodePairs(digits.data(), digits.size(), bytes.data(), takeLoosePair) ? 0 : 1;
}

void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<char>& text, bool upperCase) {
    detail::guarded(L"vorel::util", L"byteArrayToHexString",
                    [&] { encode(bytes, upperCase ? kernels::HexCase::Upper : kernels::HexCase::Lower, text); });
}

void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<wchar_t>& text, bool upperCase) {
    detail::guarded(L"vorel::util", L"byteArrayToHexString",
                    [&] { encode(bytes, upperCase ? kernels::HexCase::Upper : kernels::HexCase::Lower, text); });
}

void hexStringToByteArray(const char* text, Array<unsigned char>& bytes) {
    decodeSilently(text, lengthOf(text), bytes);
}

void hexStringToByteArray(const char* text, unsigned int length, Array<unsigned char>& bytes) {
    decodeSilently(text, length, bytes);
}

void hexStringToByteArray(const wchar_t* text, Array<unsigned char>& bytes) {
    decodeSilently(text, lengthOf(text), bytes);
}

void hexStringToByteArray(const wchar_t* text, unsigned int length, Array<unsigned char>& bytes) {
    decodeSilently(text, length, bytes);
}

}  // namespace vorel::util

#include "vorel/text/Hex.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "algorithms/HexText.h"
#include "algorithms/TextLength.h"
#include "core/HeldInputs.h"
#include "text/OutputSinks.h"
#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

template <class T>
void encode(const Array<unsigned char>& bytes, algorithms::HexCase letters, BaseString<T>& text) {
    T* const out = text::reserveUnits(std::uint64_t{2} * bytes.size(), text);
    if (out) {
        text::setEnd(algorithms::encodeHex(bytes.data(), bytes.size(), letters, out), text);
    }
}

template <class T>
void decodeLenient(const T* text, std::size_t length, Array<unsigned char>& bytes) {
    if (!text || length == 0 || length % 2 != 0) {
        return;
    }
    if (length / 2 > 0xFFFFFFFFu) {
        detail::throwMemory(0xFFFFFFFFu, 1);
    }
    const detail::HeldInput held(bytes, text);
    bytes.setCount(static_cast<unsigned int>(length / 2));
    algorithms::decodeHexLenient(text, length, bytes.data());
}

template <class T>
std::size_t lengthOf(const T* text) noexcept {
    return text ? algorithms::countUnits(text) : 0;
}

}  // namespace

Hex& Hex::operator=(const Hex&) = default;

void Hex::Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text) {
    encode(bytes, algorithms::HexCase::Upper, text);
}

int Hex::Decode(const BaseString<wchar_t>& text, Array<unsigned char>& bytes) {
    std::wstring_view digits = text.view();
    bytes.setCount(static_cast<unsigned int>(digits.size() / 2));
    if (digits.size() >= 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        digits.remove_prefix(2);
    }
    return algorithms::decodeHexWithStatus(digits.data(), digits.size(), bytes.data()) ? 0 : 1;
}

void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<char>& text, bool upperCase) {
    detail::runRethrowing(L"vorel::util", L"byteArrayToHexString", [&] {
        encode(bytes, upperCase ? algorithms::HexCase::Upper : algorithms::HexCase::Lower, text);
    });
}

void byteArrayToHexString(const Array<unsigned char>& bytes, BaseString<wchar_t>& text, bool upperCase) {
    detail::runRethrowing(L"vorel::util", L"byteArrayToHexString", [&] {
        encode(bytes, upperCase ? algorithms::HexCase::Upper : algorithms::HexCase::Lower, text);
    });
}

void hexStringToByteArray(const char* text, Array<unsigned char>& bytes) {
    decodeLenient(text, lengthOf(text), bytes);
}

void hexStringToByteArray(const char* text, unsigned int length, Array<unsigned char>& bytes) {
    decodeLenient(text, length, bytes);
}

void hexStringToByteArray(const wchar_t* text, Array<unsigned char>& bytes) {
    decodeLenient(text, lengthOf(text), bytes);
}

void hexStringToByteArray(const wchar_t* text, unsigned int length, Array<unsigned char>& bytes) {
    decodeLenient(text, length, bytes);
}

}  // namespace vorel::util

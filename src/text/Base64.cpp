#include "vorel/text/Base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>

#include "algorithms/Base64Text.h"
#include "algorithms/TextLength.h"
#include "core/ArrayAccess.h"
#include "core/HeldInputs.h"
#include "text/Base64State.h"
#include "text/OutputSinks.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

char Base64::base64encode[64] = {};
int Base64::base64decode[256] = {};
const char Base64::base64pad = '=';

const bool Base64::initialized = [] {
    const detail::Base64Tables* const tables = detail::base64Tables.get();
    return tables ? tables->initialized : initializeBase64Tables();
}();

namespace {

using algorithms::Base64End;

/// Allocates storage for an array without storage. The destructor writes zeros only to the slots that are still unused.
class NewStorage {
public:
    NewStorage(Array<unsigned char>& bytes, std::size_t slots) : m_bytes(bytes) {
        if (slots > 0xFFFFFFFFu) {
            detail::throwMemory(0xFFFFFFFFu, 1);
        }
        detail::ArrayAccess<unsigned char>::allocate(bytes, static_cast<unsigned int>(slots));
    }
    ~NewStorage() { detail::ArrayAccess<unsigned char>::clearUnused(m_bytes); }

    NewStorage(const NewStorage&) = delete;
    NewStorage& operator=(const NewStorage&) = delete;

private:
    Array<unsigned char>& m_bytes;
};

/// A capacity that is enough to decode the text without growing.
template <class T>
std::size_t capacityFor(const T* text) noexcept {
    return algorithms::countUnits(text) / 4 * 3 + algorithms::kBase64StepCapacity;
}

/// The result of `Decode` for a text whose decoding stopped at `end`.
/// \throws Exception if the text contains a unit above 255.
int statusOf(Base64End end) {
    if (end == Base64End::NonByteUnit) {
        throw Exception(L"Unicode character found in Base64 text");
    }
    return end == Base64End::Invalid ? 1 : 0;
}

template <class T>
int decodeText(const T* text, const int* table, char pad, Array<unsigned char>& bytes) {
    if (bytes.allocated() < algorithms::kBase64StepCapacity) {
        // An empty text, or a text that starts with an invalid group, encodes no bytes, so no storage is allocated for
        // it.
        const T* cursor = text;
        unsigned char group[3];
        std::size_t written = 0;
        const Base64End end = algorithms::parseBase64Group(cursor, table, pad, group, written);
        if (written == 0) {
            bytes.setCount(0);
            return statusOf(end);
        }
    }
    std::optional<NewStorage> storage;
    if (bytes.allocated() == 0) {
        storage.emplace(bytes, capacityFor(text));
    }
    text::ArraySink<unsigned char> out(bytes, 0);
    for (;;) {
        if (out.available() < algorithms::kBase64StepCapacity) {
            // Reserves only when space is short, because reserving requires the length of the text.
            out.reserve(capacityFor(text));
        }
        const algorithms::Base64Step step =
            algorithms::decodeBase64Step(text, table, pad, out.writePosition(), out.available());
        out.advance(step.written);
        if (step.end != Base64End::None) {
            return statusOf(step.end);
        }
    }
}

template <class T>
int decode(const T* text, const int* table, char pad, Array<unsigned char>& bytes) {
    if (!text) {
        bytes.clear();
        return 0;
    }
    const detail::HeldInput held(bytes, text);
    return decodeText(text, table, pad, bytes);
}

template <class T>
void encode(const unsigned char* data, std::size_t count, const char* alphabet, char pad, BaseString<T>& text) {
    const detail::HeldInput held(text, data);
    T* const out = text::reserveUnits(std::uint64_t{count} / 3 * 4 + 4, text);
    text::setEnd(algorithms::encodeBase64(data, count, alphabet, pad, out), text);
}

}  // namespace

Base64& Base64::operator=(const Base64&) = default;

bool Base64::initializeBase64Tables() noexcept {
    std::fill(std::begin(base64decode), std::end(base64decode), algorithms::kInvalidBase64);
    for (std::size_t value = 0; value < std::size(base64encode); ++value) {
        base64encode[value] = algorithms::kBase64Alphabet[value];
        base64decode[static_cast<unsigned char>(base64encode[value])] = static_cast<int>(value);
    }
    base64decode[static_cast<unsigned char>(base64pad)] = 0;
    return true;
}

void Base64::Encode(const Array<unsigned char>& bytes, BaseString<char>& text) {
    detail::runRethrowing(L"Base64", L"Encode(char)",
                          [&] { encode(bytes.data(), bytes.size(), base64encode, base64pad, text); });
}

void Base64::Encode(const Array<unsigned char>& bytes, BaseString<wchar_t>& text) {
    detail::runRethrowing(L"Base64", L"Encode(wchar_t)",
                          [&] { encode(bytes.data(), bytes.size(), base64encode, base64pad, text); });
}

void Base64::EncodeRange(const unsigned char* data, unsigned int start, unsigned int count, BaseString<char>& text) {
    detail::runRethrowing(L"Base64", L"EncodeRange(CString)", [&] {
        encode(data ? data + start : nullptr, data ? count : 0, base64encode, base64pad, text);
    });
}

void Base64::EncodeRange(const unsigned char* data, unsigned int start, unsigned int count, BaseString<wchar_t>& text) {
    detail::runRethrowing(L"Base64", L"EncodeRange(String)", [&] {
        encode(data ? data + start : nullptr, data ? count : 0, base64encode, base64pad, text);
    });
}

int Base64::Decode(const char* text, Array<unsigned char>& bytes) {
    return detail::runRethrowing(L"Base64", L"Decode(char)",
                                 [&] { return decode(text, base64decode, base64pad, bytes); });
}

int Base64::Decode(const wchar_t* text, Array<unsigned char>& bytes) {
    return detail::runRethrowing(L"Base64", L"Decode(wchar_t)",
                                 [&] { return decode(text, base64decode, base64pad, bytes); });
}

}  // namespace vorel::util

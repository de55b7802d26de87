#include "vorel/text/Unicode.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "algorithms/Attributes.h"
#include "algorithms/Utf16.h"
#include "algorithms/Utf8Short.h"
#include "algorithms/Utf8Streams.h"
#include "core/HeldInputs.h"
#include "core/StringAccess.h"
#include "text/ClearOnFailure.h"
#include "text/OutputSinks.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

namespace {

using algorithms::Surrogates;
using detail::replacing;
using detail::runRethrowing;
using Reader = algorithms::Utf8Reader;

constexpr unsigned int kUnitsPerBlock = 450;
constexpr unsigned int kEncodedBlock = 256;   // bytes per block
constexpr unsigned int kAppendedBlock = 248;  // bytes per block of text that is appended to an array

const unsigned char* bytesOf(const char* text) noexcept {
    return reinterpret_cast<const unsigned char*>(text);
}

/// "Hex string: 28-41" for the bytes from `bytes` to the next zero, or an empty string if there are none. By design,
/// the text does not contain the invalid byte, which is before `bytes`.
BaseString<wchar_t> hexDump(const unsigned char* bytes) {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    BaseString<wchar_t> dump;
    for (const unsigned char* byte = bytes; *byte; ++byte) {
        const wchar_t digits[] = {kDigits[*byte >> 4], kDigits[*byte & 15]};
        dump += byte == bytes ? L"Hex string: " : L"-";
        dump.append(digits, 2);
    }
    return dump;
}

/// Handles a byte that does not start a sequence: throws if `throwOnError` is true, and returns false otherwise.
VOREL_COLD bool rejectByte(const unsigned char* offending, bool throwOnError) {
    if (throwOnError) {
        const BaseString<wchar_t> dump = hexDump(offending + 1);
        throw Exception(L"Error converting UTF-8 character (%ls)", dump.view().data());
    }
    return false;
}

/// Runs a conversion of narrow text. If the conversion throws a library exception, adds a message with the text.
template <class Conversion>
auto withInput(const char* fmt, const char* input, Conversion&& conversion) {
    try {
        return conversion();
    } catch (Exception& e) {
        e.appendMessage(fmt, input);
        throw;
    }
}

/// Sets the length of `output` after a short text was converted directly into its buffer. Returns false if the text was
/// not converted.
template <class T>
bool adoptLength(BaseString<T>& output, std::size_t units) noexcept {
    if (units == algorithms::kNotShort) {
        return false;
    }
    detail::StringAccess<T>::setLength(output, static_cast<unsigned int>(units));
    return true;
}

/// Decodes a short text that fits into the string's current buffer.
bool decodeShort(BaseString<wchar_t>& output, const unsigned char* input, int length) noexcept {
    return input && output.capacity() != 0 &&
           adoptLength(output, algorithms::decodeShortText(input, length, output.data(), output.capacity() - 1));
}

/// If the string has no buffer, decodes a short text and appends it. Returns whether the text was decoded.
bool decodeNewShort(BaseString<wchar_t>& output, const unsigned char* input, int length) {
    wchar_t units[algorithms::kShortText];
    if (output.capacity() != 0) {
        return false;
    }
    const std::size_t count = algorithms::decodeShortText(input, length, units, std::size(units));
    if (count == algorithms::kNotShort) {
        return false;
    }
    output.append(units, static_cast<unsigned int>(count));
    return true;
}

/// Decodes a text that has an invalid byte, and appends each block of units when it is full. The units of the last,
/// incomplete block are dropped. If another thread has made the text valid meanwhile, the whole text is appended.
VOREL_NOINLINE bool decodeInBlocks(BaseString<wchar_t>& output, Reader reader, bool throwOnError) {
    wchar_t block[kUnitsPerBlock + 1];  // and one unit for the second unit of a pair
    std::size_t units = 0;
    output.clear();
    do {
        units += reader.read<Reader::LastPair::Written>(block + units, kUnitsPerBlock - units);
        if (units >= kUnitsPerBlock) {
            output.append(block, kUnitsPerBlock);
            units -= kUnitsPerBlock;
            std::copy_n(block + kUnitsPerBlock, units, block);
        }
        if (reader.failed()) {
            return rejectByte(reader.position(), throwOnError);
        }
    } while (!reader.atEnd());
    output.append(block, static_cast<unsigned int>(units));
    return true;
}

/// If memory runs out, truncates the output to whole blocks, as if the blocks were appended one by one.
class WholeBlocksOnFailure {
public:
    explicit WholeBlocksOnFailure(BaseString<wchar_t>& output) noexcept : m_output(&output) {}
    ~WholeBlocksOnFailure() {
        if (m_output && m_output->capacity() != 0) {
            detail::StringAccess<wchar_t>::setLength(*m_output, m_output->length() / kUnitsPerBlock * kUnitsPerBlock);
        }
    }

    WholeBlocksOnFailure(const WholeBlocksOnFailure&) = delete;
    WholeBlocksOnFailure& operator=(const WholeBlocksOnFailure&) = delete;

    /// Call this when the conversion has succeeded. The output is then kept.
    void done() noexcept { m_output = nullptr; }

private:
    BaseString<wchar_t>* m_output;
};

/// Decodes a text that `decodeShort` did not decode. This function is not inlined, so that short texts skip its setup.
VOREL_NOINLINE bool decode(BaseString<wchar_t>& output, const unsigned char* input, int length, bool throwOnError) {
    return runRethrowing(L"vorel::util::ConvertUTF8toString", [&] {
        if (!input) {
            output.clear();
            return true;
        }
        if (decodeNewShort(output, input, length)) {
            return true;
        }
        Reader reader(input, length);
        WholeBlocksOnFailure result(output);
        const bool valid = text::fill<kUnitsPerBlock, 1>(
            text::StringSink<wchar_t, text::Growth::ByPieces>(output),
            [&](wchar_t* out, std::size_t capacity) { return reader.read<Reader::LastPair::Left>(out, capacity); },
            [&](std::span<wchar_t, kUnitsPerBlock + 1> out) {
                return reader.read<Reader::LastPair::Written>(out.data(), kUnitsPerBlock);
            },
            [&]() -> std::optional<std::size_t> {
                bool invalid = false;
                const std::size_t units = reader.unitsLeft(&invalid);
                return invalid ? std::nullopt : std::optional(units);
            },
            [&] { return reader.atEnd(); });
        result.done();
        return valid || decodeInBlocks(output, Reader(input, length), throwOnError);
    });
}

/// A caller's buffer for units, or a separate buffer if the input begins in the caller's buffer. The destructor copies
/// the units of the separate buffer to the caller's buffer. They are not copied earlier, because the message of a
/// failure is built from the input.
class SeparateUnits {
public:
    SeparateUnits(wchar_t* output, unsigned int size, const void* input) : m_output(output), m_units(output) {
        const auto distance = reinterpret_cast<std::uintptr_t>(input) - reinterpret_cast<std::uintptr_t>(output);
        if (input && distance < std::uintptr_t{size} * sizeof(wchar_t)) {
            m_units = m_own.reserve(size, true);
        }
    }
    ~SeparateUnits() {
        if (m_units != m_output) {
            std::copy_n(m_units, m_written, m_output);
        }
    }

    SeparateUnits(const SeparateUnits&) = delete;
    SeparateUnits& operator=(const SeparateUnits&) = delete;

    [[nodiscard]] wchar_t* units() const noexcept { return m_units; }
    /// Sets the number of units written.
    void setWritten(std::size_t units) noexcept { m_written = units; }

private:
    wchar_t* m_output;
    wchar_t* m_units;
    std::size_t m_written = 0;
    BaseString<wchar_t> m_own;
};

/// Writes the UTF-8 form of a wide text to `sink`.
template <Surrogates Rule, unsigned int Block, class Sink>
void encode(const wchar_t* input, int length, Sink&& sink) {
    algorithms::Utf8Writer<Rule, wchar_t> writer(input, length);
    const auto write = [&](auto* out, std::size_t enough, std::size_t capacity) {
        return writer.write(reinterpret_cast<unsigned char*>(out), enough, capacity);
    };
    // Space for the longest sequence, and for whole vectors at the end of the block.
    constexpr unsigned int kOverhang = 64;
    text::fill<Block, kOverhang>(
        std::forward<Sink>(sink), [&](auto* out, std::size_t capacity) { return write(out, capacity, capacity); },
        [&](auto out) { return write(out.data(), Block, out.size()); }, [&] { return writer.bytesLeft(); },
        [&] { return writer.atEnd(); });
}

/// Encodes a short text that fits into the string's current buffer.
bool encodeShort(BaseString<char>& output, const wchar_t* input, int length) noexcept {
    auto* const out = reinterpret_cast<unsigned char*>(output.data());
    return input && output.capacity() != 0 &&
           adoptLength(output,
                       algorithms::encodeShortText<Surrogates::Paired>(input, length, out, output.capacity() - 1));
}

/// If the string has no buffer, encodes a short text and appends it. Returns whether the text was encoded.
bool encodeNewShort(BaseString<char>& output, const wchar_t* input, int length) {
    unsigned char bytes[algorithms::kMaxUtf8BytesPerUnit * algorithms::kShortText];
    if (output.capacity() != 0) {
        return false;
    }
    const std::size_t count = algorithms::encodeShortText<Surrogates::Paired>(input, length, bytes, std::size(bytes));
    if (count == algorithms::kNotShort) {
        return false;
    }
    output.append(reinterpret_cast<const char*>(bytes), static_cast<unsigned int>(count));
    return true;
}

void encodeLong(BaseString<char>& output, const wchar_t* input, int length) {
    runRethrowing(L"vorel::util::ConvertStringtoUTF8", [&] {
        if (!input) {
            output.clear();
            return;
        }
        if (encodeNewShort(output, input, length)) {
            return;
        }
        text::ClearOnFailure result(output);
        encode<Surrogates::Paired, kEncodedBlock>(input, length, text::StringSink<char, text::Growth::AtOnce>(output));
        result.done();
    });
}

void readUtf16(BaseString<wchar_t>& output, const unsigned char* input, int length) {
    runRethrowing(L"vorel::util::ConvertUTF16toString", [&] {
        output.clear();
        if (!input || length == 0) {
            return;
        }
        if (length < 0) {
            throw Exception(L"A string length needs to be specified for UTF-16 to UCS conversion");
        }
        const auto units =
            static_cast<unsigned int>(algorithms::unitsBeforeZero(input, static_cast<unsigned int>(length)));
        if (units != 0) {
            std::memcpy(output.reserve(units, true), input, std::size_t{units} * sizeof(wchar_t));
            detail::StringAccess<wchar_t>::setLength(output, units);
        }
    });
}

}  // namespace

int ConvertUCStoUTF8(unsigned int codePoint, char* output, int) noexcept {
    if (!output || codePoint > 0x7FFFFFFF) {
        return 0;
    }
    return static_cast<int>(algorithms::encodeUtf8Sequence(codePoint, reinterpret_cast<unsigned char*>(output)));
}

bool ConvertUTF8toString(BaseString<wchar_t>& output, const unsigned char* input, int length, bool throwOnError) {
    return replacing(output, input,
                     [&] { return decodeShort(output, input, length) || decode(output, input, length, throwOnError); });
}

bool ConvertUTF8toString(BaseString<wchar_t>& output, const char* input, int length, bool throwOnError) {
    return replacing(output, input, [&] {
        return decodeShort(output, bytesOf(input), length) ||
               withInput("Failed to convert utf8 text to String: %s", input,
                         [&] { return decode(output, bytesOf(input), length, throwOnError); });
    });
}

bool ConvertUTF8toString(wchar_t* output, unsigned int size, const unsigned char* input, int length,
                         bool throwOnError) {
    return runRethrowing(L"vorel::util::ConvertUTF8toString", [&] {
        const unsigned int capacity = size != 0 ? size - 1 : 0;
        Reader reader(input ? input : bytesOf(""), length);
        SeparateUnits out(output, size, input);
        // The rest of the caller's buffer must stay unchanged.
        const std::size_t units =
            reader.read<Reader::LastPair::Left, algorithms::Overwrite::Forbidden>(out.units(), capacity);
        out.setWritten(units);
        if (reader.failed()) {
            return rejectByte(reader.position(), throwOnError);
        }
        if (size != 0) {
            out.units()[units] = 0;
            out.setWritten(units + 1);
        }
        return true;
    });
}

void ConvertStringtoUTF8(const wchar_t* input, Array<unsigned char>& output, bool appendZero, int length) {
    runRethrowing(L"vorel::util::ConvertStringtoUTF8", [&] {
        if (!input) {
            output.clear();
            return;
        }
        replacing(output, input,
                  [&] { encode<Surrogates::Paired, kEncodedBlock>(input, length, text::ArraySink(output, 0)); });
        if (appendZero) {
            output.append(0);
        }
    });
}

void ConvertStringtoUTF8(const wchar_t* input, BaseString<char>& output, int length) {
    replacing(output, input, [&] {
        if (!encodeShort(output, input, length)) {
            encodeLong(output, input, length);
        }
    });
}

void ConvertUTF16toString(BaseString<wchar_t>& output, const unsigned char* input, int length) {
    replacing(output, input, [&] { readUtf16(output, input, length); });
}

void ConvertUTF16toString(BaseString<wchar_t>& output, const char* input, int length) {
    replacing(output, input, [&] {
        withInput("Failed to convert UTF-16 text to String: %s", input,
                  [&] { readUtf16(output, bytesOf(input), length); });
    });
}

void ConvertStringtoUTF16(const wchar_t* input, Array<unsigned char>& output, bool littleEndian, bool appendZero, int) {
    const auto write = [&] {
        output.setCount(0);
        if (!input) {
            return;
        }
        const std::size_t units = std::char_traits<wchar_t>::length(input) + (appendZero ? 1 : 0);
        if (units > 0xFFFFFFFFu / sizeof(wchar_t)) {
            detail::throwMemory(0xFFFFFFFFu, 1);
        }
        output.setCount(static_cast<unsigned int>(units * sizeof(wchar_t)));
        algorithms::writeUtf16Bytes(input, units, littleEndian, output.data());
    };
    runRethrowing(L"vorel::util::ConvertStringtoUTF16", [&] { replacing(output, input, write); });
}

void EncodeAndAppendToBuffer(const wchar_t* input, Array<unsigned char>& output) {
    runRethrowing(L"vorel::util::EncodeAndAppendToBuffer", [&] {
        if (!input) {
            return;
        }
        BaseString<wchar_t> copy;
        if (detail::holds(output, input)) {
            // The text lies in the array. Appending may move the array's elements to other memory. Appending also
            // overwrites the slot after the last element, and the terminator of the text may be in this slot.
            copy = input;
            input = copy.view().data();
        }
        encode<Surrogates::Single, kAppendedBlock>(input, -1, text::ArraySink(output, output.size()));
    });
}

bool ContainsUnicode(const BaseString<wchar_t>& text) noexcept {
    const std::wstring_view units = text.view();
    return std::any_of(units.begin(), units.end(), [](wchar_t unit) { return unit >= 128; });
}

}  // namespace vorel::util

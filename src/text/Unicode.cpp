#include "vorel/text/Unicode.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "core/StringAccess.h"
#include "kernels/Utf8.h"
#include "kernels/Utf8Reader.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

namespace {

using detail::guarded;
using kernels::Surrogates;
using Reader = kernels::Utf8Reader;

constexpr unsigned int kUnitsPerBlock = 450;
constexpr std::size_t kEncodedBlock = 256;   // bytes that are handed over at once …
constexpr std::size_t kAppendedBlock = 248;  // … and when they are appended to what is there

const unsigned char* bytesOf(const char* text) noexcept {
    return reinterpret_cast<const unsigned char*>(text);
}

/// "Hex string: 28-41" for the bytes from `bytes` to the next zero; nothing for none. The offending byte itself stands
/// before them, and is left out on purpose.
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

/// The answer to a byte that starts no sequence.
bool refuse(const unsigned char* offending, bool throwOnError) {
    if (throwOnError) {
        const BaseString<wchar_t> dump = hexDump(offending + 1);
        throw Exception(L"Error converting UTF-8 character (%ls)", dump.view().data());
    }
    return false;
}

/// Runs a conversion for narrow text: a library exception that passes gets the text itself as a further message.
template <class Conversion>
auto withInput(const char* fmt, const char* input, Conversion&& conversion) {
    try {
        return conversion();
    } catch (Exception& e) {
        e.appendMessage(fmt, input);
        throw;
    }
}

/// The end of wide text under the rules of a length: its terminator, or the bound before it.
const wchar_t* endOf(const wchar_t* input, int length) noexcept {
    if (length < 0) {
        return input + std::char_traits<wchar_t>::length(input);
    }
    const wchar_t* const bound = input + length;
    return std::find(input, bound, L'\0');
}

/// Appends the UTF-8 form of a wide text block by block, each with at least `Block` bytes but the last.
template <Surrogates Rule, std::size_t Block>
void encode(const wchar_t* cursor, const wchar_t* end, Array<unsigned char>& output) {
    unsigned char block[Block + kernels::kLongestUtf8Sequence];
    while (cursor < end) {
        const std::size_t bytes = kernels::encodeUtf8Block<Rule>(cursor, end, block, Block);
        output.append(block, static_cast<unsigned int>(bytes));
    }
}

}  // namespace

int ConvertUCStoUTF8(unsigned int codePoint, char* output, int) noexcept {
    if (!output || codePoint > 0x7FFFFFFF) {
        return 0;
    }
    return static_cast<int>(kernels::encodeUtf8Sequence(codePoint, reinterpret_cast<unsigned char*>(output)));
}

bool ConvertUTF8toString(BaseString<wchar_t>& output, const unsigned char* input, int length, bool throwOnError) {
    return guarded(L"vorel::util::ConvertUTF8toString", [&] {
        output.clear();
        if (!input) {
            return true;
        }
        Reader reader(input, length);
        wchar_t block[kUnitsPerBlock + 1];  // the second unit of a pair may stand behind a full block
        unsigned int units = 0;
        for (;;) {
            units += static_cast<unsigned int>(
                reader.read<Reader::LastPair::Written>(block + units, kUnitsPerBlock - units));
            if (units < kUnitsPerBlock) {
                break;
            }
            output.append(block, kUnitsPerBlock);
            units -= kUnitsPerBlock;
            std::copy_n(block + kUnitsPerBlock, units, block);
        }
        if (reader.failed()) {
            return refuse(reader.position(), throwOnError);
        }
        output.append(block, units);
        return true;
    });
}

bool ConvertUTF8toString(BaseString<wchar_t>& output, const char* input, int length, bool throwOnError) {
    return withInput("Failed to convert utf8 text to String: %s", input,
                     [&] { return ConvertUTF8toString(output, bytesOf(input), length, throwOnError); });
}

bool ConvertUTF8toString(wchar_t* output, unsigned int size, const unsigned char* input, int length,
                         bool throwOnError) {
    return guarded(L"vorel::util::ConvertUTF8toString", [&] {
        Reader reader(input ? input : bytesOf(""), length);
        const std::size_t units = reader.read<Reader::LastPair::Left>(output, size != 0 ? size - 1 : 0);
        if (reader.failed()) {
            return refuse(reader.position(), throwOnError);
        }
        if (size != 0) {
            output[units] = 0;
        }
        return true;
    });
}

void ConvertStringtoUTF8(const wchar_t* input, Array<unsigned char>& output, bool appendZero, int length) {
    guarded(L"vorel::util::ConvertStringtoUTF8", [&] {
        output.setCount(0);
        if (!input) {
            return;
        }
        encode<Surrogates::Paired, kEncodedBlock>(input, endOf(input, length), output);
        if (appendZero) {
            output.append(0);
        }
    });
}

void ConvertStringtoUTF8(const wchar_t* input, BaseString<char>& output, int length) {
    guarded(L"vorel::util::ConvertStringtoUTF8", [&] {
        output.clear();
        if (!input) {
            return;
        }
        Array<unsigned char> bytes;
        encode<Surrogates::Paired, kEncodedBlock>(input, endOf(input, length), bytes);
        output.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    });
}

void ConvertUTF16toString(BaseString<wchar_t>& output, const unsigned char* input, int length) {
    guarded(L"vorel::util::ConvertUTF16toString", [&] {
        output.clear();
        if (!input || length == 0) {
            return;
        }
        if (length < 0) {
            throw Exception(L"A string length needs to be specified for UTF-16 to UCS conversion");
        }
        // The bytes need not lie at an even address, so they are never read as units in place.
        unsigned int units = 0;
        while (units < static_cast<unsigned int>(length) / 2 && (input[2 * units] | input[2 * units + 1]) != 0) {
            ++units;
        }
        if (units != 0) {
            std::memcpy(output.reserve(units, true), input, units * sizeof(wchar_t));
            detail::StringAccess<wchar_t>::setLength(output, units);
        }
    });
}

void ConvertUTF16toString(BaseString<wchar_t>& output, const char* input, int length) {
    withInput("Failed to convert UTF-16 text to String: %s", input,
              [&] { ConvertUTF16toString(output, bytesOf(input), length); });
}

void ConvertStringtoUTF16(const wchar_t* input, Array<unsigned char>& output, bool littleEndian, bool appendZero, int) {
    guarded(L"vorel::util::ConvertStringtoUTF16", [&] {
        output.setCount(0);
        if (!input) {
            return;
        }
        const std::size_t units = std::char_traits<wchar_t>::length(input) + (appendZero ? 1 : 0);
        if (units > 0xFFFFFFFFu / sizeof(wchar_t)) {
            detail::throwMemory(0xFFFFFFFFu, 1);
        }
        output.setCount(static_cast<unsigned int>(units * sizeof(wchar_t)));
        unsigned char* byte = output.data();
        for (const wchar_t* unit = input; unit != input + units; ++unit, byte += 2) {
            byte[littleEndian ? 0 : 1] = static_cast<unsigned char>(*unit);
            byte[littleEndian ? 1 : 0] = static_cast<unsigned char>(*unit >> 8);
        }
    });
}

void EncodeAndAppendToBuffer(const wchar_t* input, Array<unsigned char>& output) {
    if (input) {
        encode<Surrogates::Single, kAppendedBlock>(input, endOf(input, -1), output);
    }
}

bool ContainsUnicode(const BaseString<wchar_t>& text) noexcept {
    const std::wstring_view units = text.view();
    return std::any_of(units.begin(), units.end(), [](wchar_t unit) { return unit >= 128; });
}

}  // namespace vorel::util

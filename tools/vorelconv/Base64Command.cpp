#include <array>

#include "Command.h"
#include "Filter.h"
#include "support/Tool.h"
#include "vorel/text/Base64.h"

namespace conv {

namespace {

using vorel::util::Base64;

class Base64Encoder final : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        constexpr std::size_t kGroupBytes = 3;
        const std::size_t count = last ? block.size() : block.size() - block.size() % kGroupBytes;
        Base64::EncodeRange(reinterpret_cast<const unsigned char*>(block.data()), 0, static_cast<unsigned int>(count),
                            m_text);
        result += m_text.view();
        return count;
    }

private:
    vorel::BaseString<char> m_text;
};

enum class Kind : unsigned char { Other, Value, Padding, Space };

/// The kind of every byte. The library's decoder determines which characters have a value.
std::array<Kind, 256> kindsOfBytes() {
    std::array<Kind, 256> kinds = {};
    vorel::Array<unsigned char> bytes;
    for (std::size_t byte = 1; byte != kinds.size(); ++byte) {
        const char group[] = {static_cast<char>(byte), 'A', 'A', 'A', '\0'};
        kinds[byte] = Base64::Decode(group, bytes) == 0 ? Kind::Value : Kind::Other;
    }
    for (const char each : std::string_view("\t\n\r ")) {
        kinds[static_cast<unsigned char>(each)] = Kind::Space;
    }
    kinds['='] = Kind::Padding;
    return kinds;
}

/// Checks every character before decoding, because the library reports an error without its position and ignores text
/// after the padding.
class Base64Decoder final : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        m_groups.clear();
        std::size_t whole = 0;   // end of the last complete group and of the white space after it
        std::size_t filled = 0;  // characters in the current group
        for (std::size_t index = 0; index < block.size(); ++index) {
            const Kind kind = m_kinds[static_cast<unsigned char>(block[index])];
            if (kind != Kind::Space) {
                check(block[index], kind, index, filled);
                m_groups += block[index];
                filled = (filled + 1) % kGroupCharacters;
            }
            if (filled == 0) {
                whole = index + 1;
            }
        }
        if (last && filled != 0) {
            throw BadInput{block.size(), L"characters missing from the last group of four: " +
                                             std::to_wstring(kGroupCharacters - filled) + L" (pad with '=')"};
        }
        m_groups.resize(m_groups.size() - filled);
        if (Base64::Decode(m_groups.c_str(), m_bytes) != 0) {
            throw BadInput{0, L"invalid Base64"};
        }
        result.append(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size());
        m_ended = m_ended || m_groups.ends_with('=');
        return whole;
    }

private:
    static constexpr std::size_t kGroupCharacters = 4;

    void check(char character, Kind kind, std::size_t index, std::size_t filled) const {
        if (m_ended || (filled == 0 && m_groups.ends_with('='))) {
            throw BadInput{index, L"expected nothing after the padding, found " + quoted(character)};
        }
        const bool isAfterPadding = filled == 3 && m_groups.ends_with('=');
        if (kind == Kind::Other || (kind == Kind::Padding && filled < 2) || (kind == Kind::Value && isAfterPadding)) {
            throw BadInput{index, (isAfterPadding ? L"expected '=', found " : L"expected a Base64 character, found ") +
                                      quoted(character)};
        }
    }

    const std::array<Kind, 256> m_kinds = kindsOfBytes();
    std::string m_groups;
    vorel::Array<unsigned char> m_bytes;
    bool m_ended = false;  // an earlier block had padding
};

int run(const tools::Arguments& arguments) {
    if (arguments.has(kDecodeOption.name)) {
        Base64Decoder decoder;
        runFilter(arguments, decoder);
    } else {
        Base64Encoder encoder;
        runFilter(arguments, encoder);
    }
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kDecodeOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv base64",
               .summary = L"encode or decode Base64",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"The encoded text has no line breaks. Decoding ignores white space. Padding is\n"
                          L"required; only white space may follow it.\n"
                          L"\n"
                          L"  vorelconv base64 --text Hello        SGVsbG8=\n"
                          L"  vorelconv base64 -d -t SGVsbG8=      Hello"},
    .run = run};

}  // namespace

const Command& base64Command() {
    return kCommand;
}

}  // namespace conv

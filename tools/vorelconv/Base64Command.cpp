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

constexpr auto kKinds = [] {
    std::array<Kind, 256> kinds = {};
    for (const char each : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")) {
        kinds[static_cast<unsigned char>(each)] = Kind::Value;
    }
    for (const char each : std::string_view("\t\n\r ")) {
        kinds[static_cast<unsigned char>(each)] = Kind::Space;
    }
    kinds['='] = Kind::Padding;
    return kinds;
}();

/// Finds every mistake itself: the library tells that there is one, but not where, and ends a text at its padding
/// without a look at what follows.
class Base64Decoder final : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        m_groups.clear();
        std::size_t whole = 0;   // behind the last whole group, or behind the space that follows it
        std::size_t filled = 0;  // characters of the group that has begun
        for (std::size_t index = 0; index < block.size(); ++index) {
            const Kind kind = kKinds[static_cast<unsigned char>(block[index])];
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
            throw BadInput{block.size(), L"the text ends within a group of four characters, " +
                                             std::to_wstring(kGroupCharacters - filled) +
                                             L" more are expected ('=' where there is no byte)"};
        }
        m_groups.resize(m_groups.size() - filled);
        if (Base64::Decode(m_groups.c_str(), m_bytes) != 0) {
            throw BadInput{0, L"no Base64 text"};
        }
        result.append(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size());
        m_ended = m_ended || m_groups.ends_with('=');
        return whole;
    }

private:
    static constexpr std::size_t kGroupCharacters = 4;

    void check(char character, Kind kind, std::size_t index, std::size_t filled) const {
        if (m_ended || (filled == 0 && m_groups.ends_with('='))) {
            throw BadInput{index, L"nothing is expected behind the padding, found " + shown(character)};
        }
        const bool isBehindPadding = filled == 3 && m_groups.ends_with('=');
        if (kind == Kind::Other || (kind == Kind::Padding && filled < 2) || (kind == Kind::Value && isBehindPadding)) {
            throw BadInput{index,
                           (isBehindPadding ? L"'=' is expected, found " : L"a Base64 character is expected, found ") +
                               shown(character)};
        }
    }

    std::string m_groups;
    vorel::Array<unsigned char> m_bytes;
    bool m_ended = false;  // by padding in an earlier block
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
               .summary = L"bytes as Base64, and back",
               .options = kOptions,
               .operands = kInputOperand,
               .mostOperands = 1,
               .details = L"The text has no line breaks. Decoding passes over white space; padding is asked for,\n"
                          L"and nothing but white space may follow it.\n"
                          L"\n"
                          L"  vorelconv base64 --text Hello        SGVsbG8=\n"
                          L"  vorelconv base64 -d -t SGVsbG8=      Hello"},
    .run = run};

}  // namespace

const Command& base64Command() {
    return kCommand;
}

}  // namespace conv

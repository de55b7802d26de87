#include <algorithm>

#include "Command.h"
#include "Filter.h"
#include "support/Tool.h"
#include "vorel/text/Daylight.h"

namespace conv {

namespace {

using Bytes = vorel::Array<unsigned char>;
using WideString = vorel::BaseString<wchar_t>;

constexpr std::size_t kGroupBytes = 3;
constexpr std::size_t kGroupCharacters = 4;

/// The library ends each encoded text with a character for the number of bytes in the last group. The filter removes
/// this character from the result of every block except the last block.
class DaylightEncoder final : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        const std::size_t count = last ? block.size() : block.size() - block.size() % kGroupBytes;
        m_bytes.setCount(static_cast<unsigned int>(count));
        std::copy_n(block.begin(), count, m_bytes.begin());
        vorel::util::Daylight::Encode(m_bytes, m_text);
        const std::wstring_view text = m_text.view();
        std::transform(text.begin(), text.end() - (last ? 0 : 1), std::back_inserter(result),
                       [](wchar_t unit) { return static_cast<char>(unit); });
        return count;
    }

private:
    Bytes m_bytes;
    WideString m_text;
};

bool isInAlphabet(char character) {
    return character == '.' || character == '+' || (character >= '0' && character <= '9') ||
           (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

/// Checks the characters before decoding, because the library decodes a comma as '+', and every other character outside
/// the alphabet as '.'.
class DaylightDecoder final : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        const std::string_view text = withoutSpaceAtEnd(block);
        const auto good =
            static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isInAlphabet) - text.begin());
        if (good != text.size()) {
            throw BadInput{good, L"expected a Daylight character (. + 0-9 A-Z a-z), found " + quoted(text[good])};
        }
        if (last) {
            checkEnd(text);
            decode(text, result);
            return block.size();
        }
        // The last character of the input gives the number of bytes in the last group. The last five characters of the
        // block may be the last group and the last character of the input, so they are decoded with the next block.
        const std::size_t held = kGroupCharacters + 1;
        const std::size_t whole = text.size() < held ? 0 : (text.size() - held) / kGroupCharacters * kGroupCharacters;
        if (whole != 0) {
            decode(std::string(text.substr(0, whole)) + '3', result);
        }
        return whole;
    }

private:
    static std::string_view withoutSpaceAtEnd(std::string_view block) {
        return block.substr(0, block.find_last_not_of(" \t\r\n") + 1);
    }

    static void checkEnd(std::string_view text) {
        if (text.size() % kGroupCharacters != 1) {
            throw BadInput{text.size(), L"expected one character after the complete groups of four, found " +
                                            std::to_wstring(text.size() % kGroupCharacters)};
        }
        const char count = text.back();
        if (count != '3' && !(text.size() > 1 && (count == '1' || count == '2'))) {
            throw BadInput{text.size() - 1, (text.size() > 1 ? L"expected 1, 2 or 3 as the last character, found "
                                                             : L"expected 3 as the only character, found ") +
                                                quoted(count)};
        }
    }

    void decode(std::string_view text, std::string& result) {
        const std::wstring wide(text.begin(), text.end());
        m_text = WideString(wide.c_str(), static_cast<unsigned int>(wide.size()));
        vorel::util::Daylight::Decode(m_text, m_bytes);
        result.append(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size());
    }

    Bytes m_bytes;
    WideString m_text;
};

int run(const tools::Arguments& arguments) {
    if (arguments.has(kDecodeOption.name)) {
        DaylightDecoder decoder;
        runFilter(arguments, decoder);
    } else {
        DaylightEncoder encoder;
        runFilter(arguments, encoder);
    }
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kDecodeOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv daylight",
               .summary = L"encode or decode the Daylight encoding of bit strings",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"Three bytes become four characters of . + 0-9 A-Z a-z. The last character gives the\n"
                          L"number of bytes in the last group. White space is allowed only after it.\n"
                          L"\n"
                          L"  vorelconv daylight --text AB         EI6.2\n"
                          L"  vorelconv daylight -d -t EI6.2       AB"},
    .run = run};

}  // namespace

const Command& daylightCommand() {
    return kCommand;
}

}  // namespace conv

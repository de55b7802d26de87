#include <algorithm>

#include "Command.h"
#include "Filter.h"
#include "support/Tool.h"
#include "vorel/text/Hex.h"

namespace conv {

namespace {

using Bytes = vorel::Array<unsigned char>;

class HexEncoder final : public Filter {
public:
    explicit HexEncoder(bool upperCase) : m_upperCase(upperCase) {}

    std::size_t convert(std::string_view block, bool, std::string& result) override {
        m_bytes.setCount(static_cast<unsigned int>(block.size()));
        std::copy(block.begin(), block.end(), m_bytes.begin());
        vorel::util::byteArrayToHexString(m_bytes, m_text, m_upperCase);
        result += m_text.view();
        return block.size();
    }

private:
    bool m_upperCase;
    Bytes m_bytes;
    vorel::BaseString<char> m_text;
};

bool isDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F') ||
           (character >= 'a' && character <= 'f');
}

bool isSpace(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

/// Checks the digits before decoding, because the library decodes every character that is not a digit as 0.
class HexDecoder final : public Filter {
public:
    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        m_digits.clear();
        std::size_t whole = 0;  // end of the pairs of digits, and of the white space after them
        for (std::size_t index = 0; index < block.size(); ++index) {
            if (isDigit(block[index])) {
                m_digits += block[index];
            } else if (!isSpace(block[index])) {
                throw BadInput{index, L"expected a hexadecimal digit, found " + quoted(block[index])};
            }
            if (m_digits.size() % 2 == 0) {
                whole = index + 1;
            }
        }
        if (m_digits.size() % 2 != 0) {
            if (last) {
                throw BadInput{block.size(), L"the text ends within a byte; expected one more hexadecimal digit"};
            }
            m_digits.pop_back();
        }
        m_bytes.clear();
        vorel::util::hexStringToByteArray(m_digits.c_str(), static_cast<unsigned int>(m_digits.size()), m_bytes);
        result.append(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size());
        return whole;
    }

private:
    std::string m_digits;
    Bytes m_bytes;
};

constexpr tools::Option kUpperOption = {L"upper", L'u', {}, L"write A to F instead of a to f"};

int run(const tools::Arguments& arguments) {
    if (arguments.has(kDecodeOption.name)) {
        HexDecoder decoder;
        runFilter(arguments, decoder);
    } else {
        HexEncoder encoder(arguments.has(kUpperOption.name));
        runFilter(arguments, encoder);
    }
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kDecodeOption, kUpperOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv hex",
               .summary = L"encode or decode hexadecimal digits",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"The encoded text has no line breaks and no prefix. Decoding ignores white space and\n"
                          L"accepts digits in either case.\n"
                          L"\n"
                          L"  vorelconv hex --text Hello           48656c6c6f\n"
                          L"  vorelconv hex -d -t \"48 65\"          He"},
    .run = run};

}  // namespace

const Command& hexCommand() {
    return kCommand;
}

}  // namespace conv

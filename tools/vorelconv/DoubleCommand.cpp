#include <bit>
#include <cstdint>

#include "Command.h"
#include "LineFilter.h"
#include "support/Text.h"
#include "support/Tool.h"
#include "vorel/values/NumberFormatting.h"
#include "vorel/values/NumberParsing.h"

namespace conv {

namespace {

struct DoubleRules {
    vorel::util::FormattingOptions format = vorel::util::FO_Default;
    bool fromBits = false;
    bool toBits = false;
    bool round = false;
};

double readNumber(const std::wstring& line) {
    if (!vorel::util::canCoerceToDouble(line.c_str(), true)) {
        throw BadInput{0, L"expected a number, found " + quoted(line)};
    }
    return vorel::util::stringToDouble(line.c_str(), nullptr);
}

/// Reads the sixteen hexadecimal digits of a double's bits in two halves, because the library reads at most 32 bits.
double readBits(const std::wstring& line) {
    constexpr std::size_t kHalfDigits = 8;
    const std::wstring digits = trimmed(line);
    if (digits.size() != 2 * kHalfDigits || digits.find_first_not_of(L"0123456789abcdefABCDEF") != std::wstring::npos) {
        throw BadInput{0, L"expected sixteen hexadecimal digits, found " + quoted(line)};
    }
    const auto half = [&](std::size_t start) {
        const std::wstring text = digits.substr(start, kHalfDigits);
        return static_cast<std::uint32_t>(vorel::util::hexToInteger(text.c_str(), nullptr));
    };
    return std::bit_cast<double>(std::uint64_t{half(0)} << 32 | half(kHalfDigits));
}

class DoubleFilter final : public LineFilter {
public:
    explicit DoubleFilter(const DoubleRules& rules) : m_rules(rules) {}

protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        double value = m_rules.fromBits ? readBits(line) : readNumber(line);
        if (m_rules.round) {
            value = vorel::util::round(value);
        }
        if (m_rules.toBits) {
            appendLine(result, tools::formatted(L"%016llx", std::bit_cast<unsigned long long>(value)));
            return;
        }
        constexpr std::size_t kMaxCharacters = 64;
        wchar_t text[kMaxCharacters];
        appendLine(result, vorel::util::doubleToString(value, text, kMaxCharacters, m_rules.format));
    }

private:
    DoubleRules m_rules;
};

constexpr tools::Option kJsonOption = {L"json", L'j', {}, L"write numbers as JSON allows"};
constexpr tools::Option kRoundOption = {L"round", L'r', {}, L"round to the nearest whole number; halves round down"};
constexpr tools::Option kFromBitsOption = {L"from-bits", L'f', {}, L"read the bits as sixteen hexadecimal digits"};
constexpr tools::Option kToBitsOption = {L"to-bits", L'b', {}, L"write the bits as sixteen hexadecimal digits"};

int run(const tools::Arguments& arguments) {
    DoubleFilter filter({
        .format = arguments.has(kJsonOption.name) ? vorel::util::FO_JSON : vorel::util::FO_Default,
        .fromBits = arguments.has(kFromBitsOption.name),
        .toBits = arguments.has(kToBitsOption.name),
        .round = arguments.has(kRoundOption.name),
    });
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kJsonOption,   kRoundOption, kFromBitsOption,
                                      kToBitsOption, kTextOption,  kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv double",
               .summary = L"convert floating-point numbers, one per line, to the library's format",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"Writes at most fifteen significant digits and exponents of three digits. Numbers\n"
                          L"between -0.1 and 0.1, except 0, always have an exponent. Only the first\n"
                          L"eighteen digits count, including leading zeros; later digits count as 0. Numbers that\n"
                          L"are too large become Inf or -Inf (with --json, \"Infinity\" or \"-Infinity\" in quotes).\n"
                          L"Numbers that are too small become 0.\n"
                          L"\n"
                          L"  vorelconv double --text 0.05                        5.e-002\n"
                          L"  vorelconv double --json --text 1e20                 1.0e+020\n"
                          L"  vorelconv double --from-bits -t 7ff0000000000000    Inf"},
    .run = run};

}  // namespace

const Command& doubleCommand() {
    return kCommand;
}

}  // namespace conv

#include "Command.h"
#include "LineFilter.h"
#include "WholeNumbers.h"
#include "support/Tool.h"
#include "vorel/values/NumberFormatting.h"
#include "vorel/values/NumberParsing.h"

namespace conv {

namespace {

constexpr std::size_t kMaxDigits = 21;  // including the sign and the terminator

std::wstring decimal(long long value) {
    wchar_t digits[kMaxDigits];
    return vorel::util::Int64ToStr(value, digits, kMaxDigits);
}

std::wstring unsignedDecimal(unsigned long long value) {
    wchar_t digits[kMaxDigits];
    return vorel::util::UInt64ToStr(value, digits, kMaxDigits);
}

std::wstring readSigned(const std::wstring& line) {
    return decimal(vorel::util::stringToInteger64(line.c_str(), nullptr, false));
}

std::wstring readUnsigned(const std::wstring& line) {
    return unsignedDecimal(vorel::util::stringToUnsignedInteger64(line.c_str(), nullptr, false));
}

/// An integer type: its name on the command line, its limits, its description in messages, and its parser.
struct IntegerType {
    std::wstring_view name;
    WholeNumberLimits limits;
    std::wstring_view expected;
    std::wstring (*read)(const std::wstring& line);
};

constexpr IntegerType kTypes[] = {
    {L"int64",
     {9223372036854775808U, 9223372036854775807},
     L"an integer from -9223372036854775808 to 9223372036854775807",
     readSigned},
    {L"uint64", {0, 18446744073709551615U}, L"an integer from 0 to 18446744073709551615", readUnsigned},
    {L"int32", kInt32Limits, kInt32Expected, readSigned},
    {L"uint32", kUint32Limits, kUint32Expected, readUnsigned},
};

class IntegerFilter final : public LineFilter {
public:
    IntegerFilter(const IntegerType& type, bool leadingZeros) : m_type(type), m_leadingZeros(leadingZeros) {}

protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        if (!vorel::util::canCoerceToInteger(line.c_str(), m_leadingZeros)) {
            reject(line, m_leadingZeros ? L"an integer" : L"an integer without leading zeros");
        }
        if (!firstThatDoesNotFit(line, m_type.limits).empty()) {
            reject(line, m_type.expected);
        }
        appendLine(result, m_type.read(line));
    }

private:
    const IntegerType& m_type;
    bool m_leadingZeros;
};

class HexFilter final : public LineFilter {
protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        constexpr std::wstring_view kExpected = L"a number of one to eight hexadecimal digits";
        wchar_t* end = nullptr;
        const int value = vorel::util::hexToInteger(line.c_str(), &end);
        if (*end != L'\0' || trimmed(line).empty()) {
            reject(line, kExpected);
        }
        appendLine(result, unsignedDecimal(static_cast<unsigned int>(value)));
    }
};

constexpr tools::Option kTypeOption = {L"type", L'y', L"type", L"int64 (default), uint64, int32, uint32 or hex"};
constexpr tools::Option kStrictOption = {L"strict", L's', {}, L"reject leading zeros"};

int run(const tools::Arguments& arguments) {
    const std::wstring name = arguments.value(kTypeOption.name).value_or(L"int64");
    if (name == L"hex") {
        if (arguments.has(kStrictOption.name)) {
            throw tools::UsageError(L"--strict cannot be combined with --type hex", L"vorelconv integer");
        }
        HexFilter filter;
        runFilter(arguments, filter);
        return tools::kDone;
    }
    for (const IntegerType& type : kTypes) {
        if (type.name == name) {
            IntegerFilter filter(type, !arguments.has(kStrictOption.name));
            runFilter(arguments, filter);
            return tools::kDone;
        }
    }
    throw tools::UsageError(L"--type must be int64, uint64, int32, uint32 or hex, not \"" + name + L"\"",
                            L"vorelconv integer");
}

constexpr tools::Option kOptions[] = {kTypeOption, kStrictOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv integer",
               .summary = L"convert integers, one per line, to plain decimal form",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"Accepts white space at both ends, a sign, leading zeros and a fraction of zeros. A\n"
                          L"number that does not fit into the type is an error. With --strict, 0042 is an\n"
                          L"error, but 00 and 0042.0 are accepted. Hexadecimal numbers have at most eight\n"
                          L"digits and neither sign nor prefix.\n"
                          L"\n"
                          L"  vorelconv integer --text \" +0042.00\"         42\n"
                          L"  vorelconv integer --type hex --text ff       255"},
    .run = run};

}  // namespace

const Command& integerCommand() {
    return kCommand;
}

}  // namespace conv

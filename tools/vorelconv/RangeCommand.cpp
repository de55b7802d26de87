#include "Command.h"
#include "LineFilter.h"
#include "WholeNumbers.h"
#include "support/Tool.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/values/ListParsing.h"

namespace conv {

namespace {

constexpr int kOpen = -1;

std::wstring end(int value) {
    return value == kOpen ? std::wstring() : std::to_wstring(value);
}

/// Whether a range contains a second '-', which is the sign of a negative number. The library would accept the sign,
/// and the filter would write -1 as an open end.
bool hasNegative(const std::wstring& line) {
    bool hasDash = false;
    for (const wchar_t c : line) {
        if (c == L'-' && hasDash) {
            return true;
        }
        hasDash = c != L',' && (hasDash || c == L'-');
    }
    return false;
}

class RangeFilter final : public LineFilter {
protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        try {
            vorel::util::stringToLongRanges(line.c_str(), m_starts, m_ends);
        } catch (vorel::Exception& e) {
            throw BadInput{0, L"expected ranges of numbers (\"1-5,7,9-\"): " + std::wstring(e.what())};
        }
        if (hasNegative(line)) {
            reject(line, L"a list of ranges without negative numbers");
        }
        checkAllFit(line, {.least = 0, .most = 2147483647, .hasSigns = false}, L"a number from 0 to 2147483647");
        for (unsigned int index = 0; index < m_starts.size(); ++index) {
            appendLine(result, end(m_starts[index]) + L'-' + end(m_ends[index]));
        }
    }

private:
    vorel::Array<int> m_starts;
    vorel::Array<int> m_ends;
};

int run(const tools::Arguments& arguments) {
    RangeFilter filter;
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv range",
               .summary = L"split lists of ranges into one range per line",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"A range has one of these forms: 2-5; 7, which is the same as 7-7; 9-, which has no\n"
                          L"end; -9, which has no start. Numbers are not negative and are at most 2147483647.\n"
                          L"\n"
                          L"  vorelconv range --text \"1-5, 7\"      1-5, then 7-7 on the next line"},
    .run = run};

}  // namespace

const Command& rangeCommand() {
    return kCommand;
}

}  // namespace conv

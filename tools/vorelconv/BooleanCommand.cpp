#include "Command.h"
#include "LineFilter.h"
#include "support/Tool.h"
#include "vorel/values/BooleanParsing.h"

namespace conv {

namespace {

class BooleanFilter final : public LineFilter {
public:
    explicit BooleanFilter(bool strict) : m_strict(strict) {}

protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        const std::wstring word = trimmed(line);
        wchar_t* end = nullptr;
        const bool value = vorel::util::stringToBoolean(word.c_str(), &end);
        if (word.empty() || *end != L'\0' || (m_strict && !vorel::util::canCoerceToBoolean(word.c_str()))) {
            throw BadInput{0, (m_strict ? L"expected true, false, yes, no, t, f, y, n, 1 or 0, found "
                                        : L"expected a boolean or an integer, found ") +
                                  quoted(line)};
        }
        appendLine(result, value ? vorel::util::TAL_True : vorel::util::TAL_False);
    }

private:
    bool m_strict;
};

constexpr tools::Option kStrictOption = {
    L"strict", L's', {}, L"accept only the digits 1 and 0 as integers; reject the words on and off"};

int run(const tools::Arguments& arguments) {
    BooleanFilter filter(arguments.has(kStrictOption.name));
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kStrictOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv boolean",
               .summary = L"convert booleans, one per line, to true or false",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"Accepts true, yes, on, t, y, false, no, off, f and n, ignoring case, and integers.\n"
                          L"Of the integers, only 0 and the multiples of 4294967296 are false.\n"
                          L"\n"
                          L"  vorelconv boolean --text Yes         true"},
    .run = run};

}  // namespace

const Command& booleanCommand() {
    return kCommand;
}

}  // namespace conv

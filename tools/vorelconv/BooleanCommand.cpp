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
            throw BadInput{0, (m_strict ? L"true, false, yes, no, t, f, y, n, 1 or 0 is expected, found "
                                        : L"a truth value or an integer is expected, found ") +
                                  shown(line)};
        }
        appendLine(result, value ? vorel::util::TAL_True : vorel::util::TAL_False);
    }

private:
    bool m_strict;
};

constexpr tools::Option kStrictOption = {L"strict", L's', {}, L"neither on and off nor integers but 1 and 0"};

int run(const tools::Arguments& arguments) {
    BooleanFilter filter(arguments.has(kStrictOption.name));
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kStrictOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv boolean",
               .summary = L"truth values, one in each line, as true and false",
               .options = kOptions,
               .operands = kInputOperand,
               .mostOperands = 1,
               .details =
                   L"Taken are true, yes, on, t, y and false, no, off, f, n in any case, and integers, of which\n"
                   L"only zero is false.\n"
                   L"\n"
                   L"  vorelconv boolean --text Yes         true"},
    .run = run};

}  // namespace

const Command& booleanCommand() {
    return kCommand;
}

}  // namespace conv

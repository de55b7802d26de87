#include <algorithm>
#include <vector>

#include "Command.h"
#include "LineFilter.h"
#include "support/Console.h"
#include "support/Tool.h"
#include "vorel/values/Comparing.h"

namespace conv {

namespace {

using vorel::util::strcmpAdvFlag;

constexpr tools::Option kIgnoreCaseOption = {L"ignore-case", L'i', {}, L"A to Z equal a to z"};
constexpr tools::Option kPlainOption = {L"plain", L'p', {}, L"digits are characters like all others"};
constexpr tools::Option kSlashesOption = {L"slashes", L's', {}, L"'/' and '\\' are equal"};
constexpr tools::Option kReverseOption = {L"reverse", L'r', {}, L"the other way round"};

strcmpAdvFlag flagsOf(const tools::Arguments& arguments) {
    strcmpAdvFlag flags = {};
    const auto add = [&](bool given, strcmpAdvFlag flag) { flags = given ? flags | flag : flags; };
    add(!arguments.has(kPlainOption.name), vorel::util::SCMP_Numeric);
    add(arguments.has(kIgnoreCaseOption.name), vorel::util::SCMP_IgnoreCase);
    add(arguments.has(kReverseOption.name), vorel::util::SCMP_Reverse);
    return flags;
}

// ---- sort -----------------------------------------------------------------------------------------------------------

/// Keeps all lines. Equal ones stay in their order.
class SortFilter final : public LineFilter {
public:
    explicit SortFilter(strcmpAdvFlag flags) : m_flags(flags) {}

protected:
    void convertLine(const std::wstring& line, std::string&) override { m_lines.push_back(line); }

    void finish(std::string& result) override {
        std::stable_sort(m_lines.begin(), m_lines.end(), [this](const std::wstring& a, const std::wstring& b) {
            return vorel::util::strcmpAdvanced(a.c_str(), b.c_str(), m_flags) < 0;
        });
        for (const std::wstring& line : m_lines) {
            appendLine(result, line);
        }
    }

private:
    strcmpAdvFlag m_flags;
    std::vector<std::wstring> m_lines;
};

int runSort(const tools::Arguments& arguments) {
    SortFilter filter(flagsOf(arguments));
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kSortOptions[] = {kIgnoreCaseOption, kPlainOption, kReverseOption, kTextOption, kOutputOption};

constexpr Command kSort = {
    .syntax = {.command = L"vorelconv sort",
               .summary = L"lines in their natural order: digits are compared as numbers",
               .options = kSortOptions,
               .operands = kInputOperand,
               .mostOperands = 1,
               .details =
                   L"All other characters are compared by their codes. Lines that are equal (\"7\" and \"007\") stay\n"
                   L"in their order. All lines have to fit into memory.\n"
                   L"\n"
                   L"  vorelconv sort names.txt             file2 before file10"},
    .run = runSort};

// ---- compare --------------------------------------------------------------------------------------------------------

int runCompare(const tools::Arguments& arguments) {
    const strcmpAdvFlag flags =
        arguments.has(kSlashesOption.name) ? flagsOf(arguments) | vorel::util::SCMP_SlashesEqual : flagsOf(arguments);
    const auto& texts = arguments.operands();
    const int order = vorel::util::strcmpAdvanced(texts[0].c_str(), texts[1].c_str(), flags);
    tools::writeOutput(order < 0 ? "less\n" : order > 0 ? "greater\n" : "equal\n");
    return order == 0 ? tools::kDone : tools::kFailed;
}

constexpr tools::Option kCompareOptions[] = {kIgnoreCaseOption, kPlainOption, kSlashesOption, kReverseOption};

constexpr Command kCompare = {
    .syntax = {.command = L"vorelconv compare",
               .summary = L"whether a text is less than, equal to or greater than another one",
               .options = kCompareOptions,
               .operands = L"<text> <text>",
               .leastOperands = 2,
               .mostOperands = 2,
               .details =
                   L"Digits are compared as numbers. Writes \"less\", \"equal\" or \"greater\". Exit code 0: they are\n"
                   L"equal; 1: they are not.\n"
                   L"\n"
                   L"  vorelconv compare file9 file10       less"},
    .run = runCompare};

// ---- version --------------------------------------------------------------------------------------------------------

int runVersion(const tools::Arguments& arguments) {
    const auto& texts = arguments.operands();
    const bool atLeast = vorel::util::stringVersionAtLeast(texts[0].c_str(), texts[1].c_str());
    tools::writeOutput(atLeast ? "true\n" : "false\n");
    return atLeast ? tools::kDone : tools::kFailed;
}

constexpr Command kVersion = {
    .syntax = {.command = L"vorelconv version",
               .summary = L"whether a version is at least another one",
               .options = {},
               .operands = L"<version> <required>",
               .leastOperands = 2,
               .mostOperands = 2,
               .details = L"Number by number; any one character separates two of them. A version with fewer numbers\n"
                          L"than required fails, also when the missing ones are zero. An empty text on either side is\n"
                          L"false. Writes \"true\" (exit code 0) or \"false\" (1).\n"
                          L"\n"
                          L"  vorelconv version 10.2 9.9           true\n"
                          L"  vorelconv version 1.2 1.2.0          false"},
    .run = runVersion};

}  // namespace

const Command& sortCommand() {
    return kSort;
}

const Command& compareCommand() {
    return kCompare;
}

const Command& versionCommand() {
    return kVersion;
}

}  // namespace conv

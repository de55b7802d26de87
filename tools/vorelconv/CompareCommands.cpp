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

constexpr tools::Option kIgnoreCaseOption = {L"ignore-case", L'i', {}, L"treat A to Z as equal to a to z"};
constexpr tools::Option kPlainOption = {L"plain", L'p', {}, L"compare digits as characters, not as numbers"};
constexpr tools::Option kSlashesOption = {L"slashes", L's', {}, L"treat '/' and '\\' as equal"};
constexpr tools::Option kReverseOption = {L"reverse", L'r', {}, L"reverse the order"};

strcmpAdvFlag flagsOf(const tools::Arguments& arguments) {
    strcmpAdvFlag flags = {};
    const auto add = [&](bool given, strcmpAdvFlag flag) { flags = given ? flags | flag : flags; };
    add(!arguments.has(kPlainOption.name), vorel::util::SCMP_Numeric);
    add(arguments.has(kIgnoreCaseOption.name), vorel::util::SCMP_IgnoreCase);
    add(arguments.has(kReverseOption.name), vorel::util::SCMP_Reverse);
    return flags;
}

// ---- sort -----------------------------------------------------------------------------------------------------------

/// Collects all lines and sorts them at the end. Equal lines keep their order.
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
               .summary = L"sort lines in natural order: digits are compared as numbers",
               .options = kSortOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"All other characters are compared by their UTF-16 units. Equal lines (\"7\" and\n"
                          L"\"007\") keep their order. All lines must fit into memory.\n"
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
               .summary = L"compare two texts in natural order",
               .options = kCompareOptions,
               .operands = L"<text> <text>",
               .minOperands = 2,
               .maxOperands = 2,
               .details = L"Digits are compared as numbers. Writes \"less\", \"equal\" or \"greater\" for the first\n"
                          L"text. Exit codes: 0 equal; 1 not equal.\n"
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
               .summary = L"check that a version is at least the required one",
               .options = {},
               .operands = L"<version> <required>",
               .minOperands = 2,
               .maxOperands = 2,
               .details = L"Compares number by number; any single character separates two numbers. If all\n"
                          L"numbers at the same positions are equal, the result is false if the required version\n"
                          L"has more numbers, even zeros, or ends with a separator. If either text is empty, the\n"
                          L"result is false. Writes \"true\" (exit code 0) or \"false\" (exit code 1).\n"
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

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <cstdint>

#include <windows.h>

#include "Command.h"
#include "Filter.h"
#include "Utf8.h"
#include "support/Console.h"
#include "support/Text.h"
#include "support/Tool.h"
#include "vorel/text/CodePages.h"
#include "vorel/values/NumberParsing.h"

namespace conv {

namespace {

constexpr std::wstring_view kName = L"vorelconv codepage";
constexpr int kUtf16 = 1200;
constexpr int kUtf16BigEndian = 1201;
constexpr int kUtf7 = 65000;
constexpr int kUtf8 = 65001;
constexpr std::size_t kNotConverted = static_cast<std::size_t>(-1);

bool isReadable(int codePage) {
    return vorel::util::iconv_to_wc(vorel::util::iconv_open_codepage(0, codePage), "a", 1, nullptr, 0) != kNotConverted;
}

bool isWritable(int codePage) {
    return vorel::util::iconv_from_wc(vorel::util::iconv_open_codepage(codePage, 0), L"a", 1, nullptr, 0, nullptr) !=
           kNotConverted;
}

/// A code page by its name or its number.
int codePageOf(const std::wstring& name) {
    constexpr std::size_t kMostDigits = 5;
    const std::string narrow = tools::toUtf8(name);
    const char* end = nullptr;
    const int number = vorel::util::stringToInteger(narrow.c_str(), &end, false);
    if (narrow.size() <= kMostDigits && *end == '\0' && number > 0 && number < 0xFFFF) {
        return number;
    }
    const int named = vorel::util::iconv_open(narrow.c_str(), nullptr);
    if (named == -1) {
        throw tools::WrongUse(L"\"" + name + L"\" is no name of a code page", kName);
    }
    return named;
}

/// The code page of an option; without it UTF-8.
int codePageOf(const tools::Arguments& arguments, const tools::Option& option, bool (*isUsable)(int)) {
    const std::wstring name = arguments.value(option.name).value_or(L"UTF-8");
    const int codePage = codePageOf(name);
    if (codePage == kUtf16 || codePage == kUtf16BigEndian) {
        throw tools::Failure(
            L"UTF-16 is no code page of the system: \"vorelconv utf16\" converts UTF-8 to it, and back");
    }
    if (!isUsable(codePage)) {
        throw tools::Failure(L"code page " + std::to_wstring(codePage) + L" (\"" + name +
                             L"\") is not on this system, or cannot be converted with a check for errors");
    }
    return codePage;
}

/// Bytes of one code page to wide text.
class Reader {
public:
    explicit Reader(int codePage) : m_codePage(codePage), m_converter(vorel::util::iconv_open_codepage(0, codePage)) {
        CPINFO info = {};
        m_isSingleByte = GetCPInfo(static_cast<UINT>(codePage), &info) && info.MaxCharSize == 1;
    }

    [[nodiscard]] int codePage() const { return m_codePage; }

    /// How much of a block can be read without what follows it. Where characters have several bytes, that is told only
    /// by the end of a line: a line feed is never a part of one, and no shift goes beyond it.
    [[nodiscard]] std::size_t whole(std::string_view block, bool last) const {
        if (m_codePage == kUtf8) {
            return wholeUtf8(block, last).size();
        }
        if (last || m_isSingleByte) {
            return block.size();
        }
        return block.rfind('\n') + 1;
    }

    /// The number of units, or -1 with `errno`; nothing is written.
    [[nodiscard]] std::size_t measure(std::string_view text) const {
        return text.empty() ? 0 : vorel::util::iconv_to_wc(m_converter, text.data(), text.size(), nullptr, 0);
    }

    bool read(std::string_view text, std::wstring& units) const {
        const std::size_t count = measure(text);
        if (count == kNotConverted) {
            return false;
        }
        units.resize(count);
        return count == 0 ||
               vorel::util::iconv_to_wc(m_converter, text.data(), text.size(), units.data(), count) == count;
    }

    /// The longest beginning of `text` that can be read and has no more than `mostUnits` units. A beginning that ends
    /// within a character cannot be read, though a longer one can: so some neighbours are tried, too.
    [[nodiscard]] std::size_t readableBeginning(std::string_view text, std::size_t mostUnits) const {
        constexpr std::size_t kNeighbours = 8;
        std::size_t good = 0;
        for (std::size_t step = text.size(); step != 0;) {
            const std::size_t before = good;
            for (std::size_t more = 0; more < kNeighbours && good == before && good + step + more <= text.size();
                 ++more) {
                const std::size_t units = measure(text.substr(0, good + step + more));
                if (units != kNotConverted && units <= mostUnits) {
                    good += step + more;
                }
            }
            step = good == before ? step / 2 : step;
        }
        return good;
    }

private:
    int m_codePage;
    int m_converter;
    bool m_isSingleByte;
};

/// Wide text to bytes of one code page.
class Writer {
public:
    explicit Writer(int codePage) : m_converter(vorel::util::iconv_open_codepage(codePage, 0)) {}

    bool write(const std::wstring& units, std::string& bytes) const {
        if (units.empty()) {
            bytes.clear();
            return true;
        }
        const std::size_t count =
            vorel::util::iconv_from_wc(m_converter, units.data(), units.size(), nullptr, 0, nullptr);
        if (count == kNotConverted) {
            return false;
        }
        bytes.resize(count);
        return vorel::util::iconv_from_wc(m_converter, units.data(), units.size(), bytes.data(), count, nullptr) ==
               count;
    }

private:
    int m_converter;
};

class CodePageFilter final : public Filter {
public:
    CodePageFilter(int from, int to, bool replace) : m_source(from), m_target(to), m_check(to), m_replace(replace) {}

    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        const std::string_view text = block.substr(0, m_source.whole(block, last));
        if (!m_source.read(text, m_units)) {
            throwUnreadable(text);
        }
        if (!m_target.write(m_units, m_bytes)) {
            throw BadInput{0, L"the system cannot write this in code page " + std::to_wstring(m_check.codePage())};
        }
        if (!m_replace) {
            checkNothingIsLost(text);
        }
        result += m_bytes;
        return text.size();
    }

private:
    [[noreturn]] void throwUnreadable(std::string_view text) const {
        const int error = errno;
        const std::size_t good = m_source.readableBeginning(text, text.size());
        const std::wstring codePage = std::to_wstring(m_source.codePage());
        if (error != EILSEQ || good == text.size()) {
            throw BadInput{0, L"the system cannot read this as code page " + codePage};
        }
        throw BadInput{good, L"text of code page " + codePage + L" is expected, found " + shown(text[good])};
    }

    /// The system puts another character where the code page does not have one, and often one that only looks similar.
    /// What was written is read again: so nothing changes without a word.
    void checkNothingIsLost(std::string_view text) {
        std::wstring again;
        if (!m_check.read(m_bytes, again)) {
            throw BadInput{0, L"the system cannot read code page " + std::to_wstring(m_check.codePage()) +
                                  L" again to see whether something is lost (--replace does without)"};
        }
        if (again == m_units) {
            return;
        }
        const auto place = std::mismatch(m_units.begin(), m_units.end(), again.begin(), again.end()).first;
        const auto index = static_cast<std::size_t>(place - m_units.begin());
        const std::size_t good = m_source.readableBeginning(text, index);
        if (place == m_units.end()) {
            throw BadInput{good,
                           L"code page " + std::to_wstring(m_check.codePage()) + L" does not keep this text as it is"};
        }
        throw BadInput{good, tools::formatted(L"code page %d has no character for U+%04X (--replace takes another one)",
                                              m_check.codePage(), codePointAt(index))};
    }

    [[nodiscard]] unsigned int codePointAt(std::size_t index) const {
        const unsigned int high = m_units[index];
        const unsigned int low = index + 1 < m_units.size() ? m_units[index + 1] : 0U;
        const bool isPair = high >= 0xD800 && high <= 0xDBFF && low >= 0xDC00 && low <= 0xDFFF;
        return isPair ? 0x10000U + ((high - 0xD800U) << 10) + (low - 0xDC00U) : high;
    }

    Reader m_source;
    Writer m_target;
    Reader m_check;  // reads what m_target has written
    bool m_replace;
    std::wstring m_units;
    std::string m_bytes;
};

using CodePages = std::bitset<0x10000>;

CodePages& installedCodePages() {
    static CodePages codePages;
    return codePages;
}

/// The system calls back with each number as a text, and with nothing of the caller's.
BOOL CALLBACK addCodePage(wchar_t* number) {
    installedCodePages()[static_cast<std::uint16_t>(vorel::util::stringToInt(number, nullptr))] = true;
    return TRUE;
}

/// The number of each code page that can be read, in a line of its own.
std::wstring codePageList() {
    EnumSystemCodePagesW(addCodePage, CP_INSTALLED);
    CodePages& candidates = installedCodePages();
    candidates[kUtf7] = true;  // a system that has these without a file may leave them out
    candidates[kUtf8] = true;
    std::wstring lines;
    for (std::size_t codePage = 1; codePage < candidates.size(); ++codePage) {
        if (candidates[codePage] && isReadable(static_cast<int>(codePage))) {
            lines += std::to_wstring(codePage) + L"\n";
        }
    }
    return lines;
}

constexpr tools::Option kFromOption = {L"from", L'f', L"codepage", L"what the input is in; without it UTF-8"};
constexpr tools::Option kToOption = {L"to", 0, L"codepage", L"what the output will be in; without it UTF-8"};
constexpr tools::Option kReplaceOption = {L"replace", L'r', {}, L"let the system replace what the output cannot have"};
constexpr tools::Option kListOption = {L"list", L'l', {}, L"show the numbers of the code pages that can be read"};

int run(const tools::Arguments& arguments) {
    if (arguments.has(kListOption.name)) {
        tools::writeOutput(codePageList());
        return tools::kDone;
    }
    const int from = codePageOf(arguments, kFromOption, isReadable);
    const int to = codePageOf(arguments, kToOption, isWritable);
    CodePageFilter filter(from, to, arguments.has(kReplaceOption.name));
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kFromOption, kToOption, kReplaceOption, kListOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = kName,
               .summary = L"text of one code page in another one",
               .options = kOptions,
               .operands = kInputOperand,
               .mostOperands = 1,
               .details =
                   L"A code page is a name (UTF-8, latin1, windows-1252, shift_jis, koi8-r and hundreds more, in\n"
                   L"any case) or a number (1252). What the output's code page does not have is an error.\n"
                   L"A line has to fit into memory where characters have several bytes, but for UTF-8.\n"
                   L"\n"
                   L"  vorelconv codepage --from windows-1252 old.txt -o new.txt\n"
                   L"  vorelconv codepage --from koi8-r --to 1251 letter.txt"},
    .run = run};

}  // namespace

const Command& codePageCommand() {
    return kCommand;
}

}  // namespace conv

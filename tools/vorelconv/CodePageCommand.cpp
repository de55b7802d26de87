#include <algorithm>
#include <bitset>
#include <cerrno>
#include <cstdint>

#include <windows.h>

#include "Command.h"
#include "Filter.h"
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

/// The code page with this name or number.
/// \throws tools::UsageError for an unknown name.
int codePageOf(const std::wstring& name) {
    constexpr std::size_t kMaxDigits = 5;
    const std::string narrow = tools::toUtf8(name);
    const char* end = nullptr;
    const int number = vorel::util::stringToInteger(narrow.c_str(), &end, false);
    if (narrow.size() <= kMaxDigits && *end == '\0' && number > 0 && number < 0xFFFF) {
        return number;
    }
    const int named = vorel::util::iconv_open(narrow.c_str(), nullptr);
    if (named == -1) {
        throw tools::UsageError(L"unknown code page: \"" + name + L"\"", kName);
    }
    return named;
}

/// The code page given by an option; the default is UTF-8.
/// \throws tools::UsageError for an unknown name; tools::Failure for UTF-16, or if `isUsable` returns false.
int codePageOf(const tools::Arguments& arguments, const tools::Option& option, bool (*isUsable)(int)) {
    const std::wstring name = arguments.value(option.name).value_or(L"UTF-8");
    const int codePage = codePageOf(name);
    if (codePage == kUtf16 || codePage == kUtf16BigEndian) {
        throw tools::Failure(
            L"UTF-16 is not a code page of the system; \"vorelconv utf16\" converts between UTF-8 and UTF-16");
    }
    if (!isUsable(codePage)) {
        throw tools::Failure(L"code page " + std::to_wstring(codePage) + L" (\"" + name +
                             L"\") is not available on this system, or the system cannot check text in it");
    }
    return codePage;
}

/// Converts bytes of one code page to wide text.
class Reader {
public:
    explicit Reader(int codePage) : m_codePage(codePage), m_converter(vorel::util::iconv_open_codepage(0, codePage)) {
        CPINFO info = {};
        m_isSingleByte = GetCPInfo(static_cast<UINT>(codePage), &info) && info.MaxCharSize == 1;
    }

    [[nodiscard]] int codePage() const { return m_codePage; }

    /// The number of bytes of a block that can be read without the next block. If `last` is true, no block follows, and
    /// all bytes are read. Otherwise, a truncated sequence at the end of UTF-8 is left for the next block. In other
    /// multi-byte code pages, the bytes after the last line feed are left, because a line feed is never part of a
    /// character and resets the shift state.
    /// \throws BadInput for invalid UTF-8.
    [[nodiscard]] std::size_t whole(std::string_view block, bool last) const {
        if (m_codePage == kUtf8) {
            return wholeUtf8(block, last).size();
        }
        if (last || m_isSingleByte) {
            return block.size();
        }
        return block.rfind('\n') + 1;
    }

    /// The number of units that `read` would write, or kNotConverted. `errno` is as after `iconv_to_wc`.
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

    /// The length of the longest prefix of `text` that can be read and is converted to at most `maxUnits` units. A
    /// prefix that ends within a character cannot be read, even if a longer prefix can. So several adjacent lengths are
    /// tried.
    [[nodiscard]] std::size_t readableBeginning(std::string_view text, std::size_t maxUnits) const {
        constexpr std::size_t kNeighbours = 8;
        std::size_t good = 0;
        for (std::size_t step = text.size(); step != 0;) {
            const std::size_t before = good;
            for (std::size_t more = 0; more < kNeighbours && good == before && good + step + more <= text.size();
                 ++more) {
                const std::size_t units = measure(text.substr(0, good + step + more));
                if (units != kNotConverted && units <= maxUnits) {
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

/// Converts wide text to bytes of one code page.
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
        errno = 0;  // after some errors of the system, iconv_to_wc does not set it
        if (!m_source.read(text, m_units)) {
            throwUnreadable(text);
        }
        if (!m_target.write(m_units, m_bytes)) {
            throw BadInput{0,
                           L"the system cannot convert this text to code page " + std::to_wstring(m_check.codePage())};
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
            throw BadInput{0, L"the system cannot convert this text from code page " + codePage};
        }
        throw BadInput{good, L"expected text in code page " + codePage + L", found " + quoted(text[good])};
    }

    /// The system replaces characters that the code page lacks, often by similar characters. So the output is converted
    /// back to wide text, which is compared with the input.
    void checkNothingIsLost(std::string_view text) {
        std::wstring again;
        if (!m_check.read(m_bytes, again)) {
            throw BadInput{0, L"cannot check for lost characters, because the system cannot convert code page " +
                                  std::to_wstring(m_check.codePage()) + L" to Unicode (--replace skips this check)"};
        }
        if (again == m_units) {
            return;
        }
        const auto position = std::mismatch(m_units.begin(), m_units.end(), again.begin(), again.end()).first;
        const auto index = static_cast<std::size_t>(position - m_units.begin());
        const std::size_t good = m_source.readableBeginning(text, index);
        if (position == m_units.end()) {
            throw BadInput{good, L"converting to code page " + std::to_wstring(m_check.codePage()) +
                                     L" would change this text"};
        }
        throw BadInput{good, tools::formatted(L"code page %d has no character for U+%04X (--replace substitutes one)",
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
    Reader m_check;  // converts the output of m_target back to wide text
    bool m_replace;
    std::wstring m_units;
    std::string m_bytes;
};

using CodePages = std::bitset<0x10000>;

CodePages& installedCodePages() {
    static CodePages codePages;
    return codePages;
}

/// The system calls this function for each code page, with the number of the code page as text. The system does not
/// pass a pointer of the caller to the function, so the result is stored in a static object.
BOOL CALLBACK addCodePage(wchar_t* number) {
    installedCodePages()[static_cast<std::uint16_t>(vorel::util::stringToInt(number, nullptr))] = true;
    return TRUE;
}

/// The numbers of the code pages that can be read, one per line.
std::wstring codePageList() {
    EnumSystemCodePagesW(addCodePage, CP_INSTALLED);
    CodePages& candidates = installedCodePages();
    candidates[kUtf7] = true;  // UTF-7 and UTF-8 may be missing from the system's list, because they need no file
    candidates[kUtf8] = true;
    std::wstring lines;
    for (std::size_t codePage = 1; codePage < candidates.size(); ++codePage) {
        if (candidates[codePage] && isReadable(static_cast<int>(codePage))) {
            lines += std::to_wstring(codePage) + L"\n";
        }
    }
    return lines;
}

constexpr tools::Option kFromOption = {L"from", L'f', L"codepage", L"code page of the input (default: UTF-8)"};
constexpr tools::Option kToOption = {L"to", 0, L"codepage", L"code page of the output (default: UTF-8)"};
constexpr tools::Option kReplaceOption = {
    L"replace", L'r', {}, L"let the system replace characters that the output lacks"};
constexpr tools::Option kListOption = {L"list", L'l', {}, L"list the numbers of the code pages that can be read"};

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
               .summary = L"convert text from one code page to another",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"A code page is a name (UTF-8, latin1, windows-1252, shift_jis, koi8-r and hundreds\n"
                          L"more; case is ignored) or a number (1252). Without --replace, a character that the\n"
                          L"output code page lacks is an error. If the input is in a multi-byte code page\n"
                          L"other than UTF-8, a line may have at most 1 GiB.\n"
                          L"\n"
                          L"  vorelconv codepage --from windows-1252 old.txt -o new.txt\n"
                          L"  vorelconv codepage --from koi8-r --to 1251 letter.txt"},
    .run = run};

}  // namespace

const Command& codePageCommand() {
    return kCommand;
}

}  // namespace conv

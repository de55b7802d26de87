#include "Command.h"
#include "LineFilter.h"
#include "WholeNumbers.h"
#include "support/Tool.h"
#include "vorel/values/BooleanParsing.h"
#include "vorel/values/Joining.h"
#include "vorel/values/ListParsing.h"
#include "vorel/values/NumberFormatting.h"
#include "vorel/values/Splitting.h"

namespace conv {

namespace {

using WideString = vorel::BaseString<wchar_t>;

/// Appends the items of one line to `items` as text. Returns false if only a part of the line could be read.
using ListReader = bool (*)(const wchar_t* line, std::vector<std::wstring>& items);

std::wstring plain(int value) {
    return std::to_wstring(value);
}

std::wstring plain(unsigned int value) {
    return std::to_wstring(value);
}

std::wstring plain(bool value) {
    return value ? vorel::util::TAL_True : vorel::util::TAL_False;
}

std::wstring plain(double value) {
    constexpr std::size_t kMaxCharacters = 64;
    wchar_t text[kMaxCharacters];
    return vorel::util::doubleToString(value, text, kMaxCharacters, vorel::util::FO_Default);
}

/// A reader that calls one of the library's list parsers.
template <class T, bool (*Read)(const wchar_t*, vorel::Array<T>&, bool)>
bool readList(const wchar_t* line, std::vector<std::wstring>& items) {
    vorel::Array<T> values;
    const bool whole = Read(line, values, false);
    for (const T value : values) {
        items.push_back(plain(value));
    }
    return whole;
}

struct ListType {
    std::wstring_view name;
    std::wstring_view expected;
    ListReader read;
    const WholeNumberLimits* limits = nullptr;  ///< null if the type is not an integer type
    std::wstring_view item = {};                ///< the expected item, for messages about items out of range
};

constexpr ListType kTypes[] = {
    {L"integer", L"integers separated by white space or commas", readList<int, vorel::util::stringToIntegerArray>,
     &kInt32Limits, kInt32Expected},
    {L"unsigned", L"integers without '-', separated by white space or commas",
     readList<unsigned int, vorel::util::stringToUIntegerArray>, &kUint32Limits, kUint32Expected},
    {L"double", L"words of fewer than 80 characters", readList<double, vorel::util::stringToDoubleArray>},
    {L"boolean", L"words of fewer than 80 characters", readList<bool, vorel::util::stringToBooleanArray>},
};

class ValueListFilter final : public LineFilter {
public:
    explicit ValueListFilter(const ListType& type) : m_type(type) {}

protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        std::vector<std::wstring> items;
        const bool whole = m_type.read(line.c_str(), items);
        if (!whole) {
            throw BadInput{0, L"expected " + std::wstring(m_type.expected) + L", found " + quoted(line) +
                                  L" (valid items: " + std::to_wstring(items.size()) + L")"};
        }
        if (m_type.limits) {
            checkAllFit(line, *m_type.limits, m_type.item);
        }
        for (const std::wstring& item : items) {
            appendLine(result, item);
        }
    }

private:
    const ListType& m_type;
};

class TextListFilter final : public LineFilter {
public:
    TextListFilter(std::wstring delimiters, bool trim) : m_delimiters(std::move(delimiters)), m_trim(trim) {}

protected:
    void convertLine(const std::wstring& line, std::string& result) override {
        vorel::util::singleStringToMultipleStrings(line.c_str(), m_delimiters.c_str(), m_items, m_trim);
        for (const WideString& item : m_items) {
            appendLine(result, item.view());
        }
    }

private:
    std::wstring m_delimiters;
    bool m_trim;
    vorel::Array<WideString> m_items;
};

class JoinFilter final : public LineFilter {
public:
    JoinFilter(std::wstring delimiter, bool trim) : m_delimiter(std::move(delimiter)), m_trim(trim) {}

protected:
    void convertLine(const std::wstring& line, std::string&) override {
        m_items.append(WideString((m_trim ? trimmed(line) : line).c_str()));
    }

    void finish(std::string& result) override {
        appendLine(result, vorel::util::multipleStringsToSingleString(m_items, m_delimiter.c_str()).view());
    }

private:
    std::wstring m_delimiter;
    bool m_trim;
    vorel::Array<WideString> m_items;
};

constexpr std::wstring_view kName = L"vorelconv list";
constexpr tools::Option kTypeOption = {L"type", L'y', L"type", L"text (default), integer, unsigned, double or boolean"};
constexpr tools::Option kDelimiterOption = {L"delimiter", L'e', L"text",
                                            L"delimiter characters between texts (default: a comma)"};
constexpr tools::Option kTrimOption = {L"trim", L'r', {}, L"remove white space around each text"};
constexpr tools::Option kJoinOption = {L"join", L'j', {}, L"join all lines into one list of texts"};

void runTexts(const tools::Arguments& arguments) {
    const std::wstring delimiter = arguments.value(kDelimiterOption.name).value_or(L",");
    if (delimiter.empty()) {
        throw tools::UsageError(L"--delimiter must have at least one character", kName);
    }
    const bool trim = arguments.has(kTrimOption.name);
    if (arguments.has(kJoinOption.name)) {
        JoinFilter filter(delimiter, trim);
        runFilter(arguments, filter);
    } else {
        TextListFilter filter(delimiter, trim);
        runFilter(arguments, filter);
    }
}

const ListType& typeOf(const std::wstring& name) {
    for (const ListType& type : kTypes) {
        if (type.name == name) {
            return type;
        }
    }
    throw tools::UsageError(L"--type must be text, integer, unsigned, double or boolean, not \"" + name + L"\"", kName);
}

int run(const tools::Arguments& arguments) {
    const std::wstring name = arguments.value(kTypeOption.name).value_or(L"text");
    if (name == L"text") {
        runTexts(arguments);
        return tools::kDone;
    }
    ValueListFilter filter(typeOf(name));
    if (arguments.has(kJoinOption.name) || arguments.has(kDelimiterOption.name) || arguments.has(kTrimOption.name)) {
        throw tools::UsageError(L"--join, --delimiter and --trim require --type text", kName);
    }
    runFilter(arguments, filter);
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kTypeOption, kDelimiterOption, kTrimOption,
                                      kJoinOption, kTextOption,      kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = kName,
               .summary = L"write each item of a list on its own line, or join all lines into one list",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"text      Items are separated by any character of the delimiter. An item in double\n"
                          L"          quotes may contain delimiters, and \"\" for a double quote. --join writes the\n"
                          L"          whole delimiter between the lines. It puts a line in double quotes if the line\n"
                          L"          contains the delimiter or a double quote. If the input is only one line, and\n"
                          L"          this line is already in double quotes, it is not changed.\n"
                          L"integer, unsigned\n"
                          L"          Items are separated by white space, by a comma, or by white space and then a\n"
                          L"          comma. White space after a comma is a 0. Fractions are dropped. An item that\n"
                          L"          is out of the range of the type is an error.\n"
                          L"double, boolean\n"
                          L"          Items are separated by white space. For double, words that are not numbers are\n"
                          L"          ignored. For boolean, all words except true, t, false, f (in either case) and\n"
                          L"          integers are ignored, even yes and no. A word of 80 or more characters is an\n"
                          L"          error.\n"
                          L"\n"
                          L"  vorelconv list --delimiter \";\" --text \"a b;c\"   a b, then c on the next line\n"
                          L"  vorelconv list --type integer --text \"1 ,2 3\"   1, 2 and 3, one per line"},
    .run = run};

}  // namespace

const Command& listCommand() {
    return kCommand;
}

}  // namespace conv

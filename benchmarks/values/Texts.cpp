#include <cstring>
#include <cwchar>

#include "Cases.h"
#include "Inputs.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

namespace util = vorel::util;
using vorel::Array;
using vorel::BaseString;

constexpr std::size_t kFields = 140000;

/// Short fields of letters. About one in a hundred needs quotes.
std::vector<std::wstring> fields() {
    Random random(20261121);
    std::vector<std::wstring> all(kFields);
    for (std::wstring& field : all) {
        const std::size_t length = 1 + random() % 10;
        for (std::size_t unit = 0; unit < length; ++unit) {
            field += static_cast<wchar_t>(L'a' + random() % 26);
        }
        if (random() % 100 == 0) {
            field += L',';
        }
    }
    return all;
}

void join(Family& family, const std::vector<std::wstring>& all) {
    Array<BaseString<wchar_t>> items;
    std::size_t units = 0;
    for (const std::wstring& field : all) {
        items.append(BaseString<wchar_t>(field.c_str()));
        units += field.size() + 4;
    }
    BaseString<wchar_t> result;
    std::wstring plain;
    plain.reserve(units);
    family.compare("join of 140,000 fields, wide", kFields,
                   [&] {
                       util::multipleStringsToSingleString(items, L",", result);
                       return std::uint64_t{result.length()};
                   },
                   {{"append to a reserved wstring", [&] {
                         plain.clear();
                         for (const std::wstring& field : all) {
                             if (!plain.empty()) {
                                 plain += L',';
                             }
                             plain += field;
                         }
                         return std::uint64_t{plain.size()};
                     }}});
}

void split(Family& family, const std::vector<std::wstring>& all) {
    std::wstring text;
    for (const std::wstring& field : all) {
        text += field + L",";
    }
    Array<BaseString<wchar_t>> parts;
    std::vector<std::wstring> plain;
    const auto plainSplit = [&] {
        plain.clear();
        for (std::size_t start = 0; start < text.size();) {
            const std::size_t end = text.find(L',', start);
            plain.emplace_back(text, start, end - start);
            start = end + 1;
        }
        return std::uint64_t{plain.size()};
    };
    family.compare("splitString, wide", kFields,
                   [&] {
                       parts.clear();
                       util::splitString(text.c_str(), L",", parts);
                       return std::uint64_t{parts.size()};
                   },
                   {{"wstring find and emplace_back", plainSplit}});
    family.compare("split with quotes, wide", kFields,
                   [&] {
                       util::singleStringToMultipleStrings(text.c_str(), L",", parts, false);
                       return std::uint64_t{parts.size()};
                   },
                   {{"wstring find and emplace_back", plainSplit}});
}

/// The texts of a pair are equal if case is ignored, so a comparison reads them to the end.
void compareTexts(Family& family, const std::vector<std::wstring>& all) {
    BothWidths lower;
    BothWidths upper;
    for (std::size_t pair = 0; pair + 4 < kFields; pair += 4) {
        std::string text;
        for (std::size_t field = pair; field < pair + 4; ++field) {
            text.append(all[field].begin(), all[field].end());
        }
        lower.add(text);
        for (char& c : text) {
            c = c >= 'x' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        upper.add(text);
    }
    const auto over = [](const auto& a, const auto& b, auto compare) -> Pass {
        return [&a, &b, compare] {
            std::uint64_t sum = 0;
            for (std::size_t index = 0; index < a.size(); ++index) {
                sum += static_cast<std::uint64_t>(compare(a.begin(index), b.begin(index)));
            }
            return sum;
        };
    };
    family.compare("compare, ignoring case, narrow", lower.narrow.size(),
                   over(lower.narrow, upper.narrow,
                        [](const char* a, const char* b) { return util::strcmpAdvanced(a, b, util::SCMP_IgnoreCase); }),
                   {{"_stricmp of the runtime", over(lower.narrow, upper.narrow, _stricmp)}});
    family.compare(
        "compare, ignoring case, wide", lower.wide.size(),
        over(lower.wide, upper.wide,
             [](const wchar_t* a, const wchar_t* b) { return util::strcmpAdvanced(a, b, util::SCMP_IgnoreCase); }),
        {{"_wcsicmp of the runtime", over(lower.wide, upper.wide, _wcsicmp)}});
    family.compare("compare, all flags, wide", lower.wide.size(),
                   over(lower.wide, upper.wide,
                        [](const wchar_t* a, const wchar_t* b) {
                            return util::strcmpAdvanced(
                                a, b, util::SCMP_IgnoreCase | util::SCMP_Numeric | util::SCMP_SlashesEqual);
                        }),
                   {{"_wcsicmp of the runtime", over(lower.wide, upper.wide, _wcsicmp)}});
}

}  // namespace

void splitJoinAndCompare(Family& family) {
    const std::vector<std::wstring> all = fields();
    join(family, all);
    split(family, all);
    compareTexts(family, all);
}

}  // namespace bench

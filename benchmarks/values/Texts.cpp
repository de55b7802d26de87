#include <string>
#include <vector>

#include "Cases.h"
#include "Inputs.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

namespace util = vorel::util;
using vorel::Array;
using vorel::BaseString;

constexpr std::size_t kFields = 140000;

/// Short fields of letters. About one field in a hundred ends in a comma, so the join writes this field in quotes.
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
    family.compare("split that supports quotes, wide", kFields,
                   [&] {
                       util::singleStringToMultipleStrings(text.c_str(), L",", parts, false);
                       return std::uint64_t{parts.size()};
                   },
                   {{"wstring find and emplace_back", plainSplit}});
}

}  // namespace

void splitAndJoin(Family& family) {
    const std::vector<std::wstring> all = fields();
    join(family, all);
    split(family, all);
}

}  // namespace bench

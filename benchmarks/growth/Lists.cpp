#include <memory>
#include <string>
#include <vector>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::Array;
using vorel::BaseString;
namespace util = vorel::util;

/// A list with `count` fields of eight letters.
std::shared_ptr<const std::wstring> listOf(std::size_t count) {
    auto list = std::make_shared<std::wstring>();
    list->reserve(9 * count);
    for (std::size_t field = 0; field != count; ++field) {
        for (std::size_t letter = 0; letter != 8; ++letter) {
            *list += static_cast<wchar_t>(L'a' + field * (letter + 1) % 26);
        }
        *list += L',';
    }
    list->pop_back();
    return list;
}

std::shared_ptr<const Array<BaseString<wchar_t>>> fieldsOf(std::size_t count) {
    auto fields = std::make_shared<Array<BaseString<wchar_t>>>();
    util::splitString(listOf(count)->c_str(), L",", *fields);
    return fields;
}

std::uint64_t splitIntoVector(const std::wstring& list) {
    std::vector<std::wstring> fields;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(L',', start), list.size());
        fields.emplace_back(list, start, end - start);
        start = end + 1;
    }
    return fields.size();
}

std::uint64_t joinIntoString(const Array<BaseString<wchar_t>>& fields) {
    std::wstring list;
    for (const BaseString<wchar_t>& field : fields) {
        if (!list.empty()) {
            list += L',';
        }
        list += field.view();
    }
    return list.size();
}

}  // namespace

void lists(Growth& growth) {
    // A field and its comma use 18 bytes of the list. The field also has a string object, which has a buffer on the
    // heap.
    constexpr std::size_t kBytesPerField = 80;
    const std::vector<std::size_t> numbers = numbersUpTo(kTenMillion);
    growth.measure({"split into fields of 8 units", numbers, kBytesPerField,
                    [](std::size_t count) -> Step {
                        return {[list = listOf(count)] {
                                    Array<BaseString<wchar_t>> fields;
                                    util::splitString(list->c_str(), L",", fields);
                                    return std::uint64_t{fields.size()};
                                },
                                count};
                    },
                    "wstring::find, vector of wstring",
                    [](std::size_t count) -> Step {
                        return {[list = listOf(count)] { return splitIntoVector(*list); }, count};
                    }});
    growth.measure({"join fields of 8 units", numbers, kBytesPerField,
                    [](std::size_t count) -> Step {
                        return {[fields = fieldsOf(count)] {
                                    BaseString<wchar_t> list;
                                    util::multipleStringsToSingleString(*fields, L",", list);
                                    return std::uint64_t{list.length()};
                                },
                                count};
                    },
                    "append to a wstring",
                    [](std::size_t count) -> Step {
                        return {[fields = fieldsOf(count)] { return joinIntoString(*fields); }, count};
                    }});
}

}  // namespace bench

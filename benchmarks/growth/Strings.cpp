#include <windows.h>

#include <cstdio>
#include <memory>
#include <string>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::BaseString;
namespace util = vorel::util;

/// A text of `units` units. Its characters have one, two and three bytes in UTF-8.
std::shared_ptr<const std::wstring> textOf(std::size_t units) {
    constexpr std::wstring_view kPattern = L"plain text, \u00FC\u043C\u0438\u0440 and \u4E2D. ";
    auto text = std::make_shared<std::wstring>(units, L'\0');
    for (std::size_t at = 0; at != units; ++at) {
        (*text)[at] = kPattern[at % kPattern.size()];
    }
    return text;
}

std::shared_ptr<const std::string> utf8Of(std::size_t units) {
    const auto wide = textOf(units);
    const auto count = static_cast<int>(units);
    auto text = std::make_shared<std::string>(3 * units, '\0');
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide->c_str(), count, text->data(),
                                          static_cast<int>(text->size()), nullptr, nullptr);
    text->resize(static_cast<std::size_t>(bytes));
    return text;
}

template <class String>
Step appendUnits(std::size_t units, void (*append)(String&)) {
    return {[units, append] {
                String text;
                for (std::size_t unit = 0; unit != units; ++unit) {
                    append(text);
                }
                return static_cast<std::uint64_t>(text.length());
            },
            units};
}

std::uint64_t convertByTheSystem(const std::string& utf8) {
    const auto bytes = static_cast<int>(utf8.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), bytes, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(units), L'\0');
    return static_cast<std::uint64_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), bytes, text.data(), units));
}

std::uint64_t convertByTheSystem(const std::wstring& wide) {
    const auto units = static_cast<int>(wide.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), units, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(bytes), '\0');
    return static_cast<std::uint64_t>(
        WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), units, text.data(), bytes, nullptr, nullptr));
}

std::uint64_t formatByTheRuntime(const std::wstring& argument) {
    const int units = _scwprintf(L"%ls", argument.c_str());
    std::wstring text(static_cast<std::size_t>(units), L'\0');
    return static_cast<std::uint64_t>(_snwprintf(text.data(), text.size() + 1, L"%ls", argument.c_str()));
}

/// Prepares a step that applies `function` to a wide text of the given number of units.
template <class Function>
Steps ofText(Function function) {
    return [function](std::size_t units) -> Step {
        return {[text = textOf(units), function] { return function(*text); }, units};
    };
}

template <class Function>
Steps ofUtf8(Function function) {
    return [function](std::size_t units) -> Step {
        return {[text = utf8Of(units), function] { return function(*text); }, units};
    };
}

}  // namespace

void strings(Growth& growth) {
    const std::vector<std::size_t> numbers = numbersUpTo(kHundredMillion);
    growth.measure(
        {"append one unit to a string", numbers, 2,
         [](std::size_t units) {
             return appendUnits<BaseString<wchar_t>>(units, [](BaseString<wchar_t>& text) { text += L'x'; });
         },
         "std::wstring",
         [](std::size_t units) { return appendUnits<std::wstring>(units, [](std::wstring& text) { text += L'x'; }); }});
    growth.measure({"format a text of n units", numbers, 4, ofText([](const std::wstring& argument) {
                        BaseString<wchar_t> text;
                        text.format(L"%ls", argument.c_str());
                        return std::uint64_t{text.length()};
                    }),
                    "_scwprintf, then _snwprintf", ofText(formatByTheRuntime)});
    growth.measure({"UTF-8 to UTF-16", numbers, 3, ofUtf8([](const std::string& utf8) {
                        BaseString<wchar_t> text;
                        util::ConvertUTF8toString(text, utf8.c_str(), static_cast<int>(utf8.size()), true);
                        return std::uint64_t{text.length()};
                    }),
                    "MultiByteToWideChar, twice",
                    ofUtf8([](const std::string& utf8) { return convertByTheSystem(utf8); })});
    growth.measure({"UTF-16 to UTF-8", numbers, 3, ofText([](const std::wstring& wide) {
                        BaseString<char> text;
                        util::ConvertStringtoUTF8(wide.c_str(), text, static_cast<int>(wide.size()));
                        return std::uint64_t{text.length()};
                    }),
                    "WideCharToMultiByte, twice",
                    ofText([](const std::wstring& wide) { return convertByTheSystem(wide); })});
}

}  // namespace bench

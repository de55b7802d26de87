#include "verify/Results.h"

#include <algorithm>

#include <windows.h>

namespace verify {

namespace {

/// The value of an attribute of the tag that begins at the start of `tag`; empty if the tag lacks the attribute.
/// GoogleTest has escaped the value.
std::string_view attribute(std::string_view tag, std::string_view name) {
    const std::string key = " " + std::string(name) + "=\"";
    const std::size_t at = tag.find(key);
    if (at == std::string_view::npos || at > tag.find('>')) {
        return {};
    }
    const std::string_view rest = tag.substr(at + key.size());
    return rest.substr(0, rest.find('"'));
}

/// The values of the attribute `message` of all tags `name` in `text`, one per line.
std::string messages(std::string_view text, std::string_view name) {
    const std::string key = "<" + std::string(name) + " ";
    std::string all;
    for (std::size_t at = text.find(key); at != std::string_view::npos; at = text.find(key, at + 1)) {
        all += all.empty() ? "" : "&#x0A;";
        all += attribute(text.substr(at), "message");
    }
    return all;
}

/// The reason why a case was skipped, without the first line, which contains the file and the line number of the test.
std::string withoutPlace(const std::string& message) {
    constexpr std::string_view kLineEnd = "&#x0A;";
    const std::size_t end = message.find(kLineEnd);
    return end == std::string::npos ? message : message.substr(end + kLineEnd.size());
}

std::wstring decoded(std::string_view bytes) {
    std::wstring wide(bytes.size(), L'\0');
    const int units = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(),
                                          static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(units));
    return wide;
}

std::string encoded(const std::wstring& wide) {
    std::string bytes(3 * wide.size(), '\0');
    const int count = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), bytes.data(),
                                          static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

bool isAllowedInXml(wchar_t unit) {
    return (unit >= L' ' || unit == L'\n' || unit == L'\t') && unit != 0xFFFE && unit != 0xFFFF;
}

}  // namespace

bool TestResult::hasFailure() const {
    return std::any_of(cases.begin(), cases.end(),
                       [](const CaseResult& result) { return result.outcome == Outcome::Failed; });
}

void Totals::add(const TestResult& result) {
    for (const CaseResult& c : result.cases) {
        ++(c.outcome == Outcome::Passed ? passed : c.outcome == Outcome::Failed ? failed : skipped);
    }
}

std::vector<CaseResult> readCases(std::string_view xml) {
    constexpr std::string_view kTag = "<testcase ";
    std::vector<CaseResult> cases;
    for (std::size_t begin = xml.find(kTag); begin != std::string_view::npos;) {
        const std::size_t next = xml.find(kTag, begin + 1);
        const std::string_view text = xml.substr(begin, next - begin);
        begin = next;
        if (attribute(text, "status") != "run") {
            continue;
        }
        CaseResult result{.name =
                              std::string(attribute(text, "classname")) + "." + std::string(attribute(text, "name")),
                          .outcome = Outcome::Passed,
                          .message = messages(text, "failure")};
        if (!result.message.empty()) {
            result.outcome = Outcome::Failed;
        } else if (attribute(text, "result") == "skipped") {
            result.outcome = Outcome::Skipped;
            result.message = withoutPlace(messages(text, "skipped"));
        }
        cases.push_back(std::move(result));
    }
    return cases;
}

std::string escaped(std::string_view bytes) {
    std::wstring wide = decoded(bytes);
    std::erase(wide, L'\r');
    std::replace_if(
        wide.begin(), wide.end(), [](wchar_t unit) { return !isAllowedInXml(unit); }, L'?');
    std::string text;
    for (const char c : encoded(wide)) {
        switch (c) {
        case '&': text += "&amp;"; break;
        case '<': text += "&lt;"; break;
        case '>': text += "&gt;"; break;
        case '"': text += "&quot;"; break;
        default: text += c;
        }
    }
    return text;
}

}  // namespace verify

#include "vorellog/TrailStep.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "vorel/exceptions/RecordFormats.h"

namespace vorellog {

namespace {

constexpr std::string_view kErrorPrefix = "Vorel Error";
constexpr std::string_view kSystemTextPrefix = "AddHRESULTErrorToStack";

struct Ending {
    std::string text;
    TrailStep step;
};

/// The part of a record format after the function name: ": Vorel exception caught".
std::string endingOf(const wchar_t* format) {
    const std::wstring_view whole = format;
    const std::wstring_view ending = whole.substr(whole.rfind(L':'));
    std::string narrow;  // the formats are ASCII
    std::transform(ending.begin(), ending.end(), std::back_inserter(narrow),
                   [](wchar_t unit) { return static_cast<char>(unit); });
    return narrow;
}

/// The endings of the record formats, and their steps. Each format that is not listed ends like one of these formats.
const std::vector<Ending>& endings() {
    static const std::vector<Ending> table = {
        {endingOf(vorel::vexCatchAndThrowVorel), TrailStep::Rethrown},
        {endingOf(vorel::vexCatchVorel), TrailStep::Caught},
        {endingOf(vorel::vexCatchSevere), TrailStep::SevereCaught},
        {endingOf(vorel::vexCatchAndThrowSevere), TrailStep::SevereThrown},
        {endingOf(vorel::vexDestructorCaught), TrailStep::Suppressed},
        {endingOf(vorel::vexDestructorSevereCaught), TrailStep::Suppressed},
        {endingOf(vorel::vexTestFailed), TrailStep::TestFailed},
    };
    return table;
}

constexpr bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

}  // namespace

TrailStep stepOf(const Record& record) noexcept {
    if (!record.header()) {
        return TrailStep::None;
    }
    const LogBody body = record.parsedBody();
    if (body.prefix == kSystemTextPrefix) {
        return TrailStep::SystemText;
    }
    if (body.prefix != kErrorPrefix) {
        return TrailStep::None;
    }
    for (const Ending& ending : endings()) {
        if (body.message.ends_with(ending.text)) {
            return ending.step;
        }
    }
    return TrailStep::Message;
}

bool haveSameForm(std::string_view a, std::string_view b) noexcept {
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            a.remove_prefix(std::min(a.find_first_not_of("0123456789"), a.size()));
            b.remove_prefix(std::min(b.find_first_not_of("0123456789"), b.size()));
        } else if (a.front() == b.front()) {
            a.remove_prefix(1);
            b.remove_prefix(1);
        } else {
            return false;
        }
    }
    return a.empty() && b.empty();
}

}  // namespace vorellog

#include "vorellog/TrailStep.h"

#include <algorithm>

namespace vorellog {

namespace {

constexpr std::string_view kErrorPrefix = "Vorel Error";
constexpr std::string_view kSystemTextPrefix = "AddHRESULTErrorToStack";

struct Ending {
    std::string_view text;
    TrailStep step;
};

/// Each record format in vorel/exceptions/RecordFormats.h ends in one of these texts, after the function name.
constexpr Ending kEndings[] = {
    {": Vorel exception rethrown", TrailStep::Rethrown},     {": Vorel exception caught", TrailStep::Caught},
    {": Severe error caught", TrailStep::SevereCaught},      {": Severe error thrown", TrailStep::SevereThrown},
    {": Vorel exception suppressed", TrailStep::Suppressed}, {": Severe error suppressed", TrailStep::Suppressed},
    {": TestAndThrow test failed", TrailStep::TestFailed},
};

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
    for (const Ending& ending : kEndings) {
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

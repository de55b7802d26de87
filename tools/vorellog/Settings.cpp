#include "vorellog/Settings.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "support/Text.h"
#include "support/Tool.h"

namespace vorellog {

namespace {

/// Where the library writes while nobody has told it where.
constexpr std::wstring_view kDefaultLog = L"C:\\TalvenorError.txt";

constexpr tools::Option kOptions[] = {
    {L"follow", L'f', {}, L"go on with what is written from now on, until Ctrl+C"},
    {L"process", L'p', L"id", L"records of this process"},
    {L"thread", L't', L"id", L"records of this thread"},
    {L"prefix", L'P', L"prefix", L"records with this prefix: error, WARN, DEBUG, or a program's own"},
    {L"from", {}, L"time", L"records from this time on"},
    {L"to", {}, L"time", L"records up to this time, with all of its second, minute or day"},
    {L"text", L'e', L"text", L"records that hold this text"},
    {L"ignore-case", L'i', {}, L"take a to z for A to Z in --text"},
    {L"damaged", L'd', {}, L"damaged records only"},
    {L"max-count", L'm', L"count", L"stop after so many entries, 1 at least"},
    {L"fold", L'F', {}, L"show the records of one exception as one entry"},
    {L"summary", L's', {}, L"count by process and prefix, and over time, instead of showing records"},
    {L"json", L'j', {}, L"write JSON objects, one in a line"},
    {L"color", {}, L"when", L"auto (default: on a console, unless NO_COLOR is set), always or never"},
    {L"version", {}, {}, L"show the version"},
};

constexpr std::wstring_view kDetails =
    L"Shows the backup (the log's name and .001) and then the log; without a name,\n"
    L"those of C:\\TalvenorError.txt. Programs may go on writing.\n"
    L"\n"
    L"An option that is given more than once takes any of its values; different\n"
    L"options have to hold together.\n"
    L"\n"
    L"A time is 2026-11-16, \"2026-11-16 01:43\", 2026-11-16T01:43:08.045, 01:43 (today),\n"
    L"\"Mon Nov 16 01:43:08 2026\", or how long ago: 90s, 15m, 2h, 3d.\n"
    L"\n"
    L"A line without a header goes on with the message above it, and is shown after\n"
    L"\"|\". Damaged records are marked: (cut) when the writer was ended within the\n"
    L"line, (mid-line) when the header is not at the start of a line, so that a\n"
    L"message may have forged it, (no header) when nothing says whose line it is,\n"
    L"(bad UTF-8).\n"
    L"\n"
    L"Exit codes: 0 something was found, 1 nothing was, 2 wrong use, 3 the log cannot\n"
    L"be read.";

constexpr tools::Syntax kSyntax = {.command = L"vorellog",
                                   .summary = L"view the error log of vorelCore",
                                   .options = kOptions,
                                   .operands = L"[log]",
                                   .mostOperands = 1,
                                   .details = kDetails};

[[noreturn]] void refuse(std::wstring_view option, const std::wstring& value, std::wstring_view expected) {
    throw tools::WrongUse(L"--" + std::wstring(option) + L" \"" + value + L"\": expected " + std::wstring(expected));
}

unsigned long long numberOf(std::wstring_view option, const std::wstring& value, unsigned long long most) {
    const std::string text = tools::toUtf8(value);
    unsigned long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number > most) {
        refuse(option, value, L"a number");
    }
    return number;
}

std::vector<unsigned long> idsOf(const tools::Arguments& arguments, std::wstring_view option) {
    std::vector<unsigned long> ids;
    for (const std::wstring& value : arguments.values(option)) {
        ids.push_back(static_cast<unsigned long>(numberOf(option, value, std::numeric_limits<unsigned long>::max())));
    }
    return ids;
}

std::vector<std::string> textsOf(const tools::Arguments& arguments, std::wstring_view option) {
    std::vector<std::string> texts;
    for (const std::wstring& value : arguments.values(option)) {
        texts.push_back(tools::toUtf8(value));
    }
    return texts;
}

/// "error" is short for the prefix that the library gives the records of exceptions; a colon at the end is not part of
/// a prefix.
std::vector<std::string> prefixesOf(const tools::Arguments& arguments) {
    std::vector<std::string> prefixes = textsOf(arguments, L"prefix");
    for (std::string& prefix : prefixes) {
        prefix.erase(std::min(prefix.find_last_not_of(": ") + 1, prefix.size()));
        if (prefix == "error") {
            prefix = "Vorel Error";
        }
    }
    return prefixes;
}

std::optional<TimeSpan> timeOf(const tools::Arguments& arguments, std::wstring_view option, LocalMs now) {
    const std::optional<std::wstring> value = arguments.value(option);
    if (!value) {
        return std::nullopt;
    }
    const std::optional<TimeSpan> time = parseTypedTime(tools::toUtf8(*value), now);
    if (!time) {
        refuse(option, *value, L"a time, such as \"2026-11-16 01:43\" or 15m");
    }
    return time;
}

Colours coloursOf(const tools::Arguments& arguments) {
    const std::wstring value = arguments.value(L"color").value_or(L"auto");
    if (value == L"auto") {
        return Colours::WhenSeen;
    }
    if (value != L"always" && value != L"never") {
        refuse(L"color", value, L"auto, always or never");
    }
    return value == L"always" ? Colours::Always : Colours::Never;
}

/// Options that contradict each other.
void checkTogether(const Settings& settings) {
    const auto exclude = [](bool both, std::wstring_view first, std::wstring_view second) {
        if (both) {
            throw tools::WrongUse(L"--" + std::wstring(first) + L" and --" + std::wstring(second) +
                                  L" exclude each other");
        }
    };
    exclude(settings.summary && settings.follow, L"summary", L"follow");
    exclude(settings.summary && settings.fold, L"summary", L"fold");
    exclude(settings.summary && settings.mostEntries.has_value(), L"summary", L"max-count");
}

}  // namespace

const tools::Syntax& syntax() {
    return kSyntax;
}

Settings settingsOf(const tools::Arguments& arguments, LocalMs now) {
    Settings settings;
    settings.path = arguments.operands().empty() ? std::wstring(kDefaultLog) : arguments.operands().front();
    settings.filter.processes = idsOf(arguments, L"process");
    settings.filter.threads = idsOf(arguments, L"thread");
    settings.filter.prefixes = prefixesOf(arguments);
    settings.filter.texts = textsOf(arguments, L"text");
    settings.filter.ignoreCase = arguments.has(L"ignore-case");
    settings.filter.damagedOnly = arguments.has(L"damaged");
    if (const auto from = timeOf(arguments, L"from", now)) {
        settings.filter.from = from->from;
    }
    if (const auto to = timeOf(arguments, L"to", now)) {
        settings.filter.to = to->to;
    }
    settings.follow = arguments.has(L"follow");
    settings.fold = arguments.has(L"fold");
    settings.json = arguments.has(L"json");
    settings.summary = arguments.has(L"summary");
    settings.colours = coloursOf(arguments);
    if (const auto count = arguments.value(L"max-count")) {
        settings.mostEntries = numberOf(L"max-count", *count, std::numeric_limits<unsigned long long>::max());
        if (settings.mostEntries == 0U) {
            refuse(L"max-count", *count, L"a number from 1 on");
        }
    }
    checkTogether(settings);
    return settings;
}

bool showsColours(Colours choice, bool isCapableConsole, bool hasNoColor) noexcept {
    return choice == Colours::Always || (choice == Colours::WhenSeen && isCapableConsole && !hasNoColor);
}

}  // namespace vorellog

#include "vorellog/Settings.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "support/Text.h"
#include "support/Tool.h"

namespace vorellog {

namespace {

/// The default log of the library.
constexpr std::wstring_view kDefaultLog = L"C:\\TalvenorError.txt";

constexpr tools::Option kOptions[] = {
    {L"follow", L'f', {}, L"keep showing new records until Ctrl+C"},
    {L"process", L'p', L"id", L"only records of this process"},
    {L"thread", L't', L"id", L"only records of this thread"},
    {L"prefix", L'P', L"prefix", L"only records with this prefix: error, WARN, DEBUG, or a custom one"},
    {L"from", {}, L"time", L"only records from this time on"},
    {L"to", {}, L"time", L"only records up to the end of this second, minute or day"},
    {L"text", L'e', L"text", L"only records that contain this text"},
    {L"ignore-case", L'i', {}, L"ignore the case of A to Z in --text"},
    {L"damaged", L'd', {}, L"only damaged records"},
    {L"max-count", L'm', L"count", L"stop after this many entries, at least 1"},
    {L"fold", L'F', {}, L"show the records of one exception as one entry"},
    {L"summary", L's', {}, L"show counts by process, prefix and time instead of records"},
    {L"json", L'j', {}, L"write JSON, one object per line"},
    {L"color", {}, L"when", L"always, never, or auto (default): on a console unless NO_COLOR is set"},
    {L"version", {}, {}, L"show the version"},
};

constexpr std::wstring_view kDetails =
    L"Shows the backup (the name of the log with .001 appended), then the log. The\n"
    L"default log is C:\\TalvenorError.txt. Programs can keep writing meanwhile.\n"
    L"\n"
    L"A repeated option accepts any of its values. Different options must all match.\n"
    L"\n"
    L"A time is 2026-11-16, \"2026-11-16 01:43\", 2026-11-16T01:43:08.045, 01:43 (today),\n"
    L"\"Mon Nov 16 01:43:08 2026\", or before now: 90s, 15m, 2h, 3d.\n"
    L"\n"
    L"A line without a header continues the message above it and is shown after \"|\".\n"
    L"Damaged records are marked:\n"
    L"  (cut)        the writer was terminated within the line\n"
    L"  (mid-line)   the header is not at the start of a line: it may be forged\n"
    L"  (no header)  the writer of the line is unknown\n"
    L"  (bad UTF-8)  the record contains invalid UTF-8\n"
    L"\n"
    L"Exit codes: 0 entries found, 1 nothing found, 2 invalid command line, 3 the log\n"
    L"cannot be read.";

constexpr tools::Syntax kSyntax = {.command = L"vorellog",
                                   .summary = L"view the error log of vorelCore",
                                   .options = kOptions,
                                   .operands = L"[log]",
                                   .maxOperands = 1,
                                   .details = kDetails};

[[noreturn]] void rejectValue(std::wstring_view option, const std::wstring& value, std::wstring_view expected) {
    throw tools::UsageError(L"--" + std::wstring(option) + L" \"" + value + L"\": expected " + std::wstring(expected));
}

unsigned long long numberOf(std::wstring_view option, const std::wstring& value, unsigned long long most) {
    const std::string text = tools::toUtf8(value);
    unsigned long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number > most) {
        rejectValue(option, value, L"a number");
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

/// "error" is short for the prefix of exception records. A trailing colon is not part of a prefix.
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
        rejectValue(option, *value, L"a time, such as \"2026-11-16 01:43\" or 15m");
    }
    return time;
}

Colours coloursOf(const tools::Arguments& arguments) {
    const std::wstring value = arguments.value(L"color").value_or(L"auto");
    if (value == L"auto") {
        return Colours::Auto;
    }
    if (value != L"always" && value != L"never") {
        rejectValue(L"color", value, L"auto, always or never");
    }
    return value == L"always" ? Colours::Always : Colours::Never;
}

/// Rejects options that exclude each other.
void checkTogether(const Settings& settings) {
    const auto exclude = [](bool both, std::wstring_view first, std::wstring_view second) {
        if (both) {
            throw tools::UsageError(L"--" + std::wstring(first) + L" and --" + std::wstring(second) +
                                    L" cannot be combined");
        }
    };
    exclude(settings.summary && settings.follow, L"summary", L"follow");
    exclude(settings.summary && settings.fold, L"summary", L"fold");
    exclude(settings.summary && settings.maxEntries.has_value(), L"summary", L"max-count");
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
        settings.maxEntries = numberOf(L"max-count", *count, std::numeric_limits<unsigned long long>::max());
        if (settings.maxEntries == 0U) {
            rejectValue(L"max-count", *count, L"a number, at least 1");
        }
    }
    checkTogether(settings);
    return settings;
}

bool showsColours(Colours choice, bool isCapableConsole, bool hasNoColor) noexcept {
    return choice == Colours::Always || (choice == Colours::Auto && isCapableConsole && !hasNoColor);
}

}  // namespace vorellog

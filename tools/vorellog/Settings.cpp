#include "vorellog/Settings.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <utility>

#include "support/Text.h"
#include "support/Tool.h"
#include "vorellog/TimeZone.h"

namespace vorellog {

namespace {

/// The default log of the library.
constexpr std::wstring_view kDefaultLog = L"C:\\TalvenorError.txt";

constexpr tools::Option kOptions[] = {
    {L"follow", L'f', {}, L"keep showing new records until Ctrl+C"},
    {L"process", L'p', L"id", L"only records of this process: 4312, or with its host: host7.4312"},
    {L"thread", L't', L"id", L"only records of this thread"},
    {L"prefix", L'P', L"prefix", L"only records with this prefix, ignoring case: error, WARN, DEBUG, or a custom one"},
    {L"from", {}, L"time", L"only records from this time on"},
    {L"to", {}, L"time", L"only records up to this time; a day, minute or second is included as a whole"},
    {L"time-zone", {}, L"offset", L"zone of the times in the log: Z or +02:00 (default: that of this computer)"},
    {L"text", L'e', L"text", L"only records that contain this text"},
    {L"regexp", L'E', L"expression", L"only records that contain a match"},
    {L"ignore-case", L'i', {}, L"ignore case in --text (A to Z) and --regexp"},
    {L"invert", L'v', {}, L"only records that match neither --text nor --regexp"},
    {L"damaged", L'd', {}, L"only damaged records"},
    {L"context", L'C', L"count", L"show this many entries before and after each entry found"},
    {L"max-count", L'm', L"count", L"stop after this many entries, at least 1"},
    {L"tail", L'n', L"count", L"show only this many entries at the end of the log"},
    {L"fold", L'F', {}, L"show the records of one exception as one entry"},
    {L"summary", L's', {}, L"show how often, since when and in how many processes each message occurs"},
    {L"top", {}, L"count", L"with --summary: show this many messages and table rows (default: 10; with --json: all)"},
    {L"report", L'r', L"file", L"write a report with charts to this file: one HTML page"},
    {L"json", L'j', {}, L"write JSON, one object per line"},
    {L"color", {}, L"when", L"always, never, or auto (default): on a console unless NO_COLOR is set"},
    {L"completion", {}, L"shell", L"write a completion script for this shell: bash or powershell"},
    {L"manual", {}, {}, L"write the manual page, in the format of man"},
    {L"version", {}, {}, L"show the version"},
};

constexpr std::wstring_view kDetails =
    L"Shows the backup (the name of the log with .001 appended), then the log. The\n"
    L"default log is C:\\TalvenorError.txt; \"-\" is standard input. Programs can keep\n"
    L"writing meanwhile. gzip and UTF-16 are recognised by the first bytes of a file.\n"
    L"\n"
    L"A repeated option accepts any of its values; --text and --regexp are alternatives,\n"
    L"too. Different options must all match.\n"
    L"\n"
    L"A time is 2026-11-16, \"2026-11-16 01:43\", 2026-11-16T01:43:08.045, 01:43 (today),\n"
    L"\"Mon Nov 16 01:43:08 2026\", today, yesterday, or before now: 90s, 15m, 2h, 3d. With\n"
    L"an offset from UTC: 2026-11-16T01:43Z, 2026-11-16T03:43:08+02:00.\n"
    L"\n"
    L"An expression has the syntax of RE2: like Perl's, without backreferences and\n"
    L"lookaround. It is searched in prefix and message; ^ and $ match at each line.\n"
    L"\n"
    L"--summary counts similar messages together: they differ only in numbers and ids\n"
    L"(shown as #), paths (<path>) and quoted texts (\"...\" or '...'). With --fold, it\n"
    L"counts exceptions together whose messages are similar, one by one.\n"
    L"\n"
    L"--report shows messages, their latest trails, their timelines and the processes. It\n"
    L"always folds exceptions. The page can be opened without a network.\n"
    L"\n"
    L"A line without a header continues the message above it and is shown after \"|\".\n"
    L"Damaged records are marked:\n"
    L"  (cut)        the writer was terminated within the line\n"
    L"  (mid-line)   the header is not at the start of a line: it may be forged\n"
    L"  (no header)  the writer of the line is unknown\n"
    L"  (bad UTF-8)  the record contains invalid UTF-8\n"
    L"\n"
    L"Exit codes: 0 entries found, 1 nothing found, 2 invalid command line, 3 a log\n"
    L"cannot be read, or the report cannot be written.";

/// Names that similar programs give to the options.
constexpr tools::Synonym kSynonyms[] = {{L"since", L"from"}, {L"until", L"to"}, {L"grep", L"text"}};

constexpr tools::Syntax kSyntax = {.command = L"vorellog",
                                   .summary = L"view the error log of vorelCore",
                                   .options = kOptions,
                                   .operands = L"[log]...",
                                   .maxOperands = tools::kAnyNumber,
                                   .details = kDetails,
                                   .synonyms = kSynonyms};

[[noreturn]] void rejectValue(std::wstring_view option, const std::wstring& value, std::wstring_view expected) {
    throw tools::UsageError(L"--" + std::wstring(option) + L" \"" + value + L"\": expected " + std::wstring(expected));
}

std::optional<unsigned long long> wholeNumber(std::wstring_view value) {
    const std::string text = tools::toUtf8(value);
    unsigned long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional(number) : std::nullopt;
}

unsigned long long numberOf(std::wstring_view option, const std::wstring& value, unsigned long long most) {
    const std::optional<unsigned long long> number = wholeNumber(value);
    if (!number || *number > most) {
        rejectValue(option, value, L"a number");
    }
    return *number;
}

constexpr unsigned long long kMaxCount = 1000000000;
constexpr unsigned long long kMaxContext = 10000;

/// The value of an option as a number from 1 to `most`; nullopt if the option is not given.
std::optional<unsigned long long> countOf(const tools::Arguments& arguments, std::wstring_view option,
                                          unsigned long long most = kMaxCount) {
    const std::optional<std::wstring> value = arguments.value(option);
    if (!value) {
        return std::nullopt;
    }
    const unsigned long long count = numberOf(option, *value, std::numeric_limits<unsigned long long>::max());
    if (count == 0 || count > most) {
        rejectValue(option, *value, L"a number from 1 to " + std::to_wstring(most));
    }
    return count;
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

/// Parses the values of --process: "4312" for the process with this id on any host, or "host7.4312" on one host.
std::vector<ProcessChoice> processesOf(const tools::Arguments& arguments) {
    std::vector<ProcessChoice> processes;
    for (const std::wstring& value : arguments.values(L"process")) {
        const std::size_t point = value.rfind(L'.');
        const std::wstring id = point == std::wstring::npos ? value : value.substr(point + 1);
        const std::optional<unsigned long long> number = wholeNumber(id);
        if (!number || *number > std::numeric_limits<unsigned long>::max() || value.find(L'.') != point) {
            rejectValue(L"process", value, L"a number, or a host and a number, such as host7.4312");
        }
        ProcessChoice& process = processes.emplace_back();
        process.id = static_cast<unsigned long>(*number);
        if (point != std::wstring::npos) {
            process.host = tools::toUtf8(value.substr(0, point));
        }
    }
    return processes;
}

/// Parses the values of --prefix. The value "error", ignoring case, means the prefix of exception records. Trailing
/// colons and spaces are removed.
std::vector<std::string> prefixesOf(const tools::Arguments& arguments) {
    std::vector<std::string> prefixes = textsOf(arguments, L"prefix");
    for (std::string& prefix : prefixes) {
        prefix.erase(std::min(prefix.find_last_not_of(": ") + 1, prefix.size()));
        if (equalButForCase(prefix, "error")) {
            prefix = "Vorel Error";
        }
    }
    return prefixes;
}

/// The time zone of the log, and the current time in that zone.
struct LogClock {
    TimeZone zone;
    LocalMs now = 0;
};

LogClock clockOf(const tools::Arguments& arguments, const Now& now) {
    const std::optional<std::wstring> value = arguments.value(L"time-zone");
    if (!value) {
        return {TimeZone(), now.local};
    }
    const std::optional<LocalMs> offset = parseOffset(tools::toUtf8(*value));
    if (!offset) {
        rejectValue(L"time-zone", *value, L"Z, or an offset such as +02:00");
    }
    return {TimeZone(*offset), now.utc + *offset};
}

std::optional<TimeSpan> timeOf(const tools::Arguments& arguments, std::wstring_view option, const LogClock& clock) {
    const std::optional<std::wstring> value = arguments.value(option);
    if (!value) {
        return std::nullopt;
    }
    const std::optional<TimeSpan> time = parseTypedTime(tools::toUtf8(*value), clock.now, clock.zone);
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

/// Rejects options that cannot be combined, and options without an option or operand that they need.
void checkTogether(const Settings& settings) {
    const auto exclude = [](bool both, std::wstring_view first, std::wstring_view second) {
        if (both) {
            throw tools::UsageError(L"--" + std::wstring(first) + L" and --" + std::wstring(second) +
                                    L" cannot be combined");
        }
    };
    const auto need = [](bool isMet, std::wstring_view option, std::wstring_view needed) {
        if (!isMet) {
            throw tools::UsageError(L"--" + std::wstring(option) + L" needs " + std::wstring(needed));
        }
    };
    const FilterChoices& filter = settings.filter;
    exclude(settings.summary && settings.maxEntries.has_value(), L"summary", L"max-count");
    exclude(settings.summary && settings.tail.has_value(), L"summary", L"tail");
    exclude(settings.summary && settings.context != 0, L"summary", L"context");
    exclude(settings.json && settings.context != 0, L"json", L"context");
    exclude(settings.tail && settings.maxEntries, L"tail", L"max-count");
    exclude(settings.tail && settings.context != 0, L"tail", L"context");
    for (const auto& [isGiven, name] :
         std::initializer_list<std::pair<bool, std::wstring_view>>{{settings.summary, L"summary"},
                                                                   {settings.follow, L"follow"},
                                                                   {settings.json, L"json"},
                                                                   {settings.maxEntries.has_value(), L"max-count"},
                                                                   {settings.tail.has_value(), L"tail"},
                                                                   {settings.context != 0, L"context"}}) {
        exclude(!settings.report.empty() && isGiven, L"report", name);
    }
    need(!settings.top || settings.summary, L"top", L"--summary");
    need(!filter.invert || !filter.texts.empty() || !filter.patterns.empty(), L"invert", L"--text or --regexp");
    need(!settings.follow || (settings.paths.size() == 1 && settings.paths.front() != kStandardInput), L"follow",
         L"one log");
}

}  // namespace

const tools::Syntax& syntax() {
    return kSyntax;
}

Settings settingsOf(const tools::Arguments& arguments, const Now& now) {
    Settings settings;
    settings.paths = arguments.operands();
    if (settings.paths.empty()) {
        settings.paths.emplace_back(kDefaultLog);
    }
    settings.filter.processes = processesOf(arguments);
    settings.filter.threads = idsOf(arguments, L"thread");
    settings.filter.prefixes = prefixesOf(arguments);
    settings.filter.texts = textsOf(arguments, L"text");
    settings.filter.ignoreCase = arguments.has(L"ignore-case");
    for (const std::string& expression : textsOf(arguments, L"regexp")) {
        settings.filter.patterns.push_back(std::make_shared<Pattern>(expression, settings.filter.ignoreCase));
    }
    settings.filter.invert = arguments.has(L"invert");
    settings.filter.damagedOnly = arguments.has(L"damaged");
    const LogClock clock = clockOf(arguments, now);
    if (const auto from = timeOf(arguments, L"from", clock)) {
        settings.filter.from = from->from;
    }
    if (const auto to = timeOf(arguments, L"to", clock)) {
        settings.filter.to = to->to;
    }
    if (settings.filter.from && settings.filter.to && *settings.filter.from >= *settings.filter.to) {
        throw tools::UsageError(L"--from is later than --to");
    }
    settings.follow = arguments.has(L"follow");
    settings.fold = arguments.has(L"fold");
    settings.json = arguments.has(L"json");
    settings.summary = arguments.has(L"summary");
    settings.report = arguments.value(L"report").value_or(L"");
    settings.fold = settings.fold || !settings.report.empty();  // the report shows whole trails
    settings.colours = coloursOf(arguments);
    settings.maxEntries = countOf(arguments, L"max-count");
    settings.top = countOf(arguments, L"top");
    settings.tail = countOf(arguments, L"tail");
    settings.context = countOf(arguments, L"context", kMaxContext).value_or(0);
    checkTogether(settings);
    return settings;
}

bool showsColours(Colours choice, bool isCapableConsole, bool hasNoColor) noexcept {
    return choice == Colours::Always || (choice == Colours::Auto && isCapableConsole && !hasNoColor);
}

}  // namespace vorellog

#include "LogReader.h"

#include <array>
#include <charconv>
#include <ctime>
#include <iomanip>
#include <sstream>

#include "Files.h"

namespace examples {

namespace {

struct Prefix {
    std::string_view text;
    Kind kind;
};

constexpr std::array<Prefix, 6> kPrefixes{{{"Vorel Error: ", Kind::Error},
                                           {"Vorel Error Truncated: ", Kind::Error},
                                           {"WARN: ", Kind::Warning},
                                           {"WARN Truncated: ", Kind::Warning},
                                           {"DEBUG: ", Kind::Debug},
                                           {"DEBUG Truncated: ", Kind::Debug}}};

/// Parses a line from left to right. After the first mismatch, every operation fails.
class Cursor {
public:
    explicit Cursor(std::string_view line) noexcept : m_rest(line) {}

    bool skip(std::string_view text) noexcept {
        m_good = m_good && m_rest.starts_with(text);
        if (m_good) {
            m_rest.remove_prefix(text.size());
        }
        return m_good;
    }

    /// Consumes the next `size` characters.
    std::string_view consume(std::size_t size) noexcept {
        m_good = m_good && m_rest.size() >= size;
        if (!m_good) {
            return {};
        }
        const std::string_view consumed = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        return consumed;
    }

    unsigned long number() noexcept {
        unsigned long value = 0;
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
        m_good = m_good && error == std::errc();
        consume(static_cast<std::size_t>(end - m_rest.data()));
        return value;
    }

    [[nodiscard]] bool good() const noexcept { return m_good; }
    [[nodiscard]] std::string_view rest() const noexcept { return m_rest; }

private:
    std::string_view m_rest;
    bool m_good = true;
};

/// A local time such as "Mon Nov 16 01:43:08 2026", in seconds since 1970 (UTC); -1 if the text has another form.
long long secondsOf(std::string_view text) {
    std::tm time{};
    time.tm_isdst = -1;
    std::istringstream in{std::string(text)};
    in >> std::get_time(&time, "%a %b %d %H:%M:%S %Y");
    return in.fail() ? -1 : static_cast<long long>(std::mktime(&time));
}

bool isHostName(std::string_view host) {
    return host.find_first_of(" :[]") == std::string_view::npos;
}

/// Appends the records and the unreadable lines in the content of a log file. If the last line does not end in CR LF, a
/// message about it is appended to the unreadable lines.
void appendLines(std::string_view content, Log& log) {
    constexpr std::string_view kTerminator = "\r\n";
    for (std::string& line : split(content, kTerminator)) {
        if (std::optional<Record> record = parseLine(line)) {
            log.records.push_back(std::move(*record));
        } else {
            log.unreadable.push_back(std::move(line));
        }
    }
    if (!content.empty() && !content.ends_with(kTerminator)) {
        log.unreadable.emplace_back("(the last line does not end in CR LF)");
    }
}

}  // namespace

std::optional<Record> parseLine(std::string_view line) {
    constexpr std::size_t kTimeSize = 24;
    constexpr std::size_t kMillisecondDigits = 3;
    Record record;
    Cursor cursor(line);
    cursor.skip("[");
    const std::string_view time = cursor.consume(kTimeSize);
    cursor.skip("].");
    const std::string_view fraction = cursor.consume(kMillisecondDigits);
    cursor.skip(" ");
    // The process id and the thread id follow the last two dots before the colon.
    const std::string_view origin = cursor.rest().substr(0, cursor.rest().find(": "));
    const std::size_t threadAt = origin.rfind('.');
    const std::size_t processAt =
        threadAt == std::string_view::npos || threadAt == 0 ? threadAt : origin.rfind('.', threadAt - 1);
    if (!cursor.good() || processAt == std::string_view::npos || !isHostName(cursor.consume(processAt))) {
        return std::nullopt;
    }
    cursor.skip(".");
    record.processId = cursor.number();
    cursor.skip(".");
    record.threadId = cursor.number();
    cursor.skip(": ");
    const long long seconds = secondsOf(time);
    Cursor digits(fraction);
    const unsigned long milliseconds = digits.number();
    if (!cursor.good() || !digits.good() || !digits.rest().empty() || seconds < 0) {
        return std::nullopt;
    }
    record.time = std::string(time) + '.' + std::string(fraction);
    record.timeMs = seconds * 1000 + static_cast<long long>(milliseconds);
    for (const Prefix& prefix : kPrefixes) {
        if (cursor.rest().starts_with(prefix.text)) {
            record.kind = prefix.kind;
            record.message = cursor.rest().substr(prefix.text.size());
            return record;
        }
    }
    return std::nullopt;
}

Log readLog(const std::string& path) {
    Log log;
    if (const auto backup = readFile(path + ".001")) {
        log.hasBackup = true;
        appendLines(*backup, log);
    }
    appendLines(readFile(path).value_or(""), log);
    return log;
}

}  // namespace examples

#include "vorellog/Summary.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "support/Visible.h"
#include "vorellog/Json.h"

namespace vorellog {

namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kBarWidth = 40;

constexpr Damage kKinds[] = {Damage::Cut, Damage::MidLine, Damage::NoHeader, Damage::BadUtf8};
static_assert(std::size(kKinds) == kDamages - 1);

std::size_t indexOf(Damage damage) noexcept {
    return static_cast<std::size_t>(damage);
}

/// The width of a column in code points. Columns are misaligned only for scripts with wide or combining characters.
std::size_t widthOf(std::string_view text) noexcept {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width - std::min(width, widthOf(text)), ' ');
}

std::string rightAligned(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string visible(std::string_view text) {
    std::string shown;
    tools::appendVisible(shown, text);
    return shown;
}

/// A program may choose any prefix, and a message with a colon has its start as prefix: only the first bytes are kept.
std::string keyOf(std::string_view prefix) {
    constexpr std::size_t kMaxBytes = 48;
    return visible(prefix.substr(0, kMaxBytes)) + (prefix.size() > kMaxBytes ? "..." : "");
}

std::string counted(unsigned long long count, std::string_view noun) {
    return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}

/// "15 s", "5 min", "3 h", "7 d"
std::string lengthText(LocalMs length) {
    const LocalMs seconds = length / 1000;
    if (seconds % 86400 == 0) {
        return std::to_string(seconds / 86400) + " d";
    }
    if (seconds % 3600 == 0) {
        return std::to_string(seconds / 3600) + " h";
    }
    return seconds % 60 == 0 ? std::to_string(seconds / 60) + " min" : std::to_string(seconds) + " s";
}

std::string timeText(LocalMs time) {
    return isoText(time, false, ' ');
}

void appendStep(std::string& out, const Histogram::Step& step, LocalMs length) {
    JsonObject object(out);
    object.add("type", "step");
    object.add("from", isoText(step.from, false));
    object.add("seconds", static_cast<unsigned long long>(length / 1000));
    object.add("records", step.records);
}

}  // namespace

void Summary::Row::add(LocalMs time) noexcept {
    firstMs = records == 0 ? time : std::min(firstMs, time);
    lastMs = records == 0 ? time : std::max(lastMs, time);
    ++records;
}

void Summary::add(const Record& record) {
    ++m_damage[indexOf(record.damage())];
    if (const LogHeader* const header = record.header()) {
        rowOf(record, *header).add(header->timeMs);
        m_all.add(header->timeMs);
        m_histogram.add(header->timeMs);
    }
}

Summary::Row& Summary::rowOf(const Record& record, const LogHeader& header) {
    Key key(record.host(), keyOf(record.parsedBody().prefix));
    key.first += '.';
    key.first += std::to_string(header.processId);
    const auto found = m_rows.find(key);
    if (found != m_rows.end()) {
        return found->second;
    }
    return m_rows.size() < kMaxRows ? m_rows[std::move(key)] : m_rows[{std::string(kOthers), {}}];
}

unsigned long long Summary::damaged() const noexcept {
    unsigned long long sum = 0;
    for (const Damage each : kKinds) {
        sum += m_damage[indexOf(each)];
    }
    return sum;
}

unsigned long long Summary::entries() const noexcept {
    return damaged() + m_damage[indexOf(Damage::None)];
}

/// "3 of 12 damaged: 1 cut, 2 no header"; empty without damage.
std::string Summary::damageText() const {
    std::string kinds;
    for (const Damage each : kKinds) {
        if (const unsigned long long count = m_damage[indexOf(each)]) {
            kinds += (kinds.empty() ? "" : ", ") + std::to_string(count) + ' ' + std::string(nameOf(each));
        }
    }
    return kinds.empty() ? kinds
                         : std::to_string(damaged()) + " of " + std::to_string(entries()) + " damaged: " + kinds;
}

std::string Summary::table() const {
    std::string_view heads[] = {"Process", "Prefix"};
    std::size_t widths[] = {heads[0].size(), heads[1].size()};
    for (const auto& [key, row] : m_rows) {
        widths[0] = std::max(widths[0], widthOf(visible(key.first)));
        widths[1] = std::max(widths[1], widthOf(key.second));
    }
    constexpr std::size_t kTimeWidth = 19;
    constexpr std::size_t kCountWidth = 10;
    std::string out = padded(heads[0], widths[0]).append(kGap) + padded(heads[1], widths[1]) +
                      rightAligned("Records", kCountWidth).append(kGap) + padded("First", kTimeWidth).append(kGap) +
                      "Last\n";
    for (const auto& [key, row] : m_rows) {
        out += padded(visible(key.first), widths[0]).append(kGap) + padded(key.second, widths[1]) +
               rightAligned(std::to_string(row.records), kCountWidth).append(kGap) +
               timeText(row.firstMs).append(kGap) + timeText(row.lastMs) + '\n';
    }
    return out;
}

std::string Summary::bars() const {
    const std::vector<Histogram::Step> steps = m_histogram.steps();
    unsigned long long most = 0;
    for (const Histogram::Step& step : steps) {
        most = std::max(most, step.records);
    }
    constexpr std::size_t kCountWidth = 10;
    std::string out =
        padded("Steps of " + lengthText(m_histogram.stepMs()), 19) + rightAligned("Records", kCountWidth) + '\n';
    for (const Histogram::Step& step : steps) {
        // Round up, so that every step with a record has a bar.
        const auto length = static_cast<std::size_t>((step.records * kBarWidth + most - 1) / most);
        out += timeText(step.from) + rightAligned(std::to_string(step.records), kCountWidth);
        if (length != 0) {
            out.append(kGap).append(length, '#');
        }
        out += '\n';
    }
    return out;
}

std::string Summary::text() const {
    const std::string damage = damageText();
    std::string out = counted(m_all.records, "record");
    if (m_all.records != 0) {
        out += " from " + timeText(m_all.firstMs) + " to " + timeText(m_all.lastMs);
    }
    if (const unsigned long long others = entries() - m_all.records) {
        out += ", " + std::to_string(others) + (others == 1 ? " entry" : " entries") + " without a header";
    }
    out += (damage.empty() ? "" : "; " + damage) + '\n';
    if (m_all.records != 0) {
        out += '\n' + table() + '\n' + bars();
    }
    return out;
}

std::string Summary::json() const {
    std::string out;
    appendHead(out);
    for (const auto& [key, row] : m_rows) {
        out += '\n';
        appendRow(out, key, row);
    }
    for (const Histogram::Step& step : m_histogram.steps()) {
        out += '\n';
        appendStep(out, step, m_histogram.stepMs());
    }
    return out + '\n';
}

/// Appends the totals.
void Summary::appendHead(std::string& out) const {
    JsonObject object(out);
    object.add("type", "summary");
    object.add("entries", entries());
    object.add("records", m_all.records);
    if (m_all.records != 0) {
        object.add("from", isoText(m_all.firstMs, false));
        object.add("to", isoText(m_all.lastMs, false));
    }
    object.add("cut", m_damage[indexOf(Damage::Cut)]);
    object.add("midLine", m_damage[indexOf(Damage::MidLine)]);
    object.add("noHeader", m_damage[indexOf(Damage::NoHeader)]);
    object.add("badUtf8", m_damage[indexOf(Damage::BadUtf8)]);
}

void Summary::appendRow(std::string& out, const Key& key, const Row& row) {
    JsonObject object(out);
    object.add("type", "count");
    object.add("process", key.first);
    object.add("prefix", key.second);
    object.add("records", row.records);
    object.add("first", isoText(row.firstMs, false));
    object.add("last", isoText(row.lastMs, false));
}

}  // namespace vorellog

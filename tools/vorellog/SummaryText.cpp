#include <algorithm>
#include <iterator>

#include "support/Visible.h"
#include "vorellog/Summary.h"

namespace vorellog {

namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kBarWidth = 40;
constexpr std::size_t kCountWidth = 10;

constexpr Damage kKinds[] = {Damage::Cut, Damage::MidLine, Damage::NoHeader, Damage::BadUtf8};
static_assert(std::size(kKinds) == kDamages - 1);

/// The number of code points of `text`. A code point counts as one column, so only wide or combining characters
/// misalign the table.
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

/// "2026-11-16 01:43:08 to 2026-11-17 02:00:00"
std::string spanText(LocalMs first, LocalMs last) {
    return timeText(first) + (first == last ? std::string() : " to " + timeText(last));
}

/// The text in one line, because a message may have several lines.
std::string inOneLine(std::string_view text) {
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return visible(line);
}

void appendGroup(std::string& out, const MessageGroups::Group& group) {
    const std::string indent(kCountWidth + kGap.size(), ' ');
    out += rightAligned(std::to_string(group.entries.records), kCountWidth).append(kGap);
    out += (group.prefix.empty() ? std::string() : visible(group.prefix) + ": ") + inOneLine(group.message) + '\n';
    for (const std::string_view step : group.trail) {
        out += indent + "  > " + inOneLine(step) + '\n';
    }
    out += indent + spanText(group.entries.firstMs, group.entries.lastMs) + ", " +
           (group.processes.hasOthers() ? "at least " : "") + std::to_string(group.processes.size()) +
           (group.processes.size() == 1 ? " process" : " processes") + '\n';
    out += indent + "first: " + visible(group.writer) + ": " + inOneLine(group.example) + '\n';
}

}  // namespace

/// "3 damaged: 1 cut, 2 no header"; empty if no record is damaged.
std::string Summary::damageText() const {
    std::string kinds;
    for (const Damage each : kKinds) {
        if (const unsigned long long count = m_damage[static_cast<std::size_t>(each)]) {
            kinds += (kinds.empty() ? "" : ", ") + std::to_string(count) + ' ' + std::string(nameOf(each));
        }
    }
    return kinds.empty() ? kinds : std::to_string(damaged()) + " damaged: " + kinds;
}

void Summary::appendGroups(std::string& out, std::size_t top) const {
    const std::vector<const MessageGroups::Group*> groups = m_groups.sorted();
    const std::size_t shown = std::min(groups.size(), top);
    out += "\n   Entries  Message";
    if (shown != groups.size()) {
        out += " (" + std::to_string(shown) + " of " + std::to_string(groups.size()) + "; --top shows more)";
    }
    out += '\n';
    for (std::size_t index = 0; index != shown; ++index) {
        appendGroup(out, *groups[index]);
    }
    if (m_groups.ungrouped() != 0) {
        out += rightAligned(std::to_string(m_groups.ungrouped()), kCountWidth).append(kGap) +
               "(not grouped: too many different messages)\n";
    }
}

void Summary::appendTable(std::string& out, std::size_t top) const {
    std::vector<ShownRow> rows = sortedRows();
    const std::size_t all = rows.size();
    rows.resize(std::min(rows.size(), top));
    if (m_others.records != 0) {
        rows.push_back({std::string(kOthers), {}, m_others});
    }
    std::string_view heads[] = {"Process", "Prefix"};
    std::size_t widths[] = {heads[0].size(), heads[1].size()};
    for (ShownRow& each : rows) {
        each.process = visible(each.process);
        widths[0] = std::max(widths[0], widthOf(each.process));
        widths[1] = std::max(widths[1], widthOf(each.prefix));
    }
    constexpr std::size_t kTimeWidth = 19;
    out += '\n' + padded(heads[0], widths[0]).append(kGap) + padded(heads[1], widths[1]) +
           rightAligned("Records", kCountWidth).append(kGap) + padded("First", kTimeWidth).append(kGap) + "Last\n";
    for (const ShownRow& each : rows) {
        out += padded(each.process, widths[0]).append(kGap) + padded(each.prefix, widths[1]) +
               rightAligned(std::to_string(each.row.records), kCountWidth).append(kGap) +
               timeText(each.row.firstMs).append(kGap) + timeText(each.row.lastMs) + '\n';
    }
    if (all > top) {
        out += "(" + std::to_string(top) + " of " + std::to_string(all) + " rows; --top shows more)\n";
    }
    if (m_others.records != 0) {
        out += "(others: processes and prefixes beyond " + std::to_string(m_rows.size()) + " rows)\n";
    }
}

std::string Summary::bars() const {
    const std::vector<Histogram::Step> steps = m_histogram.steps();
    unsigned long long most = 0;
    for (const Histogram::Step& step : steps) {
        most = std::max(most, step.records);
    }
    std::string out =
        '\n' + padded("Steps of " + lengthText(m_histogram.stepMs()), 19) + rightAligned("Records", kCountWidth) + '\n';
    for (const Histogram::Step& step : steps) {
        // Rounded up, so that every step with a record has a bar.
        const auto length = static_cast<std::size_t>((step.records * kBarWidth + most - 1) / most);
        out += timeText(step.from) + rightAligned(std::to_string(step.records), kCountWidth);
        if (length != 0) {
            out.append(kGap).append(length, '#');
        }
        out += '\n';
    }
    return out;
}

/// "5 entries with 8 records of 2 processes from 2026-11-16 01:43:08 to 2026-11-16 01:43:12". The number of entries is
/// given only if it differs from the number of records, that is, if an exception has several records.
std::string Summary::headText() const {
    const unsigned long long others = lines() - m_all.records;
    const unsigned long long entries = m_entries - others;
    std::string out;
    if (entries != m_all.records) {
        out = std::to_string(entries) + (entries == 1 ? " entry with " : " entries with ");
    }
    out += counted(m_all.records, "record");
    if (m_all.records != 0) {
        out += std::string(" of ") + (m_hasMoreProcesses ? "more than " : "") + std::to_string(m_processes.size()) +
               (m_processes.size() == 1 ? " process" : " processes");
        out += (m_all.firstMs == m_all.lastMs ? " at " : " from ") + spanText(m_all.firstMs, m_all.lastMs);
    }
    if (others != 0) {
        out += ", and " + counted(others, "line") + " without a header";
    }
    const std::string damage = damageText();
    return out + (damage.empty() ? "" : "; " + damage) + '\n';
}

std::string Summary::text(std::optional<std::size_t> top) const {
    std::string out = headText();
    if (m_all.records != 0) {
        appendGroups(out, top.value_or(kDefaultTop));
        appendTable(out, top.value_or(kDefaultTop));
        out += bars();
    }
    return out;
}

}  // namespace vorellog

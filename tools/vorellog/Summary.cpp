#include "vorellog/Summary.h"

#include <algorithm>
#include <tuple>

#include "support/Visible.h"

namespace vorellog {

namespace {

/// Returns the first bytes of a prefix, with escapes. A prefix can be long, because a program may use any prefix. Also,
/// if a message without a prefix contains a colon and a space, the text before the colon counts as a prefix.
std::string shownPrefix(std::string_view prefix) {
    std::string shown;
    tools::appendVisible(shown, prefix.substr(0, MessageGroups::kMaxPrefixBytes));
    return shown + (prefix.size() > MessageGroups::kMaxPrefixBytes ? "..." : "");
}

}  // namespace

void Summary::add(const Record& record) {
    ++m_entries;
    const ProcessNumber process = countRecord(record);
    if (record.header()) {
        m_groups.add(record, process);
    }
}

void Summary::add(const Trail& trail) {
    ++m_entries;
    ProcessNumber process = ProcessTable::kOthers;
    for (const Record& record : trail.records) {
        process = countRecord(record);
    }
    m_groups.add(trail, process);
}

/// Counts a record. Returns the number of its process. Returns ProcessTable::kOthers if the record has no header, or if
/// the table of processes is full and does not contain the process.
ProcessNumber Summary::countRecord(const Record& record) {
    ++m_damage[static_cast<std::size_t>(record.damage())];
    const LogHeader* const header = record.header();
    if (!header) {
        return ProcessTable::kOthers;
    }
    const ProcessNumber process = m_processes.numberOf(record, *header);
    m_hasMoreProcesses = m_hasMoreProcesses || process == ProcessTable::kOthers;
    rowOf(process, record.parsedBody().prefix).add(*header);
    m_all.add(*header);
    m_histogram.add(header->timeMs);
    return process;
}

Summary::Row& Summary::rowOf(ProcessNumber process, std::string_view prefix) {
    constexpr unsigned int kNumberBits = 32;
    // The additional byte shows later that the prefix is longer than the shown part.
    const std::string_view kept = prefix.substr(0, MessageGroups::kMaxPrefixBytes + 1);
    const bool isFull = m_rows.size() == kMaxRows;
    auto known = m_prefixes.find(kept);
    if (known == m_prefixes.end() && !isFull && process != ProcessTable::kOthers) {
        known = m_prefixes.emplace(kept, static_cast<std::uint32_t>(m_prefixes.size())).first;
    }
    if (known == m_prefixes.end() || process == ProcessTable::kOthers) {
        return m_others;
    }
    const std::uint64_t key = std::uint64_t{process} << kNumberBits | known->second;
    if (!isFull) {
        return m_rows[key];
    }
    const auto found = m_rows.find(key);
    return found == m_rows.end() ? m_others : found->second;
}

/// The rows, without `m_others`. Rows with more records come first. If the numbers of records are equal, the row with
/// the latest record comes first. If these are equal too, the rows are in the order of process and prefix.
std::vector<Summary::ShownRow> Summary::sortedRows() const {
    constexpr unsigned int kNumberBits = 32;
    std::vector<std::string> prefixes(m_prefixes.size());
    for (const auto& [prefix, number] : m_prefixes) {
        prefixes[number] = shownPrefix(prefix);
    }
    std::vector<ShownRow> rows;
    rows.reserve(m_rows.size());
    for (const auto& [key, row] : m_rows) {
        rows.push_back({m_processes.nameOf(static_cast<ProcessNumber>(key >> kNumberBits)),
                        prefixes[static_cast<std::uint32_t>(key)], row});
    }
    std::sort(rows.begin(), rows.end(), [](const ShownRow& a, const ShownRow& b) {
        return std::tie(b.row.records, b.row.lastMs, a.process, a.prefix) <
               std::tie(a.row.records, a.row.lastMs, b.process, b.prefix);
    });
    return rows;
}

unsigned long long Summary::damaged() const noexcept {
    return lines() - m_damage[static_cast<std::size_t>(Damage::None)];
}

/// Number of records, including damaged records without a header.
unsigned long long Summary::lines() const noexcept {
    unsigned long long sum = 0;
    for (const unsigned long long count : m_damage) {
        sum += count;
    }
    return sum;
}

}  // namespace vorellog

/// \file
/// Statistics of a log: messages by their form, records by process and prefix, damage, and records over time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/Histogram.h"
#include "vorellog/MessageGroups.h"
#include "vorellog/ProcessTable.h"
#include "vorellog/Record.h"
#include "vorellog/Tally.h"
#include "vorellog/TrailAssembler.h"

namespace vorellog {

class Summary {
public:
    /// The maximum number of pairs of process and prefix that are counted separately. Further pairs, and all pairs with
    /// a process beyond ProcessTable::kMaxProcesses, are counted together as kOthers.
    static constexpr std::size_t kMaxRows = 20000;
    static constexpr std::string_view kOthers = "(others)";

    /// The number of groups, and of pairs of process and prefix, that the readable summary shows without `top`.
    static constexpr std::size_t kDefaultTop = 10;

    /// Adds a record as an entry.
    void add(const Record& record);

    /// Adds the records of an exception as one entry.
    void add(const Trail& trail);

    /// A readable summary: a line with the totals, the groups, a table with a row for each pair of process and prefix,
    /// and a bar for each time step. `top` limits the numbers of groups and of pairs. If no record has a header, the
    /// summary is only the first line.
    [[nodiscard]] std::string text(std::optional<std::size_t> top = {}) const;

    /// The summary as JSON, one object per line: "summary", a "group" for each group, a "count" for each pair of
    /// process and prefix, a "count" for kOthers if any, a "step" for each time step. `top` limits the numbers of
    /// groups and of pairs. Without `top`, all groups and pairs are written.
    [[nodiscard]] std::string json(std::optional<std::size_t> top = {}) const;

private:
    using Row = Tally;

    /// A row of the table, ready to be shown.
    struct ShownRow {
        std::string process;  ///< "host7.4312"
        std::string prefix;   ///< shortened and escaped
        Row row;
    };
    // Not a hash table, because a log may contain prefixes whose hashes collide.
    using Prefixes = std::map<std::string, std::uint32_t, std::less<>>;

    ProcessNumber countRecord(const Record& record);
    Row& rowOf(ProcessNumber process, std::string_view prefix);
    [[nodiscard]] std::vector<ShownRow> sortedRows() const;
    [[nodiscard]] unsigned long long damaged() const noexcept;
    [[nodiscard]] unsigned long long lines() const noexcept;
    [[nodiscard]] std::string headText() const;
    [[nodiscard]] std::string damageText() const;
    void appendGroups(std::string& out, std::size_t top) const;
    void appendTable(std::string& out, std::size_t top) const;
    [[nodiscard]] std::string bars() const;
    void appendHead(std::string& out) const;

    ProcessTable m_processes;
    Prefixes m_prefixes;                  ///< prefixes, shortened to their first bytes, and their numbers
    std::map<std::uint64_t, Row> m_rows;  ///< the key combines the numbers of process and prefix
    Row m_others;                         ///< records beyond kMaxRows or ProcessTable::kMaxProcesses
    MessageGroups m_groups;
    Histogram m_histogram;
    Row m_all;                         ///< all records with a header
    unsigned long long m_entries = 0;  ///< single records, exceptions, and lines without a header
    bool m_hasMoreProcesses = false;   ///< whether there are more processes than the table can hold
    std::array<unsigned long long, kDamages> m_damage{};
};

}  // namespace vorellog

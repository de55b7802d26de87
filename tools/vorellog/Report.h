/// \file
/// A report of a log as one HTML page: groups of messages that differ only in numbers, paths and quoted text, with
/// their latest entries; a timeline by prefix; and the processes. The page needs no network. Its size is bounded,
/// however large the log is.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vorellog/Histogram.h"
#include "vorellog/MessageGroups.h"
#include "vorellog/ProcessTable.h"
#include "vorellog/Tally.h"
#include "vorellog/TrailAssembler.h"

namespace vorellog {

class Report {
public:
    /// \name Limits of the page
    /// \{
    static constexpr std::size_t kMaxSteps = 400;       ///< steps of the timeline
    static constexpr std::size_t kMaxPrefixes = 8;      ///< further prefixes are counted as kOthers
    static constexpr std::size_t kMaxGroups = 1000;     ///< the groups with the most entries
    static constexpr std::size_t kMaxProcesses = 500;   ///< the processes with the most records
    static constexpr std::size_t kMaxExamples = 10;     ///< per group: the newest entries
    static constexpr std::size_t kMaxLineBytes = 2000;  ///< of a message in an example; the rest becomes "..."
    /// The size of the examples of all groups. After it is reached, each further group has one example.
    static constexpr std::size_t kMaxExampleBytes = std::size_t{4} << 20;
    /// \}
    static constexpr std::string_view kOthers = "(others)";

    /// Adds a record as an entry; a record without a header is only counted as damaged.
    void add(const Record& record) { add(std::span<const Record>(&record, 1), TrailEnd::Caught); }

    /// Adds a trail as one entry: an exception, or a single record. If the first record has no header, the trail is
    /// only counted as damaged.
    void add(const Trail& trail) { add(std::span<const Record>(trail.records), trail.end); }

    /// The page. `name` is the name of the log.
    [[nodiscard]] std::string page(std::string_view name) const;

    /// The page's data as a JSON object. It contains no "<", so it can be embedded in a script element.
    [[nodiscard]] std::string data(std::string_view name) const;

private:
    struct Series {
        Histogram steps{kMaxSteps};
        unsigned long long records = 0;
    };
    struct Example {
        LocalMs timeMs = 0;
        ProcessNumber process = 0;
        std::string writer;
        std::vector<std::string> messages;
        TrailEnd end = TrailEnd::Caught;
    };
    /// The data that the page shows for a group, and that MessageGroups does not store.
    struct Details {
        Histogram steps{kMaxSteps};
        std::vector<Example> examples;  ///< a ring
        std::size_t next = 0;           ///< position of the next example in a full ring
    };
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    void add(std::span<const Record> records, TrailEnd end);
    void countRecord(const Record& record, const LogHeader& header, ProcessNumber process);
    static void addExample(Details& details, std::span<const Record> records, const LogHeader& header,
                           ProcessNumber process, TrailEnd end);
    [[nodiscard]] std::vector<ProcessNumber> shownProcesses() const;
    void appendPrefixes(std::string& out, const Histogram& all) const;
    void appendProcesses(std::string& out, const std::vector<ProcessNumber>& shown) const;
    void appendGroups(std::string& out, const Histogram& all, const std::vector<ProcessNumber>& shown) const;

    ProcessTable m_processes;
    std::vector<Tally> m_ofProcess;  ///< by process number
    std::unordered_map<std::string, Series, Hash, std::equal_to<>> m_ofPrefix;
    Series m_otherPrefixes;
    Histogram m_steps{kMaxSteps};
    MessageGroups m_groups;
    std::vector<Details> m_details;  ///< by group number
    Tally m_all;
    std::array<unsigned long long, kDamages> m_damage{};
};

}  // namespace vorellog

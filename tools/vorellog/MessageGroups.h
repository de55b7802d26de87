/// \file
/// Counts messages and exceptions: how often and since when they occur, and in which processes. A group consists of
/// messages with the same prefix and the same form (MessageForm.h), or of exceptions whose trails have the same forms.
/// Memory is bounded.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/ProcessTable.h"
#include "vorellog/Tally.h"
#include "vorellog/TrailAssembler.h"

namespace vorellog {

class MessageGroups {
public:
    MessageGroups() = default;
    ~MessageGroups() = default;
    MessageGroups(const MessageGroups&) = delete;
    MessageGroups& operator=(const MessageGroups&) = delete;
    MessageGroups(MessageGroups&&) = default;
    MessageGroups& operator=(MessageGroups&&) = default;

    /// \name Limits
    /// After kMaxGroups or kMaxTextBytes is reached, no group is created. Entries with new messages then belong to no
    /// group, and ungrouped() counts them. After kMaxProcessSetBytes is reached, the sets of processes do not grow (see
    /// ProcessSet::add).
    /// \{
    static constexpr std::size_t kMaxGroups = 10000;
    static constexpr std::size_t kMaxTextBytes = std::size_t{12} << 20;  ///< of the keys and examples of all groups
    static constexpr std::size_t kMaxProcessSetBytes = std::size_t{8} << 20;  ///< of all sets of processes
    /// \}

    /// \name Parts of an entry that are kept
    /// \{
    static constexpr std::size_t kMaxPrefixBytes = 48;
    static constexpr std::size_t kMaxExampleBytes = 1000;
    static constexpr std::size_t kMaxTrail = 31;  ///< records after the first record
    /// \}

    struct Group {
        std::size_t number = 0;  ///< groups are numbered from 0, in the order of their first entries
        Tally entries;           ///< counts the first record of each entry
        ProcessSet processes;
        std::string prefix;
        std::string_view message;             ///< the form of the message
        std::vector<std::string_view> trail;  ///< the forms of the further records of an exception
        std::string writer;                   ///< of the first entry: "host7.4312.9876"
        std::string example;                  ///< message of the first entry
    };

    /// Adds a record as an entry. A record without a header is ignored.
    void add(const Record& record, ProcessNumber process);

    /// Adds an exception.
    void add(const Trail& trail, ProcessNumber process);

    /// Adds an entry of one or more records. Returns its group, or null if it belongs to no group. An entry whose first
    /// record has no header is ignored: the result is null, and ungrouped() does not count the entry.
    const Group* add(std::span<const Record> records, ProcessNumber process);

    /// The groups. Groups with more entries come first. If the numbers of entries are equal, the group with the latest
    /// entry comes first.
    [[nodiscard]] std::vector<const Group*> sorted() const;

    [[nodiscard]] std::size_t size() const noexcept { return m_groups.size(); }

    /// Number of entries that belong to no group, because a limit was reached.
    [[nodiscard]] unsigned long long ungrouped() const noexcept { return m_ungrouped; }

private:
    // Not a hash table, because a log may contain messages whose hashes collide.
    using Groups = std::map<std::string, Group, std::less<>>;

    Group* create(const Record& first, const LogHeader& header);
    void count(Group& group, const LogHeader& header, ProcessNumber process);

    Groups m_groups;  ///< the key consists of prefix, message and trail
    unsigned long long m_ungrouped = 0;
    std::size_t m_textBytes = 0;
    std::size_t m_processSetBytes = 0;
    std::string m_key;                ///< the key of the entry that is being added
    std::vector<std::size_t> m_ends;  ///< the end of each message form in m_key
};

}  // namespace vorellog

#include "vorellog/MessageGroups.h"

#include <algorithm>
#include <tuple>

#include "vorellog/MessageForm.h"

namespace vorellog {

namespace {

constexpr char kPartEnd = '\n';

/// Returns the writer of a record in the format of the header, such as "host7.4312.9876".
std::string writerOf(const Record& record, const LogHeader& header) {
    constexpr std::size_t kFieldEnd = 2;
    return record.text().substr(header.hostAt, header.bodyAt - kFieldEnd - header.hostAt);
}

std::string shortened(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) {
        return std::string(text);
    }
    return std::string(text.substr(0, wholeCharacters(text, maxBytes))) + "...";
}

}  // namespace

void MessageGroups::add(const Record& record, ProcessNumber process) {
    add(std::span<const Record>(&record, 1), process);
}

void MessageGroups::add(const Trail& trail, ProcessNumber process) {
    add(std::span<const Record>(trail.records), process);
}

const MessageGroups::Group* MessageGroups::add(std::span<const Record> records, ProcessNumber process) {
    const Record& first = records.front();
    const LogHeader* const header = first.header();
    if (!header) {
        return nullptr;
    }
    m_key.assign(first.parsedBody().prefix.substr(0, kMaxPrefixBytes));
    m_ends.clear();
    for (const Record& record : records.first(std::min(records.size(), kMaxTrail + 1))) {
        m_key += kPartEnd;
        appendForm(m_key, record.parsedBody().message);
        m_ends.push_back(m_key.size());
    }
    const auto found = m_groups.find(std::string_view(m_key));
    Group* const group = found != m_groups.end() ? &found->second : create(first, *header);
    if (group) {
        count(*group, *header, process);
    } else {
        ++m_ungrouped;
    }
    return group;
}

/// Returns null if a limit is reached.
MessageGroups::Group* MessageGroups::create(const Record& first, const LogHeader& header) {
    if (m_groups.size() == kMaxGroups || m_textBytes >= kMaxTextBytes) {
        return nullptr;
    }
    const LogBody body = first.parsedBody();
    const auto position = m_groups.try_emplace(m_key).first;
    const std::string_view key = position->first;
    Group& group = position->second;
    group.number = m_groups.size() - 1;
    group.prefix = shortened(body.prefix, kMaxPrefixBytes);
    std::size_t start = std::min(body.prefix.size(), kMaxPrefixBytes) + 1;
    for (const std::size_t end : m_ends) {
        group.trail.push_back(key.substr(start, end - start));
        start = end + 1;
    }
    group.message = group.trail.front();
    group.trail.erase(group.trail.begin());
    group.writer = writerOf(first, header);
    group.example = shortened(body.message, kMaxExampleBytes);
    m_textBytes += key.size() + group.example.size();
    return &group;
}

void MessageGroups::count(Group& group, const LogHeader& header, ProcessNumber process) {
    group.entries.add(header);
    const std::size_t before = group.processes.sizeBytes();
    group.processes.add(process, m_processSetBytes < kMaxProcessSetBytes);
    m_processSetBytes += group.processes.sizeBytes() - before;
}

std::vector<const MessageGroups::Group*> MessageGroups::sorted() const {
    std::vector<const Group*> groups;
    groups.reserve(m_groups.size());
    for (const auto& [key, group] : m_groups) {
        groups.push_back(&group);
    }
    // Groups with equal numbers of entries and equal times of the latest entry are ordered by their texts.
    std::sort(groups.begin(), groups.end(), [](const Group* a, const Group* b) {
        return std::tie(b->entries.records, b->entries.lastMs, a->prefix, a->message, a->trail) <
               std::tie(a->entries.records, a->entries.lastMs, b->prefix, b->message, b->trail);
    });
    return groups;
}

}  // namespace vorellog

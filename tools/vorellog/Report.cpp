#include "vorellog/Report.h"

#include <algorithm>

#include "vorellog/MessageForm.h"

namespace vorellog {

namespace {

/// The maximum number of prefixes that are counted separately. Further prefixes are counted together, because most of
/// them are not prefixes, but the first words of messages that contain a colon.
constexpr std::size_t kMaxKnownPrefixes = 256;

}  // namespace

void Report::add(std::span<const Record> records, TrailEnd end) {
    for (const Record& record : records) {
        ++m_damage[static_cast<std::size_t>(record.damage())];
    }
    const LogHeader* const header = records.front().header();
    if (!header) {
        return;
    }
    // All records of a trail have the same writer.
    const ProcessNumber process = m_processes.numberOf(records.front(), *header);
    for (const Record& record : records) {
        countRecord(record, record.header() ? *record.header() : *header, process);
    }
    if (const MessageGroups::Group* const group = m_groups.add(records, process)) {
        if (group->number >= m_details.size()) {
            m_details.resize(group->number + 1);
        }
        Details& details = m_details[group->number];
        details.steps.add(header->timeMs);
        addExample(details, records, *header, process, end);
    }
}

void Report::countRecord(const Record& record, const LogHeader& header, ProcessNumber process) {
    m_all.add(header);
    m_steps.add(header.timeMs);
    if (process != ProcessTable::kOthers) {
        m_ofProcess.resize(std::max<std::size_t>(m_ofProcess.size(), process + 1));
        m_ofProcess[process].add(header);
    }
    const LogBody body = record.parsedBody();
    const std::string_view prefix = body.prefix.substr(0, MessageGroups::kMaxPrefixBytes);
    auto found = m_ofPrefix.find(prefix);
    if (found == m_ofPrefix.end() && m_ofPrefix.size() < kMaxKnownPrefixes) {
        found = m_ofPrefix.try_emplace(std::string(prefix)).first;
    }
    Series& series = found == m_ofPrefix.end() ? m_otherPrefixes : found->second;
    series.steps.add(header.timeMs);
    ++series.records;
}

/// Keeps an entry as an example. If the ring is full, the entry replaces the oldest example.
void Report::addExample(Details& details, std::span<const Record> records, const LogHeader& header,
                        ProcessNumber process, TrailEnd end) {
    constexpr std::size_t kFieldEnd = 2;
    if (details.examples.size() < kMaxExamples) {
        details.examples.emplace_back();
        details.next = details.examples.size() - 1;
    }
    Example& example = details.examples[details.next];
    details.next = (details.next + 1) % kMaxExamples;
    example.timeMs = header.timeMs;
    example.process = process;
    example.end = end;
    const std::string_view text = records.front().text();
    example.writer.assign(text.substr(header.hostAt, header.bodyAt - kFieldEnd - header.hostAt));
    example.messages.resize(std::min(records.size(), MessageGroups::kMaxTrail + 1));
    for (std::size_t index = 0; index != example.messages.size(); ++index) {
        const std::string_view message = records[index].parsedBody().message;
        const bool isLong = message.size() > kMaxLineBytes;
        example.messages[index].assign(
            message.substr(0, isLong ? wholeCharacters(message, kMaxLineBytes) : message.size()));
        example.messages[index] += isLong ? "..." : "";
    }
}

}  // namespace vorellog

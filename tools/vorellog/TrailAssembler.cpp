#include "vorellog/TrailAssembler.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace vorellog {

namespace {

// The memory of delivered trails is reused for later trails, up to these limits. Allocating memory for each trail would
// take longer than all other work on the trail.
constexpr std::size_t kMaxSpareTrails = 64;
constexpr std::size_t kMaxSpareRecords = 256;
constexpr std::size_t kMaxSpareTextBytes = 4096;

/// The index of the first record of `trail` whose message has the same form as the message of `record`; nullopt if
/// there is none.
std::optional<std::size_t> findSameForm(const Trail& trail, const Record& record) {
    const auto& records = trail.records;
    const std::string_view message = record.parsedBody().message;
    const auto found = std::find_if(records.begin(), records.end(), [&](const Record& each) {
        return haveSameForm(each.parsedBody().message, message);
    });
    return found == records.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - records.begin()));
}

/// Whether a record comes too late to belong to a trail whose last record has the time `lastMs`.
bool isLate(LocalMs timeMs, LocalMs lastMs, TrailStep step) noexcept {
    const bool isFailure = step == TrailStep::Message || step == TrailStep::SystemText;
    return timeMs - lastMs > TrailAssembler::kTrailGapMs ||
           (isFailure && timeMs / kSecond - lastMs / kSecond > TrailAssembler::kFailureGapSeconds);
}

/// If the trail already has a record with the same form as `record`, a second failure may have begun after the earlier
/// record. Returns the index of the last record after the earlier record that has the step TrailStep::Message; nullopt
/// if there is none.
std::optional<std::size_t> findLaterFailure(const Trail& trail, const Record& record) {
    const std::optional<std::size_t> before = findSameForm(trail, record);
    if (!before) {
        return std::nullopt;
    }
    for (std::size_t index = trail.records.size() - 1; index > *before; --index) {
        if (stepOf(trail.records[index]) == TrailStep::Message) {
            return index;
        }
    }
    return std::nullopt;
}

}  // namespace

std::string_view nameOf(TrailEnd end) noexcept {
    switch (end) {
    case TrailEnd::Caught: return "caught";
    case TrailEnd::Suppressed: return "suppressed";
    default: return "open";
    }
}

void TrailAssembler::add(const Record& record) {
    // A header in the middle of a line may be part of a message, so the step and the time of this record are ignored.
    const bool isForgeable = record.damage() == Damage::MidLine;
    const TrailStep step = isForgeable ? TrailStep::None : stepOf(record);
    const LogHeader* const header = isForgeable ? nullptr : record.header();
    ++m_number;
    if (header) {
        m_nowMs = std::max(m_nowMs, header->timeMs);
    }
    if (!header || step == TrailStep::None || step == TrailStep::SevereCaught) {
        addSingle(record, step != TrailStep::None);
    } else {
        addToTrail(record, *header, step);
    }
    deliverReady();
}

void TrailAssembler::addSingle(const Record& record, bool isException) {
    const auto position = addWaiting(m_waiting.end());
    position->trail.isException = isException;
    position->trail.end = TrailEnd::Caught;
    append(position, record);
}

void TrailAssembler::addToTrail(const Record& record, const LogHeader& header, TrailStep step) {
    const Writer writer(record.host(), header.processId, header.threadId);
    auto position = openTrail(writer);
    if (position != m_waiting.end() && isLate(header.timeMs, position->lastMs, step)) {
        close(position, TrailEnd::Open);
        position = m_waiting.end();
    }
    if (position != m_waiting.end()) {
        const bool startsAnother = step == TrailStep::SevereThrown || step == TrailStep::TestFailed ||
                                   (step == TrailStep::Message && findSameForm(position->trail, record));
        if (startsAnother || position->trail.records.size() == kMaxRecords) {
            close(position, TrailEnd::Open);
            position = m_waiting.end();
        } else if (step == TrailStep::Rethrown || step == TrailStep::Caught) {
            if (const auto later = findLaterFailure(position->trail, record)) {
                position = splitBefore(position, *later);
            }
        }
    }
    if (position == m_waiting.end()) {
        position = begin(writer);
    }
    append(position, record);
    if (step == TrailStep::Caught) {
        close(position, TrailEnd::Caught);
    } else if (record.damage() == Damage::Cut) {
        close(position, TrailEnd::Open);  // the thread was terminated
    }
}

TrailAssembler::Position TrailAssembler::openTrail(const Writer& writer) {
    const auto found = m_open.find(writer);
    return found == m_open.end() ? m_waiting.end() : found->second;
}

TrailAssembler::Position TrailAssembler::begin(const Writer& writer) {
    const auto position = addWaiting(m_waiting.end());
    position->writer = writer;
    position->trail.isException = true;
    position->isOpen = true;
    m_open[writer] = position;
    return position;
}

void TrailAssembler::append(Position position, const Record& record) {
    auto& records = position->trail.records;
    if (m_spareRecords.empty()) {
        records.push_back(record);
    } else {
        records.push_back(std::move(m_spareRecords.back()));
        m_spareRecords.pop_back();
        records.back() = record;
    }
    position->numbers.push_back(m_number);
    position->lastMs = record.header() ? record.header()->timeMs : m_nowMs;
    ++m_recordsWaiting;
    m_bytesWaiting += record.text().size();
}

TrailAssembler::Position TrailAssembler::splitBefore(Position position, std::size_t index) {
    auto& records = position->trail.records;
    auto& numbers = position->numbers;
    const auto offset = static_cast<std::ptrdiff_t>(index);
    // The later trail is delivered after all trails that began before it.
    auto next = position;
    do {
        ++next;
    } while (next != m_waiting.end() && next->numbers.front() < numbers[index]);

    const auto later = addWaiting(next);
    later->writer = position->writer;
    later->trail.isException = true;
    later->trail.records.assign(std::make_move_iterator(records.begin() + offset),
                                std::make_move_iterator(records.end()));
    later->numbers.assign(numbers.begin() + offset, numbers.end());
    later->lastMs = position->lastMs;
    records.resize(index);
    numbers.resize(index);
    close(position, TrailEnd::Open);
    later->isOpen = true;
    m_open[later->writer] = later;
    return later;
}

void TrailAssembler::close(Position position, TrailEnd end) {
    Trail& trail = position->trail;
    const bool suppressed = end == TrailEnd::Open && stepOf(trail.records.back()) == TrailStep::Suppressed;
    trail.end = suppressed ? TrailEnd::Suppressed : end;
    position->isOpen = false;
    m_open.erase(position->writer);
}

void TrailAssembler::deliverReady() {
    while (!m_waiting.empty()) {
        const Waiting& front = m_waiting.front();
        if (front.isOpen && m_nowMs - front.lastMs <= kTrailGapMs && m_recordsWaiting <= kMaxWaitingRecords &&
            m_bytesWaiting <= kMaxWaitingBytes) {
            return;
        }
        deliverFront();
    }
}

void TrailAssembler::flush() {
    while (!m_waiting.empty()) {
        deliverFront();
    }
}

void TrailAssembler::deliverFront() {
    if (m_waiting.front().isOpen) {
        close(m_waiting.begin(), TrailEnd::Open);
    }
    m_spare.splice(m_spare.begin(), m_waiting, m_waiting.begin());
    Waiting& front = m_spare.front();
    m_recordsWaiting -= front.trail.records.size();
    for (const Record& record : front.trail.records) {
        m_bytesWaiting -= record.text().size();
    }
    m_deliver(front.trail);
    for (Record& record : front.trail.records) {
        if (m_spareRecords.size() < kMaxSpareRecords && record.text().size() <= kMaxSpareTextBytes) {
            m_spareRecords.push_back(std::move(record));
        }
    }
    front.trail.records.clear();
    front.numbers.clear();
    if (m_spare.size() > kMaxSpareTrails) {
        m_spare.pop_back();
    }
}

/// Adds an empty trail before the trail at `before`.
TrailAssembler::Position TrailAssembler::addWaiting(Position before) {
    if (m_spare.empty()) {
        return m_waiting.emplace(before);
    }
    const auto position = m_spare.begin();
    m_waiting.splice(before, m_spare, position);
    position->isOpen = false;
    position->trail.isException = false;
    position->trail.end = TrailEnd::Open;
    return position;
}

}  // namespace vorellog

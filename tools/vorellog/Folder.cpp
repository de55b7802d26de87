#include "vorellog/Folder.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace vorellog {

namespace {

/// The record of `trail` with a message of the same form as `record`'s.
std::optional<std::size_t> findSameForm(const Trail& trail, const Record& record) {
    const auto& records = trail.records;
    const std::string_view message = record.parsedBody().message;
    const auto found = std::find_if(records.begin(), records.end(), [&](const Record& each) {
        return haveSameForm(each.parsedBody().message, message);
    });
    return found == records.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - records.begin()));
}

/// Where the failure began that passes a place for the second time: the last message behind the first time.
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

void Folder::add(const Record& record) {
    // What a message may have forged has no step, and its time does not count.
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
    deliverWhatCan();
}

void Folder::addSingle(const Record& record, bool isException) {
    const auto place = m_waiting.emplace(m_waiting.end());
    place->trail.isException = isException;
    place->trail.end = TrailEnd::Caught;
    append(place, record);
}

void Folder::addToTrail(const Record& record, const LogHeader& header, TrailStep step) {
    const Writer writer(record.host(), header.processId, header.threadId);
    auto place = openTrail(writer);
    if (place != m_waiting.end() && header.timeMs - place->lastMs > kTrailGapMs) {
        close(place, TrailEnd::Open);
        place = m_waiting.end();
    }
    if (place != m_waiting.end()) {
        const bool startsAnother = step == TrailStep::SevereThrown || step == TrailStep::TestFailed ||
                                   (step == TrailStep::Message && findSameForm(place->trail, record));
        if (startsAnother || place->trail.records.size() == kMostRecords) {
            close(place, TrailEnd::Open);
            place = m_waiting.end();
        } else if (step == TrailStep::Rethrown || step == TrailStep::Caught) {
            if (const auto later = findLaterFailure(place->trail, record)) {
                place = splitBefore(place, *later);
            }
        }
    }
    if (place == m_waiting.end()) {
        place = begin(writer);
    }
    append(place, record);
    if (step == TrailStep::Caught) {
        close(place, TrailEnd::Caught);
    } else if (record.damage() == Damage::Cut) {
        close(place, TrailEnd::Open);  // its thread has been ended
    }
}

Folder::Place Folder::openTrail(const Writer& writer) {
    const auto found = m_open.find(writer);
    return found == m_open.end() ? m_waiting.end() : found->second;
}

Folder::Place Folder::begin(const Writer& writer) {
    const auto place = m_waiting.emplace(m_waiting.end());
    place->writer = writer;
    place->trail.isException = true;
    place->isOpen = true;
    m_open[writer] = place;
    return place;
}

void Folder::append(Place place, const Record& record) {
    place->trail.records.push_back(record);
    place->numbers.push_back(m_number);
    place->lastMs = record.header() ? record.header()->timeMs : m_nowMs;
    ++m_recordsWaiting;
    m_bytesWaiting += record.text().size();
}

Folder::Place Folder::splitBefore(Place place, std::size_t index) {
    auto& records = place->trail.records;
    auto& numbers = place->numbers;
    const auto offset = static_cast<std::ptrdiff_t>(index);
    // It has its turn after all that began before it.
    auto next = place;
    do {
        ++next;
    } while (next != m_waiting.end() && next->numbers.front() < numbers[index]);

    const auto later = m_waiting.emplace(next);
    later->writer = place->writer;
    later->trail.isException = true;
    later->trail.records.assign(std::make_move_iterator(records.begin() + offset),
                                std::make_move_iterator(records.end()));
    later->numbers.assign(numbers.begin() + offset, numbers.end());
    later->lastMs = place->lastMs;
    records.resize(index);
    numbers.resize(index);
    close(place, TrailEnd::Open);
    later->isOpen = true;
    m_open[later->writer] = later;
    return later;
}

void Folder::close(Place place, TrailEnd end) {
    Trail& trail = place->trail;
    const bool suppressed = end == TrailEnd::Open && stepOf(trail.records.back()) == TrailStep::Suppressed;
    trail.end = suppressed ? TrailEnd::Suppressed : end;
    place->isOpen = false;
    m_open.erase(place->writer);
}

void Folder::deliverWhatCan() {
    while (!m_waiting.empty()) {
        const Waiting& front = m_waiting.front();
        if (front.isOpen && m_nowMs - front.lastMs <= kTrailGapMs && m_recordsWaiting <= kMostWaiting &&
            m_bytesWaiting <= kMostBytesWaiting) {
            return;
        }
        deliverFront();
    }
}

void Folder::flush() {
    while (!m_waiting.empty()) {
        deliverFront();
    }
}

void Folder::deliverFront() {
    if (m_waiting.front().isOpen) {
        close(m_waiting.begin(), TrailEnd::Open);
    }
    const Waiting front = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_recordsWaiting -= front.trail.records.size();
    for (const Record& record : front.trail.records) {
        m_bytesWaiting -= record.text().size();
    }
    m_deliver(front.trail);
}

}  // namespace vorellog

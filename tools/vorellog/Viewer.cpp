#include "vorellog/Viewer.h"

#include <algorithm>
#include <utility>

namespace vorellog {

namespace {

constexpr std::size_t kOutputBytes = std::size_t{1} << 16;

std::unique_ptr<Printer> printerFor(const Settings& settings, bool withColours) {
    if (settings.json) {
        return std::make_unique<JsonPrinter>();
    }
    return std::make_unique<TextPrinter>(withColours);
}

}  // namespace

Viewer::Viewer(const Settings& settings, bool withColours, std::function<void(std::string_view)> write)
    : m_filter(settings.filter),
      m_folds(settings.fold),
      m_summarises(settings.summary),
      m_json(settings.json),
      m_maxEntries(settings.maxEntries),
      m_printer(printerFor(settings, withColours)),
      m_write(std::move(write)),
      m_splitter([this](const Line& line) { m_reader.add(line); }),
      m_reader([this](const Record& record) { process(record); }),
      m_assembler([this](const Trail& trail) { process(trail); }) {}

void Viewer::bytes(std::string_view bytes) {
    m_hasNewInput = true;
    m_splitter.add(bytes);
}

void Viewer::endOfFile() {
    m_splitter.endOfFile();
    m_reader.flush();
}

void Viewer::showPending(LocalMs nowMs) {
    if (std::exchange(m_hasNewInput, false)) {
        m_lastInputMs = nowMs;
    } else {
        m_reader.flush();
        if (nowMs - m_lastInputMs > TrailAssembler::kTrailGapMs) {
            m_assembler.flush();
        }
    }
    writeOut();
}

void Viewer::finish() {
    endOfFile();
    m_assembler.flush();
    if (m_summarises) {
        m_out += m_json ? m_summary.json() : m_summary.text();
    }
    writeOut();
}

void Viewer::process(const Record& record) {
    if (m_folds) {
        m_assembler.add(record);
    } else if (isWanted(record)) {
        show(record);
    }
}

/// Shows the whole entry if one of its records matches.
void Viewer::process(const Trail& trail) {
    const auto& records = trail.records;
    if (std::none_of(records.begin(), records.end(), [this](const Record& record) { return isWanted(record); })) {
        return;
    }
    if (trail.isException) {
        show(trail);
    } else {
        show(records.front());
    }
}

bool Viewer::isWanted(const Record& record) {
    const bool wanted = m_filter.matches(record);
    if (!wanted && !record.header() && m_filter.needsHeader()) {
        ++m_undecided;
    }
    return wanted;
}

template <class Entry>
void Viewer::show(const Entry& entry) {
    if (hasEnough()) {
        return;
    }
    ++m_entries;
    if constexpr (std::is_same_v<Entry, Record>) {
        if (m_summarises) {
            m_summary.add(entry);
            return;
        }
    }
    m_printer->print(entry, m_out);
    if (m_out.size() >= kOutputBytes) {
        writeOut();
    }
}

void Viewer::writeOut() {
    if (!m_out.empty()) {
        m_write(m_out);
        m_out.clear();
    }
}

}  // namespace vorellog

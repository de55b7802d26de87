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
      m_sumsUp(settings.summary),
      m_json(settings.json),
      m_mostEntries(settings.mostEntries),
      m_printer(printerFor(settings, withColours)),
      m_write(std::move(write)),
      m_splitter([this](const Line& line) { m_reader.add(line); }),
      m_reader([this](const Record& record) { take(record); }),
      m_folder([this](const Trail& trail) { take(trail); }) {}

void Viewer::bytes(std::string_view bytes) {
    m_hasNews = true;
    m_splitter.add(bytes);
}

void Viewer::endOfFile() {
    m_splitter.endOfFile();
    m_reader.flush();
}

void Viewer::showWhatIsRead(LocalMs nowMs) {
    if (std::exchange(m_hasNews, false)) {
        m_lastNewsMs = nowMs;
    } else {
        m_reader.flush();
        if (nowMs - m_lastNewsMs > Folder::kTrailGapMs) {
            m_folder.flush();
        }
    }
    writeOut();
}

void Viewer::finish() {
    endOfFile();
    m_folder.flush();
    if (m_sumsUp) {
        m_out += m_json ? m_summary.json() : m_summary.text();
    }
    writeOut();
}

void Viewer::take(const Record& record) {
    if (m_folds) {
        m_folder.add(record);
    } else if (isWanted(record)) {
        show(record);
    }
}

/// An entry is shown whole when one of its records is wanted.
void Viewer::take(const Trail& trail) {
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
        ++m_unjudged;
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
        if (m_sumsUp) {
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

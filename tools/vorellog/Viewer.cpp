#include "vorellog/Viewer.h"

#include <algorithm>
#include <utility>

namespace vorellog {

namespace {

constexpr std::size_t kOutputBytes = std::size_t{1} << 16;
constexpr LocalMs kDrawMs = 1000;  // minimum time between two drawings of the summary
constexpr std::string_view kClearScreen = "\x1B[H\x1B[2J\x1B[3J";
constexpr std::string_view kContextGap = "--\n";

/// The first `count` lines of `text`.
std::string_view firstLines(std::string_view text, std::size_t count) noexcept {
    std::size_t end = 0;
    for (; count != 0 && end != text.size(); --count) {
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
    }
    return text.substr(0, end);
}

std::unique_ptr<Printer> printerFor(const Settings& settings, bool withColours) {
    if (settings.json) {
        return std::make_unique<JsonPrinter>();
    }
    return std::make_unique<TextPrinter>(withColours);
}

}  // namespace

Viewer::Viewer(const Settings& settings, bool withColours, std::function<void(std::string_view)> write,
               std::size_t screenRows)
    : m_filter(settings.filter),
      m_follows(settings.follow),
      m_folds(settings.fold),
      m_summarises(settings.summary),
      m_json(settings.json),
      m_top(settings.top),
      m_maxEntries(settings.maxEntries),
      m_tail(settings.tail),
      m_context(settings.context),
      m_screenRows(screenRows),
      m_printer(printerFor(settings, withColours)),
      m_write(std::move(write)),
      m_splitter([this](const Line& line) { m_reader.add(line); }),
      m_reader([this](const Record& record) { process(record); }),
      m_assembler([this](const Trail& trail) { process(trail); }),
      m_report(settings.report.empty() ? nullptr : std::make_unique<Report>()),
      m_before(settings.context),
      m_readsEnd(settings.tail.has_value()) {}

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
        if (m_follows) {
            releaseTail();
        }
    }
    if (m_summarises && m_follows && m_screenRows != 0 && !m_json) {
        drawSummary(nowMs);
    }
    writeOut();
}

void Viewer::finish() {
    endOfFile();
    m_assembler.flush();
    releaseTail();
    if (m_summarises) {
        m_out += m_json ? m_summary.json(m_top) : m_summary.text(m_top);
    }
    writeOut();
}

std::wstring Viewer::nothingFoundText() const {
    if (hasFound() || m_read.records == 0 || m_readsEnd) {
        return {};
    }
    const std::string first = isoText(m_read.firstMs, m_read.firstHasMilliseconds, ' ');
    const std::string last = isoText(m_read.lastMs, m_read.lastHasMilliseconds, ' ');
    return L"nothing found; the log has records from " + std::wstring(first.begin(), first.end()) + L" to " +
           std::wstring(last.begin(), last.end());
}

void Viewer::process(const Record& record) {
    if (record.header()) {
        m_read.add(*record.header());
    }
    if (m_folds) {
        m_assembler.add(record);
    } else {
        offer(record, isWanted({&record, 1}));
    }
}

void Viewer::process(const Trail& trail) {
    const bool wanted = isWanted(trail.records);
    if (trail.isException) {
        offer(trail, wanted);
    } else {
        offer(trail.records.front(), wanted);
    }
}

bool Viewer::isWanted(std::span<const Record> records) {
    const bool wanted = m_filter.matches(records);
    if (!wanted && !records.front().header() && m_filter.needsHeader()) {
        ++m_undecided;
    }
    return wanted;
}

/// Shows a wanted entry, or adds it to the report or the summary, until the maximum number of entries is reached. An
/// entry that is not wanted is shown if it is in the context of a wanted entry.
template <class Entry>
void Viewer::offer(const Entry& entry, bool wanted) {
    if (wanted && hasMaxEntries()) {
        m_contextAfter = 0;
    } else if (wanted) {
        printContextBefore();
        ++m_entries;
        m_contextAfter = m_context;
        if (m_report) {
            m_report->add(entry);
        } else if (m_summarises) {
            m_summary.add(entry);
            m_isDrawn = false;
        } else {
            print(entry);
        }
    } else if (m_contextAfter != 0) {
        --m_contextAfter;
        print(entry);
    } else if (m_context != 0) {
        m_before.keep(entry);
    }
}

template <class Entry>
void Viewer::print(const Entry& entry) {
    if (m_tail) {
        m_last.emplace_back();
        m_printer->print(entry, m_last.back());
        if (m_last.size() > *m_tail) {
            m_last.pop_front();
        }
        return;
    }
    m_printer->print(entry, m_out);
    if (m_out.size() >= kOutputBytes) {
        writeOut();
    }
}

void Viewer::printContextBefore() {
    if (m_before.hasLost() && m_entries != 0) {
        m_out += kContextGap;
    }
    m_before.drain([this](const Trail& each) {
        if (each.isException) {
            print(each);
        } else {
            print(each.records.front());
        }
    });
}

/// Shows the last entries. Later entries are shown when they arrive.
void Viewer::releaseTail() {
    for (const std::string& each : m_last) {
        m_out += each;
    }
    m_last.clear();
    m_tail.reset();
}

void Viewer::drawSummary(LocalMs nowMs) {
    if (m_isDrawn || (m_drawnMs && nowMs - *m_drawnMs < kDrawMs)) {
        return;
    }
    m_drawnMs = nowMs;
    m_isDrawn = true;
    m_out += kClearScreen;
    m_out += firstLines(m_summary.text(m_top), m_screenRows - 1);
}

void Viewer::writeOut() {
    if (!m_out.empty()) {
        m_write(m_out);
        m_out.clear();
    }
}

}  // namespace vorellog

/// \file
/// Converts the bytes of a log to output: splits the bytes into lines, combines the lines into records and trails, and
/// prints the records and trails that match the filter, or adds them to the summary or the report.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "vorellog/ContextBuffer.h"
#include "vorellog/Follower.h"
#include "vorellog/LineSplitter.h"
#include "vorellog/Printer.h"
#include "vorellog/RecordFilter.h"
#include "vorellog/RecordReader.h"
#include "vorellog/Report.h"
#include "vorellog/Settings.h"
#include "vorellog/Summary.h"
#include "vorellog/TrailAssembler.h"

namespace vorellog {

class Viewer : public LogSink {
public:
    /// `write` receives the output in pieces of whole lines. If `screenRows` is not 0, the output is a console with
    /// that many rows, and the summary of a followed log is redrawn after a change, at most once per second. A summary
    /// in JSON is not redrawn.
    Viewer(const Settings& settings, bool withColours, std::function<void(std::string_view)> write,
           std::size_t screenRows = 0);

    void bytes(std::string_view bytes) override;
    void endOfFile() override;
    void gap() override { ++m_gaps; }

    /// Shows the records that have been read. `nowMs` is the time of a monotonic clock. A record that may still get
    /// further lines is shown by the first call without new bytes since the previous call. If a log is followed, this
    /// call also shows the entries that --tail selects. An open trail is shown when there were no new bytes for longer
    /// than TrailAssembler::kTrailGapMs.
    void showPending(LocalMs nowMs);

    /// The time of the last showPending() call that had new bytes to show. The first call counts as such a call.
    [[nodiscard]] LocalMs lastInputMs() const noexcept { return m_lastInputMs; }

    /// Shows the remaining entries or the summary.
    void finish();

    /// The report; null if Settings::report is empty.
    [[nodiscard]] const Report* report() const noexcept { return m_report.get(); }

    /// Whether the last line is incomplete.
    [[nodiscard]] bool isWithinLine() const noexcept { return m_splitter.isWithinLine(); }

    /// Whether --max-count entries and the context after them have been shown.
    [[nodiscard]] bool hasEnough() const noexcept { return hasMaxEntries() && m_contextAfter == 0; }

    /// Number of entries that match the filter, at most the number given by --max-count. With --tail, only the last of
    /// these entries are shown.
    [[nodiscard]] unsigned long long entries() const noexcept { return m_entries; }

    /// Whether any entry matches the filter.
    [[nodiscard]] bool hasFound() const noexcept { return m_entries != 0; }

    /// A note for a user whose filter selected nothing: "nothing found; the log has records from … to …". Empty if an
    /// entry was found, if no record has a header, or if --tail is given, because then only the end of the log may have
    /// been read.
    [[nodiscard]] std::wstring nothingFoundText() const;

    /// Number of gaps that the Follower reported.
    [[nodiscard]] unsigned int gaps() const noexcept { return m_gaps; }

    /// If the filter needs a header: the number of entries that were not selected and begin with a record without a
    /// header. Otherwise 0.
    [[nodiscard]] unsigned long long undecided() const noexcept { return m_undecided; }

private:
    void process(const Record& record);
    void process(const Trail& trail);
    bool isWanted(std::span<const Record> records);
    template <class Entry>
    void offer(const Entry& entry, bool wanted);
    template <class Entry>
    void print(const Entry& entry);
    void printContextBefore();
    void releaseTail();
    void drawSummary(LocalMs nowMs);
    [[nodiscard]] bool hasMaxEntries() const noexcept { return m_maxEntries && m_entries >= *m_maxEntries; }
    void writeOut();

    RecordFilter m_filter;
    bool m_follows;
    bool m_folds;
    bool m_summarises;
    bool m_json;
    std::optional<std::size_t> m_top;
    std::optional<unsigned long long> m_maxEntries;
    std::optional<std::size_t> m_tail;  ///< number of last entries to show; nullopt after they are shown
    std::size_t m_context;
    std::size_t m_screenRows;
    std::unique_ptr<Printer> m_printer;
    std::function<void(std::string_view)> m_write;
    LineSplitter m_splitter;
    RecordReader m_reader;
    TrailAssembler m_assembler;
    Summary m_summary;
    std::unique_ptr<Report> m_report;
    ContextBuffer m_before;
    std::size_t m_contextAfter = 0;    ///< number of entries still to be shown after a matching entry
    std::deque<std::string> m_last;    ///< the output of the last entries, if m_tail is set
    std::optional<LocalMs> m_drawnMs;  ///< when the summary was shown last
    bool m_isDrawn = true;             ///< whether the shown summary has all entries
    std::string m_out;
    bool m_hasNewInput = true;  ///< bytes were received since the last showPending()
    LocalMs m_lastInputMs = 0;
    unsigned long long m_entries = 0;
    Tally m_read;     ///< the records that were read
    bool m_readsEnd;  ///< whether --tail was given
    unsigned long long m_undecided = 0;
    unsigned int m_gaps = 0;
};

}  // namespace vorellog

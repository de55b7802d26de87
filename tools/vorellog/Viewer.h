/// \file
/// From the bytes of a log to what is shown: lines, records, perhaps trails, those that are wanted, and their form.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "vorellog/Filter.h"
#include "vorellog/Folder.h"
#include "vorellog/Follower.h"
#include "vorellog/LineSplitter.h"
#include "vorellog/Printer.h"
#include "vorellog/RecordReader.h"
#include "vorellog/Settings.h"
#include "vorellog/Summary.h"

namespace vorellog {

class Viewer : public LogSink {
public:
    /// `write` gets the output in large pieces, each of which ends with a line.
    Viewer(const Settings& settings, bool withColours, std::function<void(std::string_view)> write);

    void bytes(std::string_view bytes) override;
    void endOfFile() override;
    void gap() override { ++m_gaps; }

    /// Shows what has been read up to `nowMs`, on a clock that only goes forward. A record that others might go on with
    /// is held back until there was nothing new between two calls, an open trail until there was nothing new for longer
    /// than Folder::kTrailGapMs.
    void showWhatIsRead(LocalMs nowMs);

    /// When the call before found something new, or the first call was.
    [[nodiscard]] LocalMs lastNewsMs() const noexcept { return m_lastNewsMs; }

    /// Shows the rest, or the summary.
    void finish();

    /// Whether the last line has no end so far.
    [[nodiscard]] bool isWithinLine() const noexcept { return m_splitter.isWithinLine(); }

    /// Whether as many entries were shown as are wanted.
    [[nodiscard]] bool hasEnough() const noexcept { return m_mostEntries && m_entries >= *m_mostEntries; }

    /// Whether there was anything to show, or to count.
    [[nodiscard]] bool hasFound() const noexcept { return m_entries != 0; }

    /// How often what was being read vanished.
    [[nodiscard]] unsigned int gaps() const noexcept { return m_gaps; }

    /// Damaged records that the filter could not look at, and that were not shown.
    [[nodiscard]] unsigned long long unjudged() const noexcept { return m_unjudged; }

private:
    void take(const Record& record);
    void take(const Trail& trail);
    bool isWanted(const Record& record);
    template <class Entry>
    void show(const Entry& entry);
    void writeOut();

    Filter m_filter;
    bool m_folds;
    bool m_sumsUp;
    bool m_json;
    std::optional<unsigned long long> m_mostEntries;
    std::unique_ptr<Printer> m_printer;
    std::function<void(std::string_view)> m_write;
    LineSplitter m_splitter;
    RecordReader m_reader;
    Folder m_folder;
    Summary m_summary;
    std::string m_out;
    bool m_hasNews = true;  ///< bytes have come since the last time that all was shown
    LocalMs m_lastNewsMs = 0;
    unsigned long long m_entries = 0;
    unsigned long long m_unjudged = 0;
    unsigned int m_gaps = 0;
};

}  // namespace vorellog

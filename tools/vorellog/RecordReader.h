/// \file
/// Combines lines into records. No input is dropped: a line that belongs to no record is delivered as a damaged record.
///
/// A message may contain line breaks, and the log does not mark them. So a line without a header belongs to the
/// previous record. Such a line is damaged only if it cannot belong to a record: at the start of a log, after a cut
/// record, after another damaged line without a header, after a record that the line would make too long, and after the
/// previous record was delivered by flush().
///
/// Only a header at the start of a line is reliable. A header in the middle of a line may be part of a message, so its
/// record is always reported as Damage::MidLine, even if it has other damage.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "vorellog/LineSplitter.h"
#include "vorellog/Record.h"

namespace vorellog {

class RecordReader {
public:
    /// If a record would reach this size with its next line, it is delivered without this line. This line and the lines
    /// after it, up to the next header, are delivered as damaged records. A very long line is added in pieces (see
    /// LineSplitter.h), so a record may end within such a line.
    static constexpr std::size_t kMaxRecordBytes = std::size_t{4} << 20;

    /// The record is valid only during the call of `deliver`.
    explicit RecordReader(std::function<void(const Record&)> deliver) : m_deliver(std::move(deliver)) {}

    void add(const Line& line);

    /// Delivers the pending record. Call this at the end of the log, or when no line has followed for a while.
    void flush();

private:
    void start(std::string_view text, const std::optional<LogHeader>& header, Damage damage);
    void addLine(std::string_view line);
    void extendLine(std::string_view piece);

    std::function<void(const Record&)> m_deliver;
    Record m_record;
    bool m_isPending = false;  ///< m_record is not yet delivered
};

}  // namespace vorellog

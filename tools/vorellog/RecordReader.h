/// \file
/// Makes records of lines. Nothing that comes in is left out: what is no record is delivered as a damaged one.
///
/// A message may have line breaks, and the log does not mark them. So a line without a header belongs to the record
/// before it. Only where there is none that it could belong to, it is damaged: at the start of a log, and after a
/// record that was cut.
///
/// Only a header at the start of a line is a writer's. One in the middle of a line may be part of a message, so its
/// record is damaged (Damage::MidLine) whatever else is wrong with it.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "vorellog/LineSplitter.h"
#include "vorellog/Record.h"

namespace vorellog {

class RecordReader {
public:
    /// A record that has grown to this size is delivered, and further lines do not belong to it any more.
    static constexpr std::size_t kMostRecordBytes = std::size_t{4} << 20;

    /// `deliver` may look at the record while it is called.
    explicit RecordReader(std::function<void(const Record&)> deliver) : m_deliver(std::move(deliver)) {}

    void add(const Line& line);

    /// Delivers the record that might have gone on: nothing follows it, or nothing has for a while.
    void flush();

private:
    void start(std::string_view text, const std::optional<LogHeader>& header, Damage damage);
    void addLine(std::string_view line);
    void extendLine(std::string_view piece);

    std::function<void(const Record&)> m_deliver;
    Record m_record;
    bool m_isPending = false;  ///< the record has not been delivered yet
};

}  // namespace vorellog

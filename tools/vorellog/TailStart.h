/// \file
/// Finds where the last entries of a log begin. The search starts near the end of the log. So its time does not depend
/// on the size of the log, unless only few entries match the filter.
#pragma once

#include <optional>

#include "vorellog/LogFiles.h"
#include "vorellog/Settings.h"

namespace vorellog {

struct TailStart {
    FileId log;
    unsigned long long offset = 0;  ///< the offset of the header of a record
};

/// The start of a part at the end of the log that contains at least the last `settings.tail` entries. Reading this part
/// takes less time than reading a long log from its start. Returns nullopt if `settings.tail` is not given, if the log
/// does not exist, or if the log must be read from its start, because it is short, has fewer entries, or is not plain
/// UTF-8.
///
/// With `settings.fold`, a trail that began before the part is incomplete, and must not be one of the last
/// `settings.tail` entries. So the part contains at least 1,000 additional entries before them. This is enough, because
/// there is at most one incomplete trail for each thread.
std::optional<TailStart> findTailStart(LogFiles& files, const Settings& settings);

}  // namespace vorellog

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

/// The start of a part of the log that contains the last `settings.tail` entries and is not much longer than these
/// entries. Returns nullopt if `settings.tail` is not given, if the log does not exist, or if the log must be read from
/// its start, because it is short, has fewer entries, or is not plain UTF-8.
///
/// With `settings.fold`, a trail that began before the part is incomplete. There is at most one such trail for each
/// thread. So the part contains many additional entries before the last `settings.tail` entries, and the incomplete
/// trails are among the additional entries.
std::optional<TailStart> findTailStart(LogFiles& files, const Settings& settings);

}  // namespace vorellog

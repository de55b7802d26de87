/// \file
/// Finds where the last entries of a log begin. The search starts near the end of the log, so its time does not depend
/// on the size of the log.
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
/// entries. Returns nullopt if the log must be read from its start, because it has fewer entries or is not plain UTF-8,
/// or if the log does not exist.
///
/// With `settings.fold`, a trail that began before the part is incomplete. There is at most one such trail for each
/// thread. So the part contains many additional entries before the last `settings.tail` entries, and the incomplete
/// trails are among the additional entries.
std::optional<TailStart> findTailStart(LogFiles& files, const Settings& settings);

}  // namespace vorellog

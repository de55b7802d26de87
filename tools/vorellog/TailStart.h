/// \file
/// Finds where the last entries of a log begin. The search starts near the end of the log. So its time does not depend
/// on the size of the log, unless only few entries match the filter or only few lines begin with a header.
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
/// takes less time than reading a long log from its start. The function tries parts of 256 KiB, 1 MiB, 4 MiB and so on,
/// as long as they are shorter than the log. A part must have a header in its first 256 KiB, and enough entries.
/// Returns nullopt if `settings.tail` is not given, if the log does not exist, if it is compressed or in UTF-16, or if
/// no part is suitable. In the last two cases, the log must be read from its start.
///
/// With `settings.fold`, a trail that began before the part is incomplete, and should not be one of the last
/// `settings.tail` entries. So the part contains at least 1,000 additional entries before them. An incomplete trail is
/// one of the last entries only if its thread wrote no record of the trail while the additional entries were written.
///
/// \throws FileBusy; tools::Failure if the log cannot be opened or read.
std::optional<TailStart> findTailStart(LogFiles& files, const Settings& settings);

}  // namespace vorellog

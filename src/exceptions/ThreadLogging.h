/// \file
/// The fast answer for every log line: whether any thread is silenced at all.
#pragma once

#include <atomic>

namespace vorel {

/// True while the table of silenced threads holds at least one. Read outside the table's lock: during a change a line
/// may at worst be written or skipped once.
inline constinit std::atomic<bool> AnyThreadLoggingDisabled{false};

}  // namespace vorel

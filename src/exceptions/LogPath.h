/// \file
/// The path of the error log, shared between threads. Writers hold the log-settings lock; readers do not lock.
///
/// A reader that copies the path during a change could get parts of two paths. A sequence counter detects this, because
/// it is odd during a change and has a new value afterwards. The reader then copies again (H.-J. Boehm, "Can Seqlocks
/// Get Along With Programming Language Memory Models?", 2012).
#pragma once

#include <atomic>

#include "exceptions/LogFile.h"

namespace vorel::detail {

inline constexpr char kDefaultLogPath[] = "C:\\TalvenorError.txt";

/// Incremented before and after each change of the path.
inline constinit std::atomic<unsigned int> LogPathVersion{0};

struct LogPath {
    /// Sets the location to the first 1023 bytes of `path`; null clears it. `path` may point into the location. The
    /// caller holds the log-settings lock.
    static void write(const char* path) noexcept;

    /// Copies the path. The copy is empty if no path is set. The copy is consistent unless a writer was killed during a
    /// change. Does not lock.
    static void read(char (&path)[kLogPathBytes]) noexcept;

    /// Like `read`, but an empty path becomes the default path.
    static void readOrDefault(char (&path)[kLogPathBytes]) noexcept;
};

}  // namespace vorel::detail

/// \file
/// The path of the error log, shared between threads. Writers hold the log-settings lock; readers do not lock.
///
/// A reader that copies the path during a change could get parts of two paths. The reader detects this with a sequence
/// counter, which is odd during a change and has a new value after the change. In this case, the reader copies the path
/// again (H.-J. Boehm, "Can Seqlocks Get Along With Programming Language Memory Models?", 2012).
#pragma once

#include <atomic>

#include "exceptions/LogFile.h"

namespace vorel::detail {

inline constexpr char kDefaultLogPath[] = "C:\\TalvenorError.txt";

/// Made odd before each change of the path, and incremented to an even value after it.
inline constinit std::atomic<unsigned int> LogPathVersion{0};

struct LogPath {
    /// Sets `Exception::ErrorLogLocation` to the first 1023 bytes of `path`; null clears it. `path` may point into
    /// `ErrorLogLocation`. The caller holds the log-settings lock.
    static void write(const char* path) noexcept;

    /// Copies the path. The copy is empty if no path is set. If all attempts fail, for example because a writer was
    /// killed during a change and left the counter odd, the copy may contain parts of two paths. Does not lock.
    static void read(char (&path)[kLogPathBytes]) noexcept;

    /// Like `read`, but copies the default path if no path is set.
    static void readOrDefault(char (&path)[kLogPathBytes]) noexcept;
};

}  // namespace vorel::detail

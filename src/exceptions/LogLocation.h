/// \file
/// The path of the error log as it is shared between threads: writers hold the log-settings lock, readers take none.
///
/// A reader that copies the path while it changes would see parts of two paths, and write to a file that nobody named.
/// A counter tells it: odd while the path is being written, and higher afterwards, so the reader copies again (H.-J.
/// Boehm, "Can Seqlocks Get Along With Programming Language Memory Models?", 2012).
#pragma once

#include <atomic>

#include "exceptions/LogFile.h"

namespace vorel::detail {

inline constexpr char kDefaultLogPath[] = "C:\\TalvenorError.txt";

/// Raised before and after each change of the path.
inline constinit std::atomic<unsigned int> LogLocationVersion{0};

struct LogLocation {
    /// Sets the path to at most 1023 bytes of `path`, which may point into it; null clears it. The caller holds the
    /// log-settings lock.
    static void write(const char* path) noexcept;

    /// Copies the path as it was at one moment; empty when none was ever set. Takes no lock.
    static void read(char (&path)[kLogPathBytes]) noexcept;

    /// The same, with the default path for an empty one.
    static void readOrDefault(char (&path)[kLogPathBytes]) noexcept;
};

}  // namespace vorel::detail

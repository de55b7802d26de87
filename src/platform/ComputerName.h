/// \file
/// The computer's name as the error log shows it: ASCII letters in lower case. Empty when the name is not available or
/// longer than 15 characters.
#pragma once

namespace vorel::platform {

struct ComputerName {
    /// Asks the system.
    static ComputerName ask() noexcept;

    /// Asks the system and caches the first name that is not empty: the name changes only when the system restarts, and
    /// a query costs about half as much as writing a log line. Thread-safe.
    static ComputerName remembered() noexcept;

    char text[16] = {};
};

}  // namespace vorel::platform

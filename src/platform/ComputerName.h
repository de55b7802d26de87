/// \file
/// The computer's name in the form that the error log shows: ASCII letters are in lower case. The text is empty if the
/// name is not available, or if it has more than 15 bytes in the ANSI code page.
#pragma once

namespace vorel::platform {

struct ComputerName {
    /// Asks the system for the name.
    static ComputerName ask() noexcept;

    /// Returns the cached name. If no name is cached, asks the system, and caches the name if it is not empty. The name
    /// is cached because a query takes about half as long as writing a line of the log. The name changes only when the
    /// computer restarts. Thread-safe.
    static ComputerName remembered() noexcept;

    char text[16] = {};
};

}  // namespace vorel::platform

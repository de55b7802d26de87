/// \file
/// The computer's name as the error log writes it: in lower case (A to Z only); empty when it is not to be had, or
/// longer than 15 characters.
#pragma once

namespace vorel::platform {

struct ComputerName {
    /// Asks the system.
    static ComputerName ask() noexcept;

    /// The same, but a name that the system has given once is remembered and not asked for again: it changes only when
    /// the system restarts, and asking takes as long as writing half a line. Thread-safe.
    static ComputerName remembered() noexcept;

    char text[16] = {};
};

}  // namespace vorel::platform

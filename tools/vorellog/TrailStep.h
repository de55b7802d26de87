/// \file
/// Each record of an exception reports one step of the exception: a failure, a rethrow, a catch and so on.
#pragma once

#include <string_view>

#include "vorellog/Record.h"

namespace vorellog {

enum class TrailStep {
    None,          ///< not a record of an exception: a warning, a debug line, a damaged record without a header
    Message,       ///< a failure, or a message added to it later
    SystemText,    ///< a line of `addHRESULTErrorToStack`, such as the system's text for an HRESULT
    TestFailed,    ///< a failed check that throws an exception
    SevereThrown,  ///< an exception of another type was caught, and an exception of the library was thrown instead
    Rethrown,      ///< rethrown by the function that the record names
    Suppressed,    ///< suppressed by a destructor while another exception was unwinding the stack
    Caught,        ///< caught by the function that the record names
    SevereCaught,  ///< an exception of another type was caught and not rethrown
};

TrailStep stepOf(const Record& record) noexcept;

/// Whether two messages are equal except for the numbers in them.
bool haveSameForm(std::string_view a, std::string_view b) noexcept;

}  // namespace vorellog

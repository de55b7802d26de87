/// \file
/// What a record says about the way of an exception.
#pragma once

#include <string_view>

#include "vorellog/Record.h"

namespace vorellog {

enum class TrailStep {
    None,          ///< none of an exception's records: a warning, a debug line, damage without a header
    Message,       ///< a failure, or what somebody on the way added to it
    SystemText,    ///< the system's text for an HRESULT, added to the failure
    TestFailed,    ///< a failed check, where an exception starts
    SevereThrown,  ///< something else was caught, and an exception started in its place
    Rethrown,      ///< passed on by the place that the record names
    Suppressed,    ///< ended by a destructor, while another one is on its way
    Caught,        ///< ended by the place that the record names
    SevereCaught,  ///< something that is no exception of the library was caught, and ended
};

TrailStep stepOf(const Record& record) noexcept;

/// Whether two messages are equal but for their digits.
bool haveSameForm(std::string_view a, std::string_view b) noexcept;

}  // namespace vorellog

/// \file
/// The path of the error log, for what has to show it.
#pragma once

#include "exceptions/LogFile.h"

namespace vorel::detail {

struct LogLocation {
    /// Copies the path of the log as it stands, or of the default file when none was ever set.
    static void copyTo(char (&path)[kLogPathBytes]) noexcept;
};

}  // namespace vorel::detail

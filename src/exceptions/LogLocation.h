/// \file
/// Where the error log is, for those who are asked.
#pragma once

#include "exceptions/LogFile.h"

namespace vorel::detail {

struct LogLocation {
    /// Copies the path of the log as it stands, or of the default file when none was ever set.
    static void copyTo(char (&path)[kLogPathBytes]) noexcept;
};

}  // namespace vorel::detail

/// \file
/// Checks whether text of a log is strict UTF-8.
#pragma once

#include <string_view>

namespace vorellog {

bool isUtf8(std::string_view text) noexcept;

}  // namespace vorellog

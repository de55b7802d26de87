/// \file
/// Whether a text of a log, which may be damaged, is strict UTF-8.
#pragma once

#include <string_view>

namespace vorellog {

bool isUtf8(std::string_view text) noexcept;

}  // namespace vorellog

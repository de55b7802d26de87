/// \file
/// Detection of invalid UTF-8. The library's decoder checks very little, so the converter checks its input first:
/// invalid bytes are reported and not converted to other text.
#pragma once

#include <cstddef>
#include <string_view>

namespace conv {

struct Utf8Scan {
    std::size_t valid = 0;     ///< size in bytes of the complete sequences at the start of the text
    bool isTruncated = false;  ///< the rest is the start of a sequence that the end of the text truncates
};

/// Scans for well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
Utf8Scan scanUtf8(std::string_view text) noexcept;

/// The part of a block of UTF-8 that can be converted without the next block: all but a truncated sequence at the end.
/// If `last` is true, no block follows, and a truncated sequence is an error.
/// \throws BadInput for invalid UTF-8.
std::string_view wholeUtf8(std::string_view block, bool last);

}  // namespace conv

/// \file
/// Where well-formed UTF-8 ends. The library's decoder checks very little; the converter looks first, so that wrong
/// bytes are told and not turned into other text.
#pragma once

#include <cstddef>
#include <string_view>

namespace conv {

struct Utf8Scan {
    std::size_t valid = 0;  ///< bytes of whole sequences at the start of the text
    bool isCut = false;     ///< what follows them is the start of a sequence that the text's end cuts short
};

/// Scans for well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
Utf8Scan scanUtf8(std::string_view text) noexcept;

/// The part of a block of UTF-8 that can be converted now: all but a sequence that the block cuts short. With `last`
/// nothing follows the block.
/// \throws BadInput for what is no UTF-8.
std::string_view wholeUtf8(std::string_view block, bool last);

}  // namespace conv

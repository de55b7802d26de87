/// \file
/// The form of a message. Messages that differ only in numbers, ids, paths and quoted texts have the same form.
///
///     Operation 7 of 12 overran                   Operation # of # overran
///     user u42 at 10.0.3.7:443                    user u# at #:#
///     handle 0x7FFE, id {3f2504e0-4f89-…}         handle #, id {#}
///     cannot open C:\Data\7.txt: access denied    cannot open <path>: access denied
///     File "orders 7.txt" not found               File "..." not found
///     ConvertUTF8toString: …                      unchanged, because one number between letters is part of a name
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorellog {

/// The maximum number of bytes at the start of a message that determine its form. Further bytes are ignored.
inline constexpr std::size_t kMaxFormInput = 256;

/// The size of the longest prefix of `text` that has at most `maxBytes` bytes and does not end within a character.
/// `text` must be longer than `maxBytes`.
constexpr std::size_t wholeCharacters(std::string_view text, std::size_t maxBytes) noexcept {
    constexpr std::size_t kMaxFurtherBytes = 3;
    std::size_t size = maxBytes;
    while (size != 0 && size + kMaxFurtherBytes > maxBytes && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) {
        --size;
    }
    return size;
}

/// Appends the form of `message`. The form of a message of more than kMaxFormInput bytes ends in "...".
void appendForm(std::string& out, std::string_view message);

}  // namespace vorellog

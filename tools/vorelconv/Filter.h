/// \file
/// Conversion of byte streams, block by block. Only one block and its result are in memory, unless a filter collects
/// all lines (sort, list --join).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/CommandLine.h"

namespace conv {

/// Thrown by a filter for invalid input. `index` is the offset of the error in the block. The message describes the
/// error, without its position.
struct BadInput {
    std::size_t index = 0;
    std::wstring message;
    bool isText = true;  ///< whether the input has lines, so that the position of the error includes a line number
};

class Filter {
public:
    Filter() = default;
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;
    virtual ~Filter() noexcept(false) = default;  // filters own containers whose destructors may throw

    /// Converts as many bytes of `block` as possible without the next block, appends the result to `result`, and
    /// returns the number of bytes converted. The next block begins with the remaining bytes. If no byte was converted,
    /// the next block is larger. If `last` is true, no block follows, and all of `block` must be converted.
    /// \throws BadInput for invalid input.
    virtual std::size_t convert(std::string_view block, bool last, std::string& result) = 0;
};

/// Converts the input of a command with `filter`, and writes the result to the output of the command.
/// \throws tools::Failure if the input is invalid or cannot be read, if `filter` cannot convert any byte of a block of
///         more than 1 GiB, if the output cannot be written, or after an interrupt. For a BadInput, the message
///         contains the name of the input and the position: "names.txt: line 3, offset 57: …" (lines are counted from
///         1, byte offsets from 0). tools::UsageError if --text and a file are given. tools::OutputClosed if the reader
///         of the output has closed the pipe.
void runFilter(const tools::Arguments& arguments, Filter& filter);

/// The part of a block of UTF-8 that can be converted without the next block: everything except a truncated sequence at
/// the end. If `last` is true, no block follows, and a truncated sequence is an error.
/// \throws BadInput for invalid UTF-8. The filters need this check, because the library's decoder accepts most invalid
///         sequences.
std::string_view wholeUtf8(std::string_view block, bool last);

/// A byte for a message: "'x' (0x78)", "0xC3".
std::wstring quoted(char byte);

}  // namespace conv

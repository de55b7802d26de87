/// \file
/// Conversions of a stream of bytes, block by block, with memory for one block and its result only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/CommandLine.h"

namespace conv {

/// Input that a filter cannot take. `index` is the place within the block; the message says what is expected there.
struct BadInput {
    std::size_t index = 0;
    std::wstring message;
    bool isText = true;  ///< whether the input has lines that a person would count
};

class Filter {
public:
    Filter() = default;
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;
    virtual ~Filter() noexcept(false) = default;  // as that of the library's containers, which filters have

    /// Appends the result for as many bytes of `block` as can be converted without those that follow, and returns their
    /// number. The others are given again, in front of what follows; when nothing can be converted yet, the next block
    /// is larger. With `last` nothing follows: then all of the block has to be converted.
    /// \throws BadInput.
    virtual std::size_t convert(std::string_view block, bool last, std::string& result) = 0;
};

/// Runs a command's input through `filter` into its output. A BadInput becomes a Failure that names the input and the
/// place: "names.txt: line 3, offset 57: …" (lines count from 1, offsets in bytes from 0).
void runFilter(const tools::Arguments& arguments, Filter& filter);

/// A byte as a message shows it: "'x' (0x78)", "0xC3".
std::wstring shown(char byte);

}  // namespace conv

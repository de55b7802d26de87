/// \file
/// Where a command reads its bytes: a file, the standard input, or a text of the command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "support/CommandLine.h"
#include "support/OwnedHandle.h"

namespace conv {

class Input {
public:
    /// By option --text and the first operand; without either, and for the operand "-", the standard input.
    /// \throws tools::Failure when the file cannot be opened; tools::WrongUse when both are given.
    explicit Input(const tools::Arguments& arguments);

    /// Reads up to `size` bytes into `buffer` and returns their number, 0 only at the end. Fewer than `size` say
    /// nothing about the end. \throws tools::Failure when it cannot be read.
    std::size_t read(char* buffer, std::size_t size);

    /// As messages call it.
    [[nodiscard]] const std::wstring& name() const noexcept { return m_name; }

    /// Bytes in all, where that is known before the end.
    [[nodiscard]] std::optional<std::uint64_t> size() const noexcept { return m_size; }

    /// Closes the file, so that it may be replaced.
    void close() noexcept { m_file.close(); }

private:
    void open(const std::wstring& path);
    std::size_t readConsole(char* buffer, std::size_t size);

    std::wstring m_name;
    std::optional<std::uint64_t> m_size;
    tools::OwnedHandle m_file;  // empty for the standard input
    void* m_handle = nullptr;   // null: only m_pending is there
    bool m_isConsole = false;
    std::string m_pending;  // of --text, or of a console's line
};

}  // namespace conv

/// \file
/// The input of a command: a file, standard input, or the text given by --text.
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
    /// Uses the text given by --text, or opens the file given by the first operand. If neither is given, or the operand
    /// is "-", uses standard input.
    /// \throws tools::Failure if the file cannot be opened; tools::UsageError if --text and an operand are given.
    explicit Input(const tools::Arguments& arguments);

    /// Reads up to `size` bytes into `buffer` and returns their number. Returns 0 only at the end of the input.
    /// \throws tools::Failure if the input cannot be read.
    std::size_t read(char* buffer, std::size_t size);

    /// The name for messages.
    [[nodiscard]] const std::wstring& name() const noexcept { return m_name; }

    /// The size in bytes, if it is known in advance.
    [[nodiscard]] std::optional<std::uint64_t> size() const noexcept { return m_size; }

    /// Closes the file, so that the output may replace it.
    void close() noexcept { m_file.close(); }

private:
    void open(const std::wstring& path);
    std::size_t readConsole(char* buffer, std::size_t size);

    std::wstring m_name;
    std::optional<std::uint64_t> m_size;
    tools::OwnedHandle m_file;  // empty for standard input and for --text
    void* m_handle = nullptr;   // null if m_pending contains the whole input
    bool m_isConsole = false;
    std::string m_pending;  // unread bytes of --text or of a console line
};

}  // namespace conv

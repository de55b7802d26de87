/// \file
/// The output of a command: standard output or a file. The content of a file is first written to a temporary file in
/// the same folder. When the temporary file is complete, it replaces the given file. If the given name is a link, the
/// link is kept, and its target is replaced.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/CommandLine.h"
#include "support/OwnedHandle.h"

namespace conv {

class Output {
public:
    /// Opens the file given by --output. Without the option, or for "-", opens standard output. A device ("nul") is
    /// written directly.
    /// \throws tools::Failure if the name is the name of a folder, if the file or device is read-only or cannot be
    ///         written, or if the temporary file cannot be created.
    explicit Output(const tools::Arguments& arguments);

    /// If `commit` has not succeeded and `abandon` was not called, calls `abandon`, and writes its message to the error
    /// stream.
    ~Output();

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    [[nodiscard]] bool isStandardOutput() const noexcept { return m_target.empty(); }

    /// \throws tools::OutputClosed if the reader has closed the pipe; tools::Failure if the bytes cannot be written.
    void write(std::string_view bytes);

    /// Completes the output: renames the temporary file, which replaces an existing file with the given name.
    /// \throws tools::Failure if the file cannot be written or replaced.
    void commit();

    /// Abandons the output and removes the temporary file. If this file cannot be removed, or if bytes were already
    /// written to standard output or a device, returns a message, which begins with a line feed. Otherwise returns an
    /// empty string.
    std::wstring abandon();

private:
    bool openDevice();
    void openUnfinished();

    std::wstring m_name;        // the name of the output in messages
    std::wstring m_target;      // path of the finished file, with all links resolved if it exists; empty if none
    std::wstring m_unfinished;  // path of the temporary file; empty if there is none
    tools::OwnedHandle m_file;
    std::uint64_t m_written = 0;
    bool m_closed = false;  // committed or abandoned
};

}  // namespace conv

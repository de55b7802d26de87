/// \file
/// Where a command writes its result. A file appears under its name only when it is whole: until then the bytes go to
/// another one beside it. A link stays, and the file that it leads to is replaced.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/CommandLine.h"
#include "support/OwnedHandle.h"

namespace conv {

class Output {
public:
    /// By option --output; without it, and for "-", the standard output. What is no file ("nul") is written directly.
    /// \throws tools::Failure when the file cannot be made.
    explicit Output(const tools::Arguments& arguments);

    /// Without `commit` or `abandon` before: abandons the output, and says on the error stream what that left behind.
    ~Output();

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// \throws tools::OutputClosed, tools::Failure.
    void write(std::string_view bytes);

    /// Everything is written: gives the file its name, in the place of one that may have it.
    /// \throws tools::Failure when the system refuses.
    void commit();

    /// The output will not be finished: removes the unfinished file. Returns what there is to say about what is left
    /// behind, as a line that begins with a line feed; nothing when nothing is.
    std::wstring abandon();

private:
    void open(const std::wstring& path);
    bool openDevice();
    void openUnfinished();

    std::wstring m_name;        // as messages call it
    std::wstring m_target;      // the path of the file to be: where a link of that name leads to
    std::wstring m_unfinished;  // the path that is written to; empty when nothing has to be renamed
    tools::OwnedHandle m_file;
    std::uint64_t m_written = 0;
    bool m_closed = false;  // committed or abandoned
};

}  // namespace conv

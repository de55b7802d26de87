/// \file
/// Starts copies of this program, which begin their work at the same time.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace examples {

/// The path of this program. All paths are in the narrow code page of the process, like the path of the error log.
/// \throws vorel::Exception if the path is not available or too long.
std::string programPath();

/// Creates a new folder "<name>-<number>" in the folder of `program` and returns its path.
/// \throws vorel::Win32Exception if the folder cannot be created.
std::string createFolderBeside(const std::string& program, const std::string& name);

struct CloseHandleOf {
    void operator()(void* handle) const noexcept;
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

/// Lets all workers start at the same time. The parent creates the start line, and each worker opens it by its name.
class StartLine {
public:
    /// Creates the start line `name`, or opens it if it exists.
    /// \throws vorel::Win32Exception if the start line can be neither created nor opened.
    explicit StartLine(const std::string& name);

    /// For a worker. Reports that the worker is ready, and waits for the start. Returns false if the parent
    /// does not start the workers within 120 seconds.
    [[nodiscard]] bool lineUp() const;

    /// For the parent. Waits until `workers` workers are ready, and starts them. Returns false if no further worker
    /// becomes ready for 120 seconds.
    [[nodiscard]] bool start(unsigned int workers) const;

private:
    Handle m_ready;
    Handle m_go;
};

/// Starts `program` with `arguments`. An argument must not contain quotation marks or end in a backslash, because it is
/// put in quotation marks without escaping.
/// \throws vorel::Win32Exception if the process cannot be started.
Handle startProcess(const std::string& program, const std::vector<std::string>& arguments);

/// Waits for the end of a process and returns its exit code. If the process has not ended after 120 seconds, terminates
/// it with exit code 1.
unsigned long exitCodeOf(const Handle& process);

}  // namespace examples

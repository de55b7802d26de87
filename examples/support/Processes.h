/// \file
/// Starting copies of this program, all of which set off at the same moment.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace examples {

/// The program's own path, and a fresh folder "<name>-<number>" beside it. Paths are in the process's narrow code page,
/// as the error log takes them.
std::string programPath();
std::string createFolderBeside(const std::string& program, const std::string& name);

struct CloseHandleOf {
    void operator()(void* handle) const noexcept;
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

/// Where the workers line up. The parent makes one; each worker opens it by the name that it was given.
class StartLine {
public:
    explicit StartLine(const std::string& name);

    /// Worker: says that it is ready, and waits for the start.
    [[nodiscard]] bool lineUp() const;

    /// Parent: waits for `workers` to be ready, and lets them all go.
    [[nodiscard]] bool start(unsigned int workers) const;

private:
    Handle m_ready;
    Handle m_go;
};

/// Starts `program` with `arguments`; null when the system refuses.
Handle startProcess(const std::string& program, const std::vector<std::string>& arguments);

/// Waits for the end of a process and returns its exit code; one that takes too long is ended.
unsigned long exitCodeOf(const Handle& process);

}  // namespace examples

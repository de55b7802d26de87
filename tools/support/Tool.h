/// \file
/// How a tool ends: its exit codes, the failures that lead to them, and the frame that its `wmain` runs in.
///
///     int wmain(int count, wchar_t** arguments) {
///         return tools::run(L"vorelconv", [&] { return convert({arguments + 1, arguments + count}); });
///     }
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

/// The entry point that every tool defines: the start-up code calls it by its C name.
extern "C" int wmain(int count, wchar_t** arguments);

namespace tools {

/// The exit codes of every tool. A tool's help says when it ends with which.
enum ExitCode : int {
    kDone = 0,      ///< what was asked for is done
    kFailed = 1,    ///< bad input, a failure of the system, or a question that was answered with no
    kWrongUse = 2,  ///< the command line makes no sense
};

/// Something that the user has to be told: bad input, or a file that cannot be read. The text says where, and what was
/// expected; the program's name goes in front of it.
class Failure : public std::exception {
public:
    explicit Failure(std::wstring text) : m_text(std::move(text)) {}
    [[nodiscard]] const std::wstring& text() const noexcept { return m_text; }
    [[nodiscard]] const char* what() const noexcept override { return "a failure of a tool"; }

private:
    std::wstring m_text;
};

/// A command line that makes no sense. `command` is whose help tells more: "vorelconv base64"; empty: the program's.
class WrongUse : public Failure {
public:
    explicit WrongUse(std::wstring text, std::wstring_view command = {})
        : Failure(std::move(text)), m_command(command) {}
    [[nodiscard]] const std::wstring& command() const noexcept { return m_command; }

private:
    std::wstring m_command;
};

/// Whoever reads the output has had enough of it: nothing to tell, and nobody to tell it.
class OutputClosed : public std::exception {};

/// A failure of the system: "name: cannot be opened: File not found. (error 2)". The error `code` is the thread's last
/// one when none is given.
Failure systemFailure(std::wstring_view name, std::wstring_view what);
Failure systemFailure(std::wstring_view name, std::wstring_view what, unsigned long code);

/// What --version shows: "vorelconv 0.1.0", and the end of the line.
std::wstring versionText(std::wstring_view program);

/// Writes "program: text" on the error stream. The text may have several lines; what else a terminal might interpret in
/// it is escaped, because it may quote names and input.
void report(std::wstring_view program, std::wstring_view text) noexcept;

/// Runs `body` and returns its exit code. What it throws is told on the error stream, in one line that begins with
/// `program`, and becomes `kWrongUse` for WrongUse and `kFailed` for everything else. The library's error log is
/// switched off: a tool tells its own user, and leaves the log to the programs that write it.
int run(std::wstring_view program, const std::function<int()>& body) noexcept;

}  // namespace tools

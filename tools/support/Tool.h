/// \file
/// The exit codes and failures of the tools, and the function that the `wmain` of each tool calls:
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

/// The entry point that every tool defines. The start-up code calls it by this name.
extern "C" int wmain(int count, wchar_t** arguments);

namespace tools {

/// The exit codes of every tool. The help text of a tool describes when it uses them.
enum ExitCode : int {
    kDone = 0,        ///< success
    kFailed = 1,      ///< a query whose answer is "no", or any failure except a usage error
    kUsageError = 2,  ///< invalid command line
};

/// A failure to report to the user, for example invalid input or a file that cannot be read. The text describes where
/// the failure occurred and what was expected. run() prepends the name of the program.
class Failure : public std::exception {
public:
    explicit Failure(std::wstring text) : m_text(std::move(text)) {}
    [[nodiscard]] const std::wstring& text() const noexcept { return m_text; }
    [[nodiscard]] const char* what() const noexcept override { return "a failure of a tool"; }

private:
    std::wstring m_text;
};

/// An invalid command line. The message suggests the help of `command`, for example "vorelconv base64". If `command` is
/// empty, the message suggests the help of the program.
class UsageError : public Failure {
public:
    explicit UsageError(std::wstring text, std::wstring_view command = {})
        : Failure(std::move(text)), m_command(command) {}
    [[nodiscard]] const std::wstring& command() const noexcept { return m_command; }

private:
    std::wstring m_command;
};

/// Thrown if the reader of the output has closed the output. run() does not report this exception.
class OutputClosed : public std::exception {};

/// Creates a system failure: "name: cannot be opened: The system cannot find the file specified. (error 2)". The text
/// after "opened: " is the system's text for the code. If the system has no text: "name: cannot be opened (error …)".
/// Without `code`, the last error of the thread is used.
Failure systemFailure(std::wstring_view name, std::wstring_view what);
Failure systemFailure(std::wstring_view name, std::wstring_view what, unsigned long code);

/// The output of --version: "vorelconv 0.1.0" and a line feed.
std::wstring versionText(std::wstring_view program);

/// Writes "program: text" and a line feed to the error stream. The text may have several lines. Except for line feeds
/// and tabs, all characters that a terminal might interpret are escaped, because the text may quote names and input. A
/// carriage return before a line feed is removed. If there is not enough memory, writes "not enough memory" instead.
void report(std::wstring_view program, std::wstring_view text) noexcept;

/// Runs `body` and returns its exit code. An exception is reported on the error stream with the name of the program
/// (OutputClosed and exceptions of unknown type are not reported), and becomes an exit code: `kUsageError` for
/// UsageError, otherwise `kFailed`. The library's error log is switched off, because a tool reports failures to its
/// user.
int run(std::wstring_view program, const std::function<int()>& body) noexcept;

}  // namespace tools

/// \file
/// `Exception`: what every failure leaves the library as, and the front of the error log.
///
/// An exception carries a stack of wide messages: the one it was built with, and one for every handler that it passed.
/// Each message is written to the error log as a line of its own at the moment it is added, unless the object delays
/// its logging; then all of them are written when it is destroyed.
///
///     try {
///         load(file);
///     } catch (vorel::Exception& e) {
///         e.rethrowClass(L"Importer", L"run");   // adds and logs "Importer::run: Vorel exception rethrown"
///     } catch (...) {
///         vorel::Exception::throwSevereClass(L"Importer", L"run");
///     }
///
/// Building an exception, adding to it and writing to the log never fail: without memory a text is cut, or missing.
/// Formats are printf-style; `%ls` and `%hs` name wide and narrow text. A format that cannot be rendered gives the
/// message "(unable to format message)"; a line of the channels has no message then, and is marked as cut.
///
/// An object belongs to the thread that holds it. The static operations may be called from any thread at any time.
///
/// `Exception` does not derive from `std::exception`: its `what()` is wide.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "vorel/Attributes.h"
#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel {

namespace detail {
struct LogLocation;
}

/// A failure, with the messages that it collected on its way; its static operations are the front of the error log.
class VOREL_API Exception {
public:
    /// \name Building, copying, throwing
    /// \{

    /// No message; nothing is logged.
    Exception() noexcept;

    /// Renders the first message and logs it.
    explicit Exception(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) explicit Exception(const char* fmt, ...) noexcept;

    /// Copies the messages, their locations and the protocol-state mark. Logging is not delayed in a copy: a thrown
    /// copy of a delayed exception logs what is added to it at once.
    Exception(const Exception& other) noexcept;

    /// As copying, but the target keeps its own choice of delaying.
    Exception& operator=(const Exception& other) noexcept;

    /// Writes all messages to the log if logging is delayed.
    virtual ~Exception() noexcept(false);

    /// Throws a copy of the object as its own class. A class derived from this one overrides it, so that nothing is
    /// sliced away.
    [[noreturn]] virtual void rethrow();

    /// \}
    /// \name Adding and changing messages
    /// \{

    /// Adds a message at the end of the stack, and logs it unless logging is delayed. Arguments may point into the
    /// stack itself.
    void appendMessage(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) void appendMessage(const char* fmt, ...) noexcept;

    /// Replaces the message at `index` without logging it; an index out of range is ignored.
    void setErrorMessage(unsigned int index, const wchar_t* fmt, ...) noexcept;

    /// Sets the location text of the message at `index`; an index out of range is ignored.
    void setLocation(unsigned int index, const wchar_t* location) noexcept;

    /// Sets the location text of the newest message; does nothing on an empty stack. Narrow text is converted by the
    /// current locale, and becomes "Error in text conversion" where that is not possible.
    void defineLocation(const wchar_t* location) noexcept;
    void defineLocation(const char* location) noexcept;

    /// Adds "HRESULT: %X - %ls" with the system's text for `hr`, and logs it under the prefix
    /// "AddHRESULTErrorToStack: ". Nothing is added for 0, for E_FAIL, and for a code without a text, which is logged
    /// as "HR not found" even when logging is delayed. An empty closing line follows in every case, unless logging is
    /// delayed.
    void addHRESULTErrorToStack(int hr) noexcept;

    /// Removes all messages.
    void clear() noexcept;

    /// \}
    /// \name Reading
    /// \{

    /// The oldest message, null when there is none.
    const wchar_t* what() const noexcept;

    /// The message at `index`; an empty text for an index out of range.
    const wchar_t* getErrorMessage(unsigned int index) const noexcept;

    /// Number of messages.
    unsigned int getMessageTotal() const noexcept;

    /// All messages, oldest first, with `separator` (null: nothing) between neighbours. The text stays until the next
    /// call or the end of the object; `separator` may lie in the text of the call before.
    /// \throws MemoryException when the text cannot be allocated; the text of the call before stays then.
    const wchar_t* getErrorMessageBlock(const wchar_t* separator) const;

    /// The same in UTF-8. A failure while it is built is swallowed: the text so far is returned.
    const char* getCharErrorMessageBlock(const char* separator) const noexcept;

    /// Copies messages and locations, position by position, and then empties the stack if `clearAfter` is set.
    /// \throws MemoryException when they cannot be allocated, with the stack and both lists as they were.
    void dumpStack(std::vector<std::wstring>& messages, std::vector<std::wstring>& locations, bool clearAfter);

    /// Writes every message to the log, oldest first, whether logging is delayed or not.
    void mirrorAllMessages() const noexcept;

    /// Keeps new messages out of the log until the object is destroyed, which then writes all of them: also those
    /// that were logged before.
    void setDelayedLogging(bool delayed) noexcept { m_delayedLogging = delayed; }

    /// A mark for handlers: protocol-state information has been traced for this exception.
    void markHasTracedProtocolStateInfo() noexcept { m_hasTracedProtocolStateInfo = true; }
    bool hasTracedProtocolStateInfo() const noexcept { return m_hasTracedProtocolStateInfo; }

    /// \}
    /// \name Catching and rethrowing
    /// Each adds a record from Messages.h. The catch operations empty the stack and never throw; the rethrow
    /// operations throw the exception on as its own class. A location is a function name, or a class and a method.
    /// \{

    void catchMessage(const wchar_t* location) noexcept;
    void catchClass(const wchar_t* className, const wchar_t* method) noexcept;
    void catchGeneric(const wchar_t* format, ...) noexcept;

    [[noreturn]] void rethrowMessage(const wchar_t* location);
    [[noreturn]] void rethrowClass(const wchar_t* className, const wchar_t* method);
    [[noreturn]] void rethrowGeneric(const wchar_t* format, ...);

    /// For the end of a destructor: while another exception unwinds the stack the failure is only recorded; otherwise
    /// it is recorded and thrown on.
    void rethrowDestructor(const wchar_t* className);

    void appendCaughtClass(const wchar_t* className, const wchar_t* method) noexcept;
    void appendSevereCaught(const wchar_t* location) noexcept;
    void appendSevereCaughtClass(const wchar_t* className, const wchar_t* method) noexcept;
    void appendCaughtAndThrownClass(const wchar_t* className, const wchar_t* method) noexcept;
    void appendSevereCaughtAndThrownClass(const wchar_t* className, const wchar_t* method) noexcept;

    /// A severe error (anything that is not an `Exception`) ends here: its record goes to the log.
    static void catchSevere(const wchar_t* location) noexcept;
    static void catchSevereClass(const wchar_t* className, const wchar_t* method) noexcept;
    static void catchSevereGeneric(const wchar_t* format, ...) noexcept;

    /// Throws a fresh `Exception` in the place of a severe error.
    [[noreturn]] static void throwSevere(const wchar_t* location);
    [[noreturn]] static void throwSevereClass(const wchar_t* className, const wchar_t* method);
    [[noreturn]] static void throwSevereGeneric(const wchar_t* format, ...);

    /// The same for the end of a destructor: only recorded while another exception unwinds the stack.
    static void throwSevereDestructor(const wchar_t* className);

    /// Keeps the calling thread's messages out of the error log (`true`), or lets them in again (`false`). The thread
    /// is silenced or it is not: calls do not add up. Exceptions still collect their messages. The choice ends with the
    /// thread, so that a later thread with the same id is heard.
    static void DisableThreadErrorLogging(bool disable) noexcept;
    static bool IsThreadErrorLoggingDisabled() noexcept;

    /// \}
    /// \name Error log
    /// One text line per message, written by any number of processes and threads under a lock on the whole file. A
    /// size limit is a number of bytes: 0 switches the log off, 1 or more moves the file to its backup (".001"
    /// appended) once it has grown beyond that, a negative one never does. The computer name in the lines is asked for
    /// once and remembered: it changes only when the system restarts.
    /// \{

    static const long long DefaultLogSize = 1000000;
    static const long long LargeErrorLogSize = 10000000;

    /// Sets the file (at most 1023 bytes of its path, in the process's narrow code page; null or empty: the default
    /// file "C:\TalvenorError.txt") and, if `size` is 1 or more, the size limit. The first call installs the handler
    /// that reports invalid parameters of the runtime's functions as warnings, unless the program has one. The
    /// start-up code of mingw-w64 installs one of its own: a program built with it has to take that out first
    /// (`_set_invalid_parameter_handler(nullptr)`) to get the warnings.
    ///
    /// A wide path is converted by the current locale. One that cannot be converted sets the text of the failure,
    /// "Error in text conversion", as the path: the log then is a file of that name in the current directory.
    static void SetErrorLogLocation(const char* path, long long size) noexcept;
    static void SetErrorLogLocation(const wchar_t* path, long long size) noexcept;

    /// Sets the size limit; values below -1 are ignored. Only this call takes 0 and -1.
    static void SetErrorLogSize(long long size) noexcept;

    /// Whether messages that are not forced are written too. All of the library's own are forced.
    static bool GetMirrorErrorLog() noexcept { return m_mirrorToErrorLog; }
    static void SetMirrorErrorLog(bool mirror) noexcept { m_mirrorToErrorLog = mirror; }

    /// Switches the mirror off; the file and the limit stay.
    static void ResetClass() noexcept { m_mirrorToErrorLog = false; }

    /// \}
    /// \name Diagnostic channels
    /// One line in the error log per call: a prefix and the rendered message. A call needs at most 20 KB of stack in
    /// its wide form and 28 KB in its narrow one, besides what the runtime and the system use.
    /// \{

    /// Always writes "WARN: " and the message.
    VOREL_PRINTF(1, 2) static void warn(const char* format, ...) noexcept;
    static void warn(const wchar_t* format, ...) noexcept;

    /// `warn` for generated language bindings.
    VOREL_PRINTF(1, 2) static void swigwarn(const char* format, ...) noexcept;
    static void swigwarn(const wchar_t* format, ...) noexcept;

    /// Writes "WARN: class::method: message".
    static void warnClass(const wchar_t* className, const wchar_t* method, const wchar_t* format, ...) noexcept;

    /// Writes "DEBUG: target: message" if the target is switched on. While no target ever was, a call costs a load
    /// and a branch. `debugClass` writes "DEBUG: class::method: target: message".
    VOREL_PRINTF(2, 3) static void debug(const char* target, const char* format, ...) noexcept;
    static void debug(const wchar_t* target, const wchar_t* format, ...) noexcept;
    static void vDebug(const char* target, const char* format, va_list args) noexcept;
    static void vDebug(const wchar_t* target, const wchar_t* format, va_list args) noexcept;
    static void debugClass(const wchar_t* className, const wchar_t* method, const wchar_t* target,
                           const wchar_t* format, ...) noexcept;

    /// Writes "prefix: message" to a file and under a size limit of the caller's choice (null or empty `logPath`: the
    /// current file). `logClass` writes "prefix: class::method: message".
    VOREL_PRINTF(4, 5)
    static void log(const char* logPath, long long size, const char* prefix, const char* format, ...) noexcept;
    static void log(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* format, ...) noexcept;
    static void logClass(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* className,
                         const wchar_t* method, const wchar_t* format, ...) noexcept;

    /// Do nothing.
    VOREL_PRINTF(1, 2) static void trace(const char* format, ...) noexcept;
    static void trace(const wchar_t* format, ...) noexcept;
    static void traceClass(const wchar_t* className, const wchar_t* method, const wchar_t* format, ...) noexcept;
    static void traceCallStack(std::FILE* stream) noexcept;

    /// Switches a debug target on or off; null is ignored. Names are compared exactly, and narrow and wide names are
    /// two worlds: a target switched on by a narrow name is not active under the wide one. That is meant. The wide
    /// target "LogsIncludeMsecs" adds milliseconds to every line of the log.
    /// Takes no lock: a thread that tests or switches the same target at the same time finds it before or after.
    /// \throws MemoryException when there is no memory for a new name; the target is off then, as before.
    static void setDebugTarget(const char* name, bool active);
    static void setDebugTarget(const wchar_t* name, bool active);
    static bool isDebugTargetActive(const char* name) noexcept;
    static bool isDebugTargetActive(const wchar_t* name) noexcept;

    /// \}

protected:
    /// Renders a message, adds it to the stack, and logs it unless logging is delayed.
    void SetMessageOnStack(const wchar_t* fmt, va_list args) noexcept;
    void SetMessageOnStack(const char* fmt, va_list args) noexcept;

    /// Renders a text in the place of the message at `index`; nothing is logged.
    void UpdateMessageOnStack(unsigned int index, const wchar_t* fmt, va_list args) noexcept;

    /// Removes all messages.
    void CleanAll() noexcept;

    /// Copies messages, locations and the protocol-state mark, and clears both text blocks.
    void AssignFrom(const Exception& source) noexcept;

    /// Appends one line to the log: to `logPath`, or the current file where that is null or empty, under the limit
    /// `maxSize`. A null `prefix` is written as "NULL Method", a null `message` as "NULL Message". Without `force` the
    /// line is written only while the mirror is on. A line that cannot be written is dropped without a word.
    static void MirrorErrorMessage(const char* logPath, long long maxSize, const char* prefix, const wchar_t* message,
                                   bool force) noexcept;

    /// The size limit in force, in bytes.
    static long long CurrentLogSize;

private:
    friend struct detail::LogLocation;

    struct StackEntry {
        BaseString<wchar_t> message;
        BaseString<wchar_t> location;
    };

    static constexpr unsigned int MaxPathSize = 1024;

    static void CheckOldLogSize(const char* logPath, long long maxSize) noexcept;
    static bool LockLogFile(int fileDescriptor, bool lock) noexcept;
    static void vDebugInternal(const char* target, const char* format, va_list args) noexcept;
    static void vDebugInternal(const wchar_t* target, const wchar_t* format, va_list args) noexcept;
    static void vDebugClassInternal(const wchar_t* className, const wchar_t* method, const wchar_t* target,
                                    const wchar_t* format, va_list args) noexcept;
    static bool isDebugTargetActiveInternal(const char* name) noexcept;
    static bool isDebugTargetActiveInternal(const wchar_t* name) noexcept;
    static void Invalid_Parameter_Handler(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                                          unsigned int line, std::uintptr_t reserved) noexcept;

    alignas(8) static char ErrorLogLocation[MaxPathSize];
    static bool m_mirrorToErrorLog;

    std::vector<StackEntry> m_stack;
    bool m_delayedLogging = false;
    bool m_hasTracedProtocolStateInfo = false;
    mutable BaseString<char> m_charBlock;
    mutable BaseString<wchar_t> m_wideBlock;
};

}  // namespace vorel

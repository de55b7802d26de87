/// \file
/// `Exception`: the base class of all failures, and the interface of the error log.
///
/// An exception has a stack of wide messages: the first message is set at construction, and each handler that the
/// exception passes adds a message. When a message is added, it is written to the error log as a line. If the object
/// delays its logging, all messages are written when it is destroyed.
///
///     try {
///         load(file);
///     } catch (vorel::Exception& e) {
///         e.rethrowClass(L"Importer", L"run");   // adds and logs "Importer::run: Vorel exception rethrown"
///     } catch (...) {
///         vorel::Exception::throwSevereClass(L"Importer", L"run");
///     }
///
/// Creating an exception, adding messages and writing to the log never fail. If memory runs out, a text is truncated or
/// missing. Formats are printf-style; `%ls` and `%hs` take wide and narrow text. If the format of an exception's
/// message cannot be rendered, the message is "(unable to format message)". If the format of a diagnostic channel
/// cannot be rendered, the line has no message and is marked as truncated.
///
/// An object may be used by one thread at a time. The static functions may be called from any thread at any time.
///
/// `Exception` does not derive from `std::exception`, because `what()` of `Exception` returns wide text.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "vorel/Attributes.h"
#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel {

namespace detail {
struct LogPath;
}

/// Whether any debug target was ever switched on. The library sets it and never clears it; programs only read it.
extern VOREL_API std::atomic<bool> DebugTargetsUsed;

/// A failure with its messages; the static functions are the interface of the error log.
class VOREL_API Exception {
public:
    /// \name Creating, copying, throwing
    /// \{

    /// Creates an exception without a message. Nothing is logged.
    Exception() noexcept;

    /// Renders the first message and logs it.
    explicit Exception(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) explicit Exception(const char* fmt, ...) noexcept;

    /// Copies the messages, their locations and the mark of `markHasTracedProtocolStateInfo`. The copy never delays its
    /// logging, so a thrown copy of an exception with delayed logging logs new messages at once.
    Exception(const Exception& other) noexcept;

    /// Like the copy constructor, but the target keeps its own setting for delayed logging.
    Exception& operator=(const Exception& other) noexcept;

    /// Writes all messages to the log if logging is delayed.
    virtual ~Exception() noexcept(false);

    /// Throws a copy of the object with its dynamic type. Each derived class overrides this function, so the copy is
    /// not sliced.
    [[noreturn]] virtual void rethrow();

    /// \}
    /// \name Adding and changing messages
    /// \{

    /// Adds a message to the stack, and logs it unless logging is delayed. Arguments may point to messages of this
    /// object.
    void appendMessage(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) void appendMessage(const char* fmt, ...) noexcept;

    /// Replaces the message at `index` without logging it; an index out of range is ignored.
    void setErrorMessage(unsigned int index, const wchar_t* fmt, ...) noexcept;

    /// Sets the location text of the message at `index`; an index out of range is ignored.
    void setLocation(unsigned int index, const wchar_t* location) noexcept;

    /// Sets the location text of the newest message. Does nothing if the stack is empty. Narrow text is converted by
    /// the current locale; text that cannot be converted becomes "Error in text conversion".
    void defineLocation(const wchar_t* location) noexcept;
    void defineLocation(const char* location) noexcept;

    /// Adds "HRESULT: %X - %ls" with the system's text for `hr`. The prefix of the line in the log is
    /// "AddHRESULTErrorToStack: ", or "Vorel Error: " if logging is delayed. Nothing is added for 0, for E_FAIL, or for
    /// a code without a text. A code without a text is logged at once as "HR not found", even if logging is delayed.
    /// Unless logging is delayed, the function finally logs a line that has only the prefix, even if nothing was added.
    void addHRESULTErrorToStack(int hr) noexcept;

    /// Removes all messages.
    void clear() noexcept;

    /// \}
    /// \name Reading
    /// \{

    /// The oldest message; null if there is none.
    const wchar_t* what() const noexcept;

    /// The message at `index`; an empty text if the index is out of range.
    const wchar_t* getErrorMessage(unsigned int index) const noexcept;

    /// The number of messages.
    unsigned int getMessageTotal() const noexcept;

    /// All messages, oldest first, joined with `separator` (null: nothing). The text is valid until the next call of
    /// this function, an assignment to the object, or the destruction of the object. `separator` may point into the
    /// previous text.
    /// \throws MemoryException if the text cannot be allocated; the previous text stays valid.
    const wchar_t* getErrorMessageBlock(const wchar_t* separator) const;

    /// The same in UTF-8. A failure is swallowed, and the text built so far is returned.
    const char* getCharErrorMessageBlock(const char* separator) const noexcept;

    /// Replaces the content of `messages` and `locations` by copies of the messages and their locations, oldest first.
    /// A message and its location have the same index. Then empties the stack if `clearAfter` is true.
    /// \throws MemoryException if a list cannot be allocated; the stack and both lists are unchanged.
    void dumpStack(std::vector<std::wstring>& messages, std::vector<std::wstring>& locations, bool clearAfter);

    /// Writes every message to the log, oldest first, even if logging is delayed.
    void mirrorAllMessages() const noexcept;

    /// If `delayed` is true, new messages are not logged until the object is destroyed. The destructor then writes all
    /// messages, including those already logged.
    void setDelayedLogging(bool delayed) noexcept { m_delayedLogging = delayed; }

    /// Marks that a program's handler has traced protocol-state information for this exception. The library only stores
    /// and copies the mark.
    void markHasTracedProtocolStateInfo() noexcept { m_hasTracedProtocolStateInfo = true; }
    bool hasTracedProtocolStateInfo() const noexcept { return m_hasTracedProtocolStateInfo; }

    /// \}
    /// \name Catching and rethrowing
    /// Each function adds a record from RecordFormats.h. The catch functions empty the stack and never throw. The
    /// rethrow functions rethrow the exception with its dynamic type. The append functions only add the record. A
    /// location is the name of a function, or of a class and a method. The functions with names that end in `Generic`
    /// render the location from `format`.
    /// \{

    void catchMessage(const wchar_t* location) noexcept;
    void catchClass(const wchar_t* className, const wchar_t* method) noexcept;
    void catchGeneric(const wchar_t* format, ...) noexcept;

    [[noreturn]] void rethrowMessage(const wchar_t* location);
    [[noreturn]] void rethrowClass(const wchar_t* className, const wchar_t* method);
    [[noreturn]] void rethrowGeneric(const wchar_t* format, ...);

    /// The same for an exception that was caught by const reference. The exception does not change. The catch functions
    /// log the record at once. The rethrow functions add it to the copy that they throw.
    void catchMessage(const wchar_t* location) const noexcept { Exception().catchMessage(location); }
    void catchClass(const wchar_t* className, const wchar_t* method) const noexcept {
        Exception().catchClass(className, method);
    }
    inline void catchGeneric(const wchar_t* format, ...) const noexcept;
    [[noreturn]] inline void rethrowMessage(const wchar_t* location) const;
    [[noreturn]] inline void rethrowClass(const wchar_t* className, const wchar_t* method) const;
    [[noreturn]] inline void rethrowGeneric(const wchar_t* format, ...) const;

    /// For the handler of a destructor: records the failure, and rethrows it unless another exception unwinds the
    /// stack.
    void rethrowDestructor(const wchar_t* className);

    void appendCaughtClass(const wchar_t* className, const wchar_t* method) noexcept;
    void appendSevereCaught(const wchar_t* location) noexcept;
    void appendSevereCaughtClass(const wchar_t* className, const wchar_t* method) noexcept;
    void appendCaughtAndThrownClass(const wchar_t* className, const wchar_t* method) noexcept;
    void appendSevereCaughtAndThrownClass(const wchar_t* className, const wchar_t* method) noexcept;

    /// Handles a severe error (any exception that is not an `Exception`) without rethrowing it: logs its record.
    static void catchSevere(const wchar_t* location) noexcept;
    static void catchSevereClass(const wchar_t* className, const wchar_t* method) noexcept;
    static void catchSevereGeneric(const wchar_t* format, ...) noexcept;

    /// Throws a new `Exception` for a severe error.
    [[noreturn]] static void throwSevere(const wchar_t* location);
    [[noreturn]] static void throwSevereClass(const wchar_t* className, const wchar_t* method);
    [[noreturn]] static void throwSevereGeneric(const wchar_t* format, ...);

    /// The same for the handler of a destructor. While another exception unwinds the stack, the error is recorded, and
    /// nothing is thrown.
    static void throwSevereDestructor(const wchar_t* className);

    /// Disables (`true`) or enables (`false`) the error log for the calling thread. Calls do not nest. Exceptions still
    /// collect their messages. The setting ends with the thread, so a later thread with the same id is not affected.
    static void DisableThreadErrorLogging(bool disable) noexcept;
    static bool IsThreadErrorLoggingDisabled() noexcept;

    /// \}
    /// \name Error log
    /// The log is a file with one line of text per message. Any number of processes and threads may write to the file;
    /// each writer locks the whole file. A size limit is a number of bytes. 0 switches the log off. With 1 or more, a
    /// file that has grown beyond the limit is moved to its backup (".001" appended), unless it has 2 GiB or more. With
    /// a negative limit the file grows without bound. The computer name in the lines is queried once, because it
    /// changes only at a restart.
    /// \{

    static const long long DefaultLogSize = 1000000;
    static const long long LargeErrorLogSize = 10000000;

    /// Sets the path of the file, in the process's narrow code page. Only the first 1023 bytes of the path are used. A
    /// null or empty path selects the default file "C:\TalvenorError.txt". If `size` is 1 or more, the call also sets
    /// the size limit.
    ///
    /// Unless the process has an invalid-parameter handler, the call installs a handler for invalid parameters of
    /// runtime functions. If the runtime passes details, the handler logs them as a warning. The release runtime
    /// passes no details, so the handler then logs nothing. The start-up code of mingw-w64 installs another handler. So
    /// a program built with mingw-w64 must first call `_set_invalid_parameter_handler(nullptr)` to get the library's
    /// handler.
    ///
    /// A wide path is converted by the current locale. If it cannot be converted, the path becomes the text "Error in
    /// text conversion", so the log is a file of this name in the current directory.
    static void SetErrorLogLocation(const char* path, long long size) noexcept;
    static void SetErrorLogLocation(const wchar_t* path, long long size) noexcept;

    /// Sets the size limit; values below -1 are ignored. Only this function can set the limits 0 and -1.
    static void SetErrorLogSize(long long size) noexcept;

    /// The mirror: while it is on, `MirrorErrorMessage` also writes messages whose `force` is false. It is off at load.
    /// For all messages of the library, `force` is true.
    static bool GetMirrorErrorLog() noexcept { return m_mirrorToErrorLog; }
    static void SetMirrorErrorLog(bool mirror) noexcept { m_mirrorToErrorLog = mirror; }

    /// Switches the mirror off. The file and the size limit are unchanged.
    static void ResetClass() noexcept { m_mirrorToErrorLog = false; }

    /// \}
    /// \name Diagnostic channels
    /// Unless a comment below says otherwise, each call writes one line to the error log: a prefix and the rendered
    /// message. A call needs at most 20 KB of stack in its wide form and 28 KB in its narrow form, in addition to the
    /// stack of the runtime and the system.
    /// \{

    /// Writes "WARN: " and the message.
    VOREL_PRINTF(1, 2) static void warn(const char* format, ...) noexcept;
    static void warn(const wchar_t* format, ...) noexcept;

    /// `warn` for generated language bindings.
    VOREL_PRINTF(1, 2) static void swigwarn(const char* format, ...) noexcept;
    static void swigwarn(const wchar_t* format, ...) noexcept;

    /// Writes "WARN: class::method: message".
    static void warnClass(const wchar_t* className, const wchar_t* method, const wchar_t* format, ...) noexcept;

    /// Writes "DEBUG: target: message" if the target is switched on. `debugClass` writes "DEBUG: class::method: target:
    /// message". In programs compiled with GCC, a call of `debug` or `debugClass` costs one load and one branch until a
    /// target is switched on for the first time.
    VOREL_PRINTF(2, 3) static void debug(const char* target, const char* format, ...) noexcept;
    static void debug(const wchar_t* target, const wchar_t* format, ...) noexcept;
    static void vDebug(const char* target, const char* format, va_list args) noexcept;
    static void vDebug(const wchar_t* target, const wchar_t* format, va_list args) noexcept;
    static void debugClass(const wchar_t* className, const wchar_t* method, const wchar_t* target,
                           const wchar_t* format, ...) noexcept;

    /// Writes "prefix: message" to the file `logPath` with the size limit `size`. If `logPath` is null or empty, writes
    /// to the current file. If `size` is 0, writes nothing. If `size` is negative, the current limit applies; if the
    /// current limit is 0, the line is written without a limit. `logClass` writes "prefix: class::method: message".
    VOREL_PRINTF(4, 5)
    static void log(const char* logPath, long long size, const char* prefix, const char* format, ...) noexcept;
    static void log(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* format, ...) noexcept;
    static void logClass(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* className,
                         const wchar_t* method, const wchar_t* format, ...) noexcept;

    /// Does nothing.
    VOREL_PRINTF(1, 2) static void trace(const char* format, ...) noexcept;
    static void trace(const wchar_t* format, ...) noexcept;
    static void traceClass(const wchar_t* className, const wchar_t* method, const wchar_t* format, ...) noexcept;
    static void traceCallStack(std::FILE* stream) noexcept;

    /// Switches a debug target on or off; a null name is ignored. Names are compared exactly. Narrow and wide names are
    /// separate by design: a target switched on by its narrow name is not active under the wide name. The wide target
    /// "LogsIncludeMsecs" adds milliseconds to every line of the log. The call does not lock: another thread that uses
    /// the same target at the same time sees the state before or after the call.
    /// \throws MemoryException if a new name cannot be allocated; the target stays off.
    static void setDebugTarget(const char* name, bool active);
    static void setDebugTarget(const wchar_t* name, bool active);
    static bool isDebugTargetActive(const char* name) noexcept;
    static bool isDebugTargetActive(const wchar_t* name) noexcept;

    /// \}

protected:
    /// Renders a message, adds it to the stack, and logs it unless logging is delayed.
    void SetMessageOnStack(const wchar_t* fmt, va_list args) noexcept;
    void SetMessageOnStack(const char* fmt, va_list args) noexcept;

    /// Replaces the message at `index` by a rendered text; an index out of range is ignored. Nothing is logged.
    void UpdateMessageOnStack(unsigned int index, const wchar_t* fmt, va_list args) noexcept;

    /// Removes all messages.
    void CleanAll() noexcept;

    /// Copies the messages, their locations and the mark of `markHasTracedProtocolStateInfo`. Clears the texts that
    /// `getErrorMessageBlock` and `getCharErrorMessageBlock` have returned.
    void AssignFrom(const Exception& source) noexcept;

    /// Appends one line to the log `logPath` (null or empty: the current file) with the size limit `maxSize`. If
    /// `maxSize` is 0, or the log is disabled for the calling thread, writes nothing. If `maxSize` is negative, the
    /// current limit applies; if the current limit is 0, the line is written without a limit. A null `prefix` is
    /// written as "NULL Method", a null `message` as "NULL Message". If `force` is false, the line is written only
    /// while the mirror is on. A line that cannot be written is dropped silently.
    static void MirrorErrorMessage(const char* logPath, long long maxSize, const char* prefix, const wchar_t* message,
                                   bool force) noexcept;

    /// The current size limit in bytes.
    static long long CurrentLogSize;

private:
    friend struct detail::LogPath;

    struct StackEntry {
        BaseString<wchar_t> message;
        BaseString<wchar_t> location;
    };

    /// The messages, oldest first. Only the library changes them. This is not a standard container, because some
    /// standard containers have another layout in debug builds.
    class MessageStack {
    public:
        MessageStack() noexcept = default;
        MessageStack(const MessageStack&) = delete;
        MessageStack& operator=(const MessageStack&) = delete;
        ~MessageStack();

        [[nodiscard]] std::size_t size() const noexcept { return static_cast<std::size_t>(m_end - m_begin); }
        [[nodiscard]] const StackEntry* begin() const noexcept { return m_begin; }
        [[nodiscard]] const StackEntry* end() const noexcept { return m_end; }
        StackEntry& operator[](std::size_t index) noexcept { return m_begin[index]; }
        const StackEntry& operator[](std::size_t index) const noexcept { return m_begin[index]; }

        /// Removes entries at the end, or adds empty ones. If memory runs out, returns false and changes nothing.
        bool resize(std::size_t count) noexcept;

    private:
        bool grow(std::size_t capacity) noexcept;

        StackEntry* m_begin = nullptr;
        StackEntry* m_end = nullptr;
        StackEntry* m_capacityEnd = nullptr;
    };

    static constexpr unsigned int MaxPathSize = 1024;

    /// An exception with the rendered location as its only message. Nothing is logged.
    static inline Exception locationOf(const wchar_t* format, va_list args) noexcept;

    /// Throws a copy with the object's own class. If an override of `rethrow` returns, throws a copy of class
    /// `Exception`.
    [[noreturn]] inline void throwCopy() const;

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

    VOREL_BEGIN_OWN_MEMBERS
    MessageStack m_stack;
    bool m_delayedLogging = false;
    bool m_hasTracedProtocolStateInfo = false;
    mutable BaseString<char> m_charBlock;
    mutable BaseString<wchar_t> m_wideBlock;
    VOREL_END_OWN_MEMBERS
};

static_assert(sizeof(Exception) == 72, "exceptions have the same layout with every compiler, in debug builds too");

#if defined(__GNUC__) && !defined(__clang__) && !defined(VOREL_BUILDING_DLL)

// GCC can forward the variable arguments of an inlined function. So programs compiled with GCC test `DebugTargetsUsed`
// inline, and call the library only after a target was switched on. Programs compiled with other compilers always call
// the library, which makes the same test.

namespace detail {

// Aliases, by linker name, of the exported `Exception::debug`, `debugClass` and `isDebugTargetActive`.
VOREL_API void debugIfActive(const char* target, const char* format, ...) noexcept
    __asm__("_ZN5vorel9Exception5debugEPKcS2_z");
VOREL_API void debugIfActive(const wchar_t* target, const wchar_t* format, ...) noexcept
    __asm__("_ZN5vorel9Exception5debugEPKwS2_z");
VOREL_API void debugClassIfActive(const wchar_t* className, const wchar_t* method, const wchar_t* target,
                                  const wchar_t* format, ...) noexcept
    __asm__("_ZN5vorel9Exception10debugClassEPKwS2_S2_S2_z");
VOREL_API bool isTargetActive(const char* name) noexcept __asm__("_ZN5vorel9Exception19isDebugTargetActiveEPKc");
VOREL_API bool isTargetActive(const wchar_t* name) noexcept __asm__("_ZN5vorel9Exception19isDebugTargetActiveEPKw");

}  // namespace detail

// gnu_inline: a call that is not inlined, and the address of the function, refer to the exported function.

[[gnu::gnu_inline, gnu::always_inline]] inline void Exception::debug(const char* target, const char* format,
                                                                     ...) noexcept {
    if (DebugTargetsUsed.load(std::memory_order_relaxed)) {
        detail::debugIfActive(target, format, __builtin_va_arg_pack());
    }
}

[[gnu::gnu_inline, gnu::always_inline]] inline void Exception::debug(const wchar_t* target, const wchar_t* format,
                                                                     ...) noexcept {
    if (DebugTargetsUsed.load(std::memory_order_relaxed)) {
        detail::debugIfActive(target, format, __builtin_va_arg_pack());
    }
}

[[gnu::gnu_inline, gnu::always_inline]] inline void Exception::debugClass(const wchar_t* className,
                                                                          const wchar_t* method, const wchar_t* target,
                                                                          const wchar_t* format, ...) noexcept {
    if (DebugTargetsUsed.load(std::memory_order_relaxed)) {
        detail::debugClassIfActive(className, method, target, format, __builtin_va_arg_pack());
    }
}

[[gnu::gnu_inline, gnu::always_inline]] inline bool Exception::isDebugTargetActive(const char* name) noexcept {
    return DebugTargetsUsed.load(std::memory_order_relaxed) && detail::isTargetActive(name);
}

[[gnu::gnu_inline, gnu::always_inline]] inline bool Exception::isDebugTargetActive(const wchar_t* name) noexcept {
    return DebugTargetsUsed.load(std::memory_order_relaxed) && detail::isTargetActive(name);
}

#endif

}  // namespace vorel

#include "vorel/exceptions/ConstHandlers.h"

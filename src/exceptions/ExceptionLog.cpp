/// \file
/// The diagnostic channels. Each channel except `trace` renders the caller's message, adds its prefixes, and writes one
/// line, even if the mirror is off (see `GetMirrorErrorLog`). The line is written to the error log, unless the caller
/// names another file for `log`. `debug` writes only if its target is active. No channel writes if the size limit is 0
/// (for `log`, the parameter `size`), or if the log is disabled for the calling thread. `trace`, `traceClass` and
/// `traceCallStack` do nothing.

#include <initializer_list>
#include <string_view>
#include <type_traits>

#include "algorithms/Attributes.h"
#include "core/Format.h"
#include "exceptions/LocaleText.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

namespace {

using baseutil::MessageText;

/// The prefix of a complete line, and the prefix of a line whose text is truncated or could not be rendered.
struct Prefix {
    [[nodiscard]] const char* choose(bool isTruncated) const noexcept { return isTruncated ? truncated : plain; }

    const char* plain;
    const char* truncated;
};

constexpr Prefix kWarn{"WARN: ", "WARN Truncated: "};
constexpr Prefix kDebug{"DEBUG: ", "DEBUG Truncated: "};
constexpr Prefix kCallerPrefix{"%hs: ", "%hs Truncated: "};

/// The text that the runtime prints for `text`: "(null)" for a null pointer.
std::wstring_view textOrNull(const wchar_t* text) noexcept {
    return text ? text : L"(null)";
}

/// A narrow message, converted to wide. The narrow buffer is released from the stack before the line is written.
class NarrowMessage {
public:
    NarrowMessage(const char* format, va_list args) noexcept : m_truncated(!render(format, args, m_wide)) {}

    [[nodiscard]] const wchar_t* text() const noexcept { return m_wide.view().data(); }
    [[nodiscard]] bool truncated() const noexcept { return m_truncated; }
    [[nodiscard]] const char* choose(const Prefix& prefix) const noexcept { return prefix.choose(m_truncated); }

private:
    /// Returns false if the message is truncated or cannot be rendered.
    VOREL_NOINLINE static bool render(const char* format, va_list args, BaseString<wchar_t>& wide) noexcept {
        const MessageText<char> narrow(format, args);
        detail::mbs2wcs(narrow.text(), wide);
        return narrow.text() && !narrow.truncated();
    }

    BaseString<wchar_t> m_wide;
    bool m_truncated;
};

/// A wide message and its prefixes. Both share one buffer, because a warning must work on a thread with little stack.
class ChannelText {
public:
    ChannelText(const wchar_t* format, va_list args) noexcept : m_line(format, args) {
        m_text = m_line.text() ? m_line.text() : L"";
        m_truncated = m_line.truncated() || !m_line.text();
    }

    /// `message` must outlive this object.
    explicit ChannelText(const NarrowMessage& message) noexcept
        : m_text(message.text()), m_truncated(message.truncated()) {}

    /// Changes the text to "target: message".
    void addTarget(const wchar_t* target) noexcept { decorate({textOrNull(target), L": "}); }

    /// Changes the text to "class::method: message".
    void addClass(const wchar_t* className, const wchar_t* method) noexcept {
        decorate({textOrNull(className), L"::", textOrNull(method), L": "});
    }

    [[nodiscard]] const wchar_t* text() const noexcept { return m_text; }
    [[nodiscard]] const char* choose(const Prefix& prefix) const noexcept { return prefix.choose(m_truncated); }

private:
    void decorate(std::initializer_list<std::wstring_view> front) noexcept {
        m_line.compose(front, m_text);
        m_text = m_line.text();
        m_truncated = m_truncated || m_line.truncated();
    }

    MessageText<wchar_t> m_line;
    const wchar_t* m_text;
    bool m_truncated;
};

/// The caller's prefix as it appears in the line. The buffer on the stack is smaller for a wide prefix than for a
/// narrow prefix. The conversion of a wide prefix needs the heap anyway, so a long wide prefix is also rendered on the
/// heap.
template <class T>
class CallerPrefix {
public:
    template <class Line>
    CallerPrefix(const T* prefix, const Line& line) noexcept {
        if constexpr (std::is_same_v<T, char>) {
            m_rendered.renderf(line.choose(kCallerPrefix), prefix);
        } else {
            BaseString<char> converted;
            detail::wcs2mbs(prefix, converted);
            m_rendered.renderf(line.choose(kCallerPrefix), prefix ? converted.view().data() : nullptr);
        }
    }

    [[nodiscard]] const char* text() const noexcept { return m_rendered.text(); }

private:
    MessageText<char, std::is_same_v<T, char> ? 8000 : 500> m_rendered;
};

}  // namespace

void Exception::warn(const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const NarrowMessage line(format, args);
    va_end(args);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kWarn), line.text(), true);
}

void Exception::warn(const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const ChannelText line(format, args);
    va_end(args);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kWarn), line.text(), true);
}

void Exception::swigwarn(const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const NarrowMessage line(format, args);
    va_end(args);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kWarn), line.text(), true);
}

void Exception::swigwarn(const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const ChannelText line(format, args);
    va_end(args);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kWarn), line.text(), true);
}

void Exception::warnClass(const wchar_t* className, const wchar_t* method, const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    ChannelText line(format, args);
    va_end(args);
    line.addClass(className, method);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kWarn), line.text(), true);
}

void Exception::debug(const char* target, const char* format, ...) noexcept {
    if (isDebugTargetActive(target)) {
        va_list args;
        va_start(args, format);
        vDebugInternal(target, format, args);
        va_end(args);
    }
}

void Exception::debug(const wchar_t* target, const wchar_t* format, ...) noexcept {
    if (isDebugTargetActive(target)) {
        va_list args;
        va_start(args, format);
        vDebugInternal(target, format, args);
        va_end(args);
    }
}

void Exception::vDebug(const char* target, const char* format, va_list args) noexcept {
    if (isDebugTargetActive(target)) {
        vDebugInternal(target, format, args);
    }
}

void Exception::vDebug(const wchar_t* target, const wchar_t* format, va_list args) noexcept {
    if (isDebugTargetActive(target)) {
        vDebugInternal(target, format, args);
    }
}

void Exception::debugClass(const wchar_t* className, const wchar_t* method, const wchar_t* target,
                           const wchar_t* format, ...) noexcept {
    if (isDebugTargetActive(target)) {
        va_list args;
        va_start(args, format);
        vDebugClassInternal(className, method, target, format, args);
        va_end(args);
    }
}

void Exception::vDebugInternal(const char* target, const char* format, va_list args) noexcept {
    const NarrowMessage message(format, args);
    ChannelText line(message);
    BaseString<wchar_t> wideTarget;
    detail::mbs2wcs(target, wideTarget);
    line.addTarget(wideTarget.view().data());
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kDebug), line.text(), true);
}

void Exception::vDebugInternal(const wchar_t* target, const wchar_t* format, va_list args) noexcept {
    ChannelText line(format, args);
    line.addTarget(target);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kDebug), line.text(), true);
}

void Exception::vDebugClassInternal(const wchar_t* className, const wchar_t* method, const wchar_t* target,
                                    const wchar_t* format, va_list args) noexcept {
    ChannelText line(format, args);
    line.addTarget(target);
    line.addClass(className, method);
    MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, line.choose(kDebug), line.text(), true);
}

void Exception::log(const char* logPath, long long size, const char* prefix, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const NarrowMessage line(format, args);
    va_end(args);
    MirrorErrorMessage(logPath, size, CallerPrefix(prefix, line).text(), line.text(), true);
}

void Exception::log(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const ChannelText line(format, args);
    va_end(args);
    MirrorErrorMessage(logPath, size, CallerPrefix(prefix, line).text(), line.text(), true);
}

void Exception::logClass(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* className,
                         const wchar_t* method, const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    ChannelText line(format, args);
    va_end(args);
    line.addClass(className, method);
    MirrorErrorMessage(logPath, size, CallerPrefix(prefix, line).text(), line.text(), true);
}

void Exception::trace(const char*, ...) noexcept {}

void Exception::trace(const wchar_t*, ...) noexcept {}

void Exception::traceClass(const wchar_t*, const wchar_t*, const wchar_t*, ...) noexcept {}

void Exception::traceCallStack(std::FILE*) noexcept {}

}  // namespace vorel

/// \file
/// The diagnostic channels. Each renders the caller's message, decorates it, and hands one line to the error log; the
/// mirror switch never silences them.

#include "LibraryState.h"
#include "core/Print.h"
#include "exceptions/DebugTargets.h"
#include "exceptions/LocaleText.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/DebugSetting.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

bool util::g_DebugSetting = false;

namespace {

using baseutil::MessageText;

/// What stands in front of a line whose text is whole, and of one that had to be cut.
struct Prefix {
    const char* plain;
    const char* truncated;
};

constexpr Prefix kWarn{"WARN: ", "WARN Truncated: "};
constexpr Prefix kDebug{"DEBUG: ", "DEBUG Truncated: "};
constexpr Prefix kCallersOwn{"%hs: ", "%hs Truncated: "};

/// The text of one line: the caller's message, wide, and what decorates it. A message that cannot be rendered counts as
/// cut to nothing.
class ChannelText {
public:
    ChannelText(const wchar_t* format, va_list args) noexcept : m_message(format, args) {
        m_truncated = m_message.truncated();
        setText(m_message.text());
    }

    ChannelText(const char* format, va_list args) noexcept {
        const MessageText<char> narrow(format, args);
        m_truncated = narrow.truncated();
        detail::mbs2wcs(narrow.text(), m_converted);
        setText(narrow.text() ? m_converted.view().data() : nullptr);
    }

    /// Puts a debug target in front: "target: message".
    void addTarget(const wchar_t* target) noexcept { decorate(m_withTarget, L"%ls: %ls", target, m_text); }

    /// Puts a class and a method in front: "class::method: message".
    void addClass(const wchar_t* className, const wchar_t* method) noexcept {
        decorate(m_withClass, L"%ls::%ls: %ls", className, method, m_text);
    }

    const wchar_t* text() const noexcept { return m_text; }
    const char* choose(const Prefix& prefix) const noexcept { return m_truncated ? prefix.truncated : prefix.plain; }

private:
    template <class... Texts>
    void decorate(MessageText<wchar_t>& decorated, const wchar_t* format, Texts... texts) noexcept {
        decorated.renderf(format, texts...);
        m_truncated = m_truncated || decorated.truncated();
        setText(decorated.text());
    }

    void setText(const wchar_t* text) noexcept {
        m_text = text ? text : L"";
        m_truncated = m_truncated || !text;
    }

    MessageText<wchar_t> m_message;
    BaseString<wchar_t> m_converted;
    MessageText<wchar_t> m_withTarget;
    MessageText<wchar_t> m_withClass;
    const wchar_t* m_text = nullptr;
    bool m_truncated = false;
};

/// The caller's own prefix as it stands on the line.
class OwnPrefix {
public:
    OwnPrefix(const char* prefix, const ChannelText& line) noexcept {
        m_rendered.renderf(line.choose(kCallersOwn), prefix);
    }
    OwnPrefix(const wchar_t* prefix, const ChannelText& line) noexcept {
        BaseString<char> converted;
        detail::wcs2mbs(prefix, converted);
        m_rendered.renderf(line.choose(kCallersOwn), prefix ? converted.view().data() : nullptr);
    }

    [[nodiscard]] const char* text() const noexcept { return m_rendered.text(); }

private:
    MessageText<char> m_rendered;
};

}  // namespace

void Exception::warn(const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const ChannelText line(format, args);
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
    const ChannelText line(format, args);
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
    ChannelText line(format, args);
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
    const ChannelText line(format, args);
    va_end(args);
    MirrorErrorMessage(logPath, size, OwnPrefix(prefix, line).text(), line.text(), true);
}

void Exception::log(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const ChannelText line(format, args);
    va_end(args);
    MirrorErrorMessage(logPath, size, OwnPrefix(prefix, line).text(), line.text(), true);
}

void Exception::logClass(const char* logPath, long long size, const wchar_t* prefix, const wchar_t* className,
                         const wchar_t* method, const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    ChannelText line(format, args);
    va_end(args);
    line.addClass(className, method);
    MirrorErrorMessage(logPath, size, OwnPrefix(prefix, line).text(), line.text(), true);
}

void Exception::trace(const char*, ...) noexcept {}

void Exception::trace(const wchar_t*, ...) noexcept {}

void Exception::traceClass(const wchar_t*, const wchar_t*, const wchar_t*, ...) noexcept {}

void Exception::traceCallStack(std::FILE*) noexcept {}

void Exception::setDebugTarget(const char* name, bool active) {
    detail::guarded(L"Exception", L"setDebugTarget", [=] {
        if (detail::LibraryState* const state = detail::libraryState(); state && name) {
            state->narrowDebugTargets.set(name, active);
        }
    });
}

void Exception::setDebugTarget(const wchar_t* name, bool active) {
    detail::guarded(L"Exception", L"setDebugTarget", [=] {
        if (detail::LibraryState* const state = detail::libraryState(); state && name) {
            state->wideDebugTargets.set(name, active);
        }
    });
}

bool Exception::isDebugTargetActive(const char* name) noexcept {
    return DebugTargetsUsed.load(std::memory_order_relaxed) && name && isDebugTargetActiveInternal(name);
}

bool Exception::isDebugTargetActive(const wchar_t* name) noexcept {
    return DebugTargetsUsed.load(std::memory_order_relaxed) && name && isDebugTargetActiveInternal(name);
}

bool Exception::isDebugTargetActiveInternal(const char* name) noexcept {
    const detail::LibraryState* const state = detail::libraryState();
    return state && state->narrowDebugTargets.isActive(name);
}

bool Exception::isDebugTargetActiveInternal(const wchar_t* name) noexcept {
    const detail::LibraryState* const state = detail::libraryState();
    return state && state->wideDebugTargets.isActive(name);
}

}  // namespace vorel

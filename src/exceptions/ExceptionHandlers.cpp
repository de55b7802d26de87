/// \file
/// The functions of `Exception` that a handler calls. Each function adds a record to the caught exception, or to a new
/// `Exception` if an exception of another class was caught. Then `catch…` functions remove the messages, `append…`
/// functions keep them, and `rethrow…` and `throw…` functions throw the exception. The functions for destructors throw
/// nothing while another exception unwinds the stack.

#include <cstdarg>
#include <exception>

#include "core/Format.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/RecordFormats.h"

namespace vorel {

namespace {

/// A location rendered from a format.
class Location {
public:
    Location(const wchar_t* format, va_list args) noexcept : m_rendered(format, args) {}

    [[nodiscard]] const wchar_t* text() const noexcept {
        return m_rendered.text() ? m_rendered.text() : baseutil::kUnformattable;
    }

private:
    baseutil::MessageText<wchar_t> m_rendered;
};

bool isUnwinding() noexcept {
    return std::uncaught_exceptions() > 0;
}

/// Calls `rethrow` and allows an override to return. `rethrow` is declared noreturn, so a compiler may omit the code
/// after a direct call. The compiler cannot omit this code after a call through a pointer whose value it does not know.
// cppcheck-suppress constParameter; rethrow() is not const
void rethrowByOverride(Exception& e) {
    void (Exception::*const volatile rethrow)() = &Exception::rethrow;
    (e.*rethrow)();
}

}  // namespace

void Exception::catchMessage(const wchar_t* location) noexcept {
    appendMessage(vexCatchVorel, location);
    CleanAll();
}

void Exception::catchClass(const wchar_t* className, const wchar_t* method) noexcept {
    appendMessage(vexCatchClassVorel, className, method);
    CleanAll();
}

void Exception::catchGeneric(const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const Location location(format, args);
    va_end(args);
    catchMessage(location.text());
}

void Exception::rethrowMessage(const wchar_t* location) {
    appendMessage(vexCatchAndThrowVorel, location);
    rethrowByOverride(*this);
    Exception::rethrow();
}

void Exception::rethrowClass(const wchar_t* className, const wchar_t* method) {
    appendMessage(vexCatchAndThrowClassVorel, className, method);
    rethrowByOverride(*this);
    Exception::rethrow();
}

void Exception::rethrowGeneric(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const Location location(format, args);
    va_end(args);
    rethrowMessage(location.text());
}

void Exception::rethrowDestructor(const wchar_t* className) {
    if (isUnwinding()) {
        appendMessage(vexDestructorCaught, className, className);
        return;
    }
    appendMessage(vexDestructorThrown, className, className);
    rethrowByOverride(*this);
}

void Exception::appendCaughtClass(const wchar_t* className, const wchar_t* method) noexcept {
    appendMessage(vexCatchClassVorel, className, method);
}

void Exception::appendSevereCaught(const wchar_t* location) noexcept {
    appendMessage(vexCatchSevere, location);
}

void Exception::appendSevereCaughtClass(const wchar_t* className, const wchar_t* method) noexcept {
    appendMessage(vexCatchClassSevere, className, method);
}

void Exception::appendCaughtAndThrownClass(const wchar_t* className, const wchar_t* method) noexcept {
    appendMessage(vexCatchAndThrowClassVorel, className, method);
}

void Exception::appendSevereCaughtAndThrownClass(const wchar_t* className, const wchar_t* method) noexcept {
    appendMessage(vexCatchAndThrowClassSevere, className, method);
}

void Exception::catchSevere(const wchar_t* location) noexcept {
    Exception().appendSevereCaught(location);
}

void Exception::catchSevereClass(const wchar_t* className, const wchar_t* method) noexcept {
    Exception().appendSevereCaughtClass(className, method);
}

void Exception::catchSevereGeneric(const wchar_t* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    const Location location(format, args);
    va_end(args);
    catchSevere(location.text());
}

void Exception::throwSevere(const wchar_t* location) {
    throw Exception(vexCatchAndThrowSevere, location);
}

void Exception::throwSevereClass(const wchar_t* className, const wchar_t* method) {
    throw Exception(vexCatchAndThrowClassSevere, className, method);
}

void Exception::throwSevereGeneric(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const Location location(format, args);
    va_end(args);
    throwSevere(location.text());
}

void Exception::throwSevereDestructor(const wchar_t* className) {
    if (isUnwinding()) {
        const Exception suppressed(vexDestructorSevereCaught, className, className);
        return;
    }
    throw Exception(vexDestructorSevereThrown, className, className);
}

}  // namespace vorel

#include "core/Format.h"

#include <type_traits>

#include "core/PlainFormat.h"
#include "platform/IgnoreInvalidParameters.h"
#include "vorel/core/Format.h"

namespace vorel {

namespace baseutil {

namespace {

// The runtime's options are numbers here, because the headers of some compilers do not name them.
constexpr unsigned long long kLegacyNullTermination = 1;
constexpr unsigned long long kDefault = 4;  // "%s" in a wide format is wide text

int print(char* buffer, std::size_t size, const char* fmt, va_list args) noexcept {
    return __stdio_common_vsprintf(kDefault | kLegacyNullTermination, buffer, size, fmt, nullptr, args);
}

int print(wchar_t* buffer, std::size_t size, const wchar_t* fmt, va_list args) noexcept {
    return __stdio_common_vswprintf(kDefault | kLegacyNullTermination, buffer, size, fmt, nullptr, args);
}

int print(std::FILE* stream, const char* fmt, va_list args) noexcept {
    return __stdio_common_vfprintf(kDefault, stream, fmt, nullptr, args);
}

int print(std::FILE* stream, const wchar_t* fmt, va_list args) noexcept {
    return __stdio_common_vfwprintf(kDefault, stream, fmt, nullptr, args);
}

/// A call with a format that the runtime rejects just fails. Without the object `silent`, the program's
/// invalid-parameter handler could abort, or the runtime would end a program that has no such handler.
template <class T>
int boundedByRuntime(T* buffer, std::size_t size, const T* fmt, va_list args) noexcept {
    const platform::IgnoreInvalidParameters silent;
    const int written = print(buffer, size, fmt, args);
    return written < 0 ? -1 : written;
}

template <class T>
int bounded(T* buffer, std::size_t size, const T* fmt, va_list args) noexcept {
    const int written = renderPlainFormat(buffer, size, fmt, args);
    return written >= 0 ? written : boundedByRuntime(buffer, size, fmt, args);
}

template <class T>
T* withFallback(T* buffer, std::size_t size, T*& heapOut, bool& truncatedOut, const T* fmt, va_list args) noexcept {
    truncatedOut = false;
    if (!fmt) {
        return nullptr;
    }
    if (bounded(buffer, size - 1, fmt, args) >= 0) {
        buffer[size - 1] = 0;
        return buffer;
    }
    const int needed = util::calculateSnprintFBufferSize(fmt, args);
    if (needed < 0) {
        return nullptr;
    }
    const std::size_t units = static_cast<std::size_t>(needed) + 1;
    heapOut = static_cast<T*>(std::malloc(units * sizeof(T)));
    if (heapOut) {
        // A text that became longer after the measurement may have no terminator.
        const int written = bounded(heapOut, units, fmt, args);
        return written >= 0 && written <= needed ? heapOut : nullptr;
    }
    buffer[size - 1] = 0;
    truncatedOut = true;
    return buffer;
}

/// Counts the units by rendering to the null device. If the null device cannot be opened, the print function is still
/// called and reports the failure.
template <class T>
int measure(const T* fmt, va_list args) noexcept {
    const platform::IgnoreInvalidParameters silent;
    std::FILE* const nullDevice = std::fopen("nul", "wb");
    const int count = print(nullDevice, fmt, args);
    if (nullDevice) {
        (void)std::fclose(nullDevice);
    }
    return count;
}

}  // namespace

int vboundedFormat(char* buffer, std::size_t size, const char* fmt, va_list args) noexcept {
    return bounded(buffer, size, fmt, args);
}

int vboundedFormat(wchar_t* buffer, std::size_t size, const wchar_t* fmt, va_list args) noexcept {
    return bounded(buffer, size, fmt, args);
}

int boundedFormat(char* buffer, std::size_t size, const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    const int written = bounded(buffer, size, fmt, args);
    va_end(args);
    return written;
}

int boundedFormat(wchar_t* buffer, std::size_t size, const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    const int written = bounded(buffer, size, fmt, args);
    va_end(args);
    return written;
}

int streamPrint(std::FILE* stream, const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    const int written = print(stream, fmt, args);
    va_end(args);
    return written;
}

char* formatWithFallback(char* buffer, std::size_t size, char*& heapOut, bool& truncatedOut, const char* fmt,
                         va_list args) noexcept {
    return withFallback(buffer, size, heapOut, truncatedOut, fmt, args);
}

wchar_t* formatWithFallback(wchar_t* buffer, std::size_t size, wchar_t*& heapOut, bool& truncatedOut,
                            const wchar_t* fmt, va_list args) noexcept {
    return withFallback(buffer, size, heapOut, truncatedOut, fmt, args);
}

}  // namespace baseutil

namespace util {

int calculateSnprintFBufferSize(const char* fmt, va_list args) {
    return baseutil::measure(fmt, args);
}

int calculateSnprintFBufferSize(const wchar_t* fmt, va_list args) {
    return baseutil::measure(fmt, args);
}

}  // namespace util

}  // namespace vorel

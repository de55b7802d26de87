/// \file
/// All operations that take a format, called with a format that the runtime rejects, in both widths. `%n` is an invalid
/// parameter for the runtime's print functions.
#pragma once

#include <vorel/vorelCore.h>

namespace test {

/// An operation called with such a format.
struct RefusedFormat {
    const char* name;
    void (*use)();
};

namespace detail {

template <class T>
void expectUnformattable(const T* format) {
    int count = 0;
    try {
        vorel::BaseString<T>(format).format(format, &count);
    } catch (const vorel::Exception&) {  // "Unable to format: …"
    }
}

template <class T>
void addRefusedMessage(const T* format) {
    int count = 0;
    vorel::Exception(format, &count).appendMessage(format, &count);
}

template <class T>
void logRefusedLines(const T* format) {
    int count = 0;
    vorel::Exception::warn(format, &count);
    vorel::Exception::swigwarn(format, &count);
}

}  // namespace detail

inline constexpr RefusedFormat kRefusedFormats[] = {
    {"narrow string", [] { detail::expectUnformattable("a%n"); }},
    {"wide string", [] { detail::expectUnformattable(L"a%n"); }},
    {"narrow message", [] { detail::addRefusedMessage("a%n"); }},
    {"wide message", [] { detail::addRefusedMessage(L"a%n"); }},
    {"narrow warning", [] { detail::logRefusedLines("a%n"); }},
    {"wide warning", [] { detail::logRefusedLines(L"a%n"); }},
    {"location",
     [] {
         int count = 0;
         vorel::Exception::catchSevereGeneric(L"a%n", &count);
     }},
};

}  // namespace test

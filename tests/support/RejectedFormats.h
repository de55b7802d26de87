/// \file
/// Calls of operations that have a format parameter, with a narrow or wide format that the runtime rejects. The format
/// contains `%n`, which the runtime's print functions treat as an invalid parameter.
#pragma once

#include <vorel/vorelCore.h>

namespace test {

/// A function that calls one or two operations with a format that the runtime rejects.
struct RejectedFormat {
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
void addRejectedMessage(const T* format) {
    int count = 0;
    vorel::Exception(format, &count).appendMessage(format, &count);
}

template <class T>
void logRejectedLines(const T* format) {
    int count = 0;
    vorel::Exception::warn(format, &count);
    vorel::Exception::swigwarn(format, &count);
}

}  // namespace detail

inline constexpr RejectedFormat kRejectedFormats[] = {
    {"narrow format of a string", [] { detail::expectUnformattable("a%n"); }},
    {"wide format of a string", [] { detail::expectUnformattable(L"a%n"); }},
    {"narrow format of an exception's message", [] { detail::addRejectedMessage("a%n"); }},
    {"wide format of an exception's message", [] { detail::addRejectedMessage(L"a%n"); }},
    {"narrow format of a warning", [] { detail::logRejectedLines("a%n"); }},
    {"wide format of a warning", [] { detail::logRejectedLines(L"a%n"); }},
    {"format of a severe error's location",
     [] {
         int count = 0;
         vorel::Exception::catchSevereGeneric(L"a%n", &count);
     }},
};

}  // namespace test

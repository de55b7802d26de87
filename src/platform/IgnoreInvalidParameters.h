/// \file
/// Calls of the runtime that answer a bad parameter with an error, and nothing else.
#pragma once

#include <cstdint>

namespace vorel::platform {

/// While one lives, a bad parameter found by the runtime on this thread only makes the call fail. Without it the
/// runtime would end a program that has installed no handler of its own.
class IgnoreInvalidParameters {
public:
    IgnoreInvalidParameters() noexcept;
    ~IgnoreInvalidParameters();

    IgnoreInvalidParameters(const IgnoreInvalidParameters&) = delete;
    IgnoreInvalidParameters& operator=(const IgnoreInvalidParameters&) = delete;

private:
    using Handler = void(__cdecl*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t);

    Handler m_before;
};

}  // namespace vorel::platform

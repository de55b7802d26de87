/// \file
/// Makes the runtime report invalid parameters only through its return values.
#pragma once

#include <cstdint>

namespace vorel::platform {

/// During its lifetime, an invalid parameter that the runtime detects on this thread only makes the call fail. Without
/// it the runtime ends a program that has no handler.
class IgnoreInvalidParameters {
public:
    IgnoreInvalidParameters() noexcept;
    ~IgnoreInvalidParameters();

    IgnoreInvalidParameters(const IgnoreInvalidParameters&) = delete;
    IgnoreInvalidParameters& operator=(const IgnoreInvalidParameters&) = delete;

private:
    using Handler = void(__cdecl*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t);

    Handler m_previous;
};

}  // namespace vorel::platform

/// \file
/// Makes the runtime report invalid parameters only through its return values.
#pragma once

#include <cstdint>

namespace vorel::platform {

/// While the object exists, a runtime function that this thread calls with an invalid parameter just fails. Otherwise
/// the runtime would call the program's handler, or end a program that has no handler.
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

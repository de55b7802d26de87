/// \file
/// The library's place among the runtime's invalid-parameter handlers.
#pragma once

#include <cstdint>

#include "core/LibraryState.h"

namespace vorel::detail {

using InvalidParameterHandler = void(__cdecl*)(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                                               unsigned int line, std::uintptr_t reserved);

/// Installs `handler` as the runtime's invalid-parameter handler, unless there is one: another's is never replaced.
/// Called under the log-settings lock, always with the same handler.
void installInvalidParameterHandler(InvalidParameterHandler handler) noexcept;

/// How often the handler was installed or found installed, less one for each removal.
[[nodiscard]] unsigned int invalidParameterHandlerInstallations() noexcept;

/// Takes the handler out again at unload, if the runtime still has it.
class SetCurrentIPH {
public:
    SetCurrentIPH() noexcept = default;
    ~SetCurrentIPH();

    SetCurrentIPH(const SetCurrentIPH&) = delete;
    SetCurrentIPH& operator=(const SetCurrentIPH&) = delete;
};

inline constinit StateObject<SetCurrentIPH> currentInvalidParameterHandler;

}  // namespace vorel::detail

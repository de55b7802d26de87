/// \file
/// Installs and removes the library's invalid-parameter handler.
#pragma once

#include <cstdint>

#include "core/LibraryState.h"

namespace vorel::detail {

using InvalidParameterHandler = void(__cdecl*)(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                                               unsigned int line, std::uintptr_t reserved);

/// Installs `handler` as the runtime's invalid-parameter handler if the runtime has none; never replaces another
/// handler. The caller must hold the log-settings lock. Only the handler of the first call is ever installed; a call
/// with another handler does nothing.
void installInvalidParameterHandler(InvalidParameterHandler handler) noexcept;

/// The number of times that the handler was installed or found installed, minus the number of removals.
[[nodiscard]] unsigned int invalidParameterHandlerInstallations() noexcept;

/// Removes the handler at unload if it is still installed.
class SetCurrentIPH {
public:
    SetCurrentIPH() noexcept = default;
    ~SetCurrentIPH();

    SetCurrentIPH(const SetCurrentIPH&) = delete;
    SetCurrentIPH& operator=(const SetCurrentIPH&) = delete;
};

inline constinit StateObject<SetCurrentIPH> currentInvalidParameterHandler;

}  // namespace vorel::detail

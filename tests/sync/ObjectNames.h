/// \file
/// Unique names for kernel objects, and functions that return whether an object exists.
#pragma once

#include <string>

#include <windows.h>

#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace test {

inline std::wstring uniqueName(const std::wstring& stem) {
    return NamedEvent::uniqueName(stem);
}

/// Whether a mutex with exactly this name exists.
inline bool mutexExists(const std::wstring& fullName) {
    return static_cast<bool>(Handle(OpenMutexW(SYNCHRONIZE, FALSE, fullName.c_str())));
}

/// Whether an event with exactly this name exists.
inline bool eventExists(const std::wstring& fullName) {
    return static_cast<bool>(Handle(OpenEventW(SYNCHRONIZE, FALSE, fullName.c_str())));
}

}  // namespace test

/// \file
/// Names of kernel objects that no other test has, and a look at whether an object of such a name is there.
#pragma once

#include <string>

#include <windows.h>

#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace test {

inline std::wstring uniqueName(const std::wstring& stem) {
    return NamedEvent::uniqueName(stem);
}

/// Whether there is a mutex of exactly this name.
inline bool mutexExists(const std::wstring& fullName) {
    return static_cast<bool>(Handle(OpenMutexW(SYNCHRONIZE, FALSE, fullName.c_str())));
}

/// Whether there is an event of exactly this name.
inline bool eventExists(const std::wstring& fullName) {
    return static_cast<bool>(Handle(OpenEventW(SYNCHRONIZE, FALSE, fullName.c_str())));
}

}  // namespace test

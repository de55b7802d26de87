/// \file
/// Loads and unloads the library, and checks the runtime's invalid-parameter handler after each step. With the argument
/// "own", the program sets its own handler before it unloads the library.
///
/// The exit code is 0, or the number of the step that failed.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <windows.h>

namespace {

void __cdecl ownHandler(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

/// The exported name of `Exception::SetErrorLogLocation(const char*, long long)`. The program looks it up, because a
/// program that links the library cannot unload it.
constexpr char kSetErrorLogLocation[] = "_ZN5vorel9Exception19SetErrorLogLocationEPKcx";
using SetErrorLogLocation = void (*)(const char*, long long);

/// The number of the step that failed, or 0.
int useLibrary(HMODULE library, bool setsOwn) {
    if (_get_invalid_parameter_handler()) {
        return 2;  // loading alone must not install a handler
    }
    const FARPROC found = GetProcAddress(library, kSetErrorLogLocation);
    if (!found) {
        return 3;
    }
    SetErrorLogLocation setLocation = nullptr;
    std::memcpy(&setLocation, &found, sizeof setLocation);
    setLocation("errors.txt", 0);
    setLocation("errors.txt", 0);  // finds the library's own handler; unloading must still remove it
    if (!_get_invalid_parameter_handler()) {
        return 4;
    }
    if (setsOwn) {
        _set_invalid_parameter_handler(&ownHandler);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const bool setsOwn = argc > 1 && std::strcmp(argv[1], "own") == 0;
    _set_invalid_parameter_handler(nullptr);  // removes the handler of the compiler's start-up code
    const HMODULE library = LoadLibraryW(L"vorelCore.dll");
    if (!library) {
        return 1;
    }
    const int failedStep = useLibrary(library, setsOwn);
    FreeLibrary(library);
    if (failedStep != 0) {
        return failedStep;
    }
    if (GetModuleHandleW(L"vorelCore.dll")) {
        return 5;
    }
    return _get_invalid_parameter_handler() == (setsOwn ? &ownHandler : nullptr) ? 0 : 6;
}

/// \file
/// Loads the library and unloads it, and looks at the runtime's invalid-parameter handler in between. With "anothers"
/// as its argument the program sets a handler of its own before it unloads the library.
///
/// Ends with 0, or with the number of the step that went wrong.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <windows.h>

namespace {

void __cdecl ownHandler(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

/// `Exception::SetErrorLogLocation(const char*, long long)`, by its exported name: a program that is linked with the
/// library could not unload it.
constexpr char kSetErrorLogLocation[] = "_ZN5vorel9Exception19SetErrorLogLocationEPKcx";
using SetErrorLogLocation = void (*)(const char*, long long);

/// The number of the step that went wrong, or 0.
int useLibrary(HMODULE library, bool anothers) {
    if (_get_invalid_parameter_handler()) {
        return 2;  // loading alone installs nothing
    }
    const FARPROC found = GetProcAddress(library, kSetErrorLogLocation);
    if (!found) {
        return 3;
    }
    SetErrorLogLocation setLocation = nullptr;
    std::memcpy(&setLocation, &found, sizeof setLocation);
    setLocation("errors.txt", 0);
    setLocation("errors.txt", 0);
    if (!_get_invalid_parameter_handler()) {
        return 4;
    }
    if (anothers) {
        _set_invalid_parameter_handler(&ownHandler);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const bool anothers = argc > 1 && std::strcmp(argv[1], "anothers") == 0;
    _set_invalid_parameter_handler(nullptr);  // the one of the compiler's start-up code
    const HMODULE library = LoadLibraryW(L"vorelCore.dll");
    if (!library) {
        return 1;
    }
    const int wrongStep = useLibrary(library, anothers);
    FreeLibrary(library);
    if (wrongStep != 0) {
        return wrongStep;
    }
    if (GetModuleHandleW(L"vorelCore.dll")) {
        return 5;
    }
    return _get_invalid_parameter_handler() == (anothers ? &ownHandler : nullptr) ? 0 : 6;
}

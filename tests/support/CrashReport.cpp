/// \file
/// Linked into every test program. A program that crashes prints the location and exits at once with the exception
/// code. It must not start a dialog or a debugger, because these would outlive the test and keep its output open.

#include <cstdio>

#include <windows.h>

namespace test {

namespace {

LONG WINAPI endProgram(EXCEPTION_POINTERS* crash) {
    const EXCEPTION_RECORD& record = *crash->ExceptionRecord;
    HMODULE module = nullptr;
    char name[MAX_PATH] = "?";
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           static_cast<const char*>(record.ExceptionAddress), &module)) {
        GetModuleFileNameA(module, name, sizeof name);
    }
    const auto offset = static_cast<const char*>(record.ExceptionAddress) - reinterpret_cast<const char*>(module);
    (void)std::fprintf(stderr, "unhandled exception %08lX at %s + 0x%llX\n", record.ExceptionCode, name,
                       static_cast<unsigned long long>(offset));
    (void)std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_CONTINUE_SEARCH;
}

[[maybe_unused]] const LPTOP_LEVEL_EXCEPTION_FILTER s_before = SetUnhandledExceptionFilter(&endProgram);

}  // namespace

}  // namespace test

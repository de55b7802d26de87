/// \file
/// Loads and unloads the DLL. This program links the DLL like the other benchmarks, but uses nothing from it, so the
/// DLL is not loaded when the program starts. The compiler's runtime is loaded at the start, as in every C++ program.

#include <cstdio>
#include <cstdlib>

#include <windows.h>

#include "support/Frame.h"

namespace {

constexpr std::size_t kLoads = 10;

bench::Pass loads(const char* name) {
    return [name] {
        for (std::size_t load = 0; load != kLoads; ++load) {
            const HMODULE module = LoadLibraryA(name);
            if (!module) {
                std::fprintf(stderr, "%s cannot be loaded: error %lu\n", name, GetLastError());
                std::exit(EXIT_FAILURE);
            }
            FreeLibrary(module);
        }
        return std::uint64_t{kLoads};
    };
}

}  // namespace

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    family.compare("LoadLibrary and FreeLibrary", kLoads, loads("vorelCore.dll"),
                   {{"an empty DLL", loads("vorel_bench_empty.dll")}});
    return family.finish();
}

#include "algorithms/Processor.h"

#if defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace vorel::algorithms {

bool detectAvx2() noexcept {
#if defined(_MSC_VER) && !defined(__clang__)
    int registers[4] = {};
    __cpuid(registers, 1);
    constexpr int kSystemSaves = 1 << 27;
    constexpr unsigned long long kWideRegisters = 6;
    if ((registers[2] & kSystemSaves) == 0 || (_xgetbv(0) & kWideRegisters) != kWideRegisters) {
        return false;
    }
    __cpuidex(registers, 7, 0);
    return (registers[1] & 1 << 5) != 0;
#else
    return __builtin_cpu_supports("avx2") != 0;
#endif
}

bool Processor::s_usesAvx2 = detectAvx2();

}  // namespace vorel::algorithms

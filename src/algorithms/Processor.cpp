#include "algorithms/Processor.h"

#if defined(_MSC_VER) && defined(_M_X64)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace vorel::algorithms {

bool detectAvx2() noexcept {
#if defined(_MSC_VER) && defined(_M_X64)
    int registers[4] = {};
    __cpuid(registers, 1);
    constexpr int kSystemSaves = 1 << 27;
    constexpr unsigned long long kWideRegisters = 6;
    if ((registers[2] & kSystemSaves) == 0 || (_xgetbv(0) & kWideRegisters) != kWideRegisters) {
        return false;
    }
    __cpuidex(registers, 7, 0);
    return (registers[1] & 1 << 5) != 0;
#elif defined(__x86_64__)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

bool Processor::s_usesAvx2 = detectAvx2();

}  // namespace vorel::algorithms

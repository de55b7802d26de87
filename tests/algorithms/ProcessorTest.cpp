#include "algorithms/Processor.h"

#include <gtest/gtest.h>

namespace {

#if defined(__x86_64__)

// The reference is the compiler's own detection.
TEST(Processor, DetectAvx2_AgreesWithTheCompiler) {
    EXPECT_EQ(vorel::algorithms::detectAvx2(), __builtin_cpu_supports("avx2") != 0);
}

#endif

}  // namespace

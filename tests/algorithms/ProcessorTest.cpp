#include "algorithms/Processor.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using vorel::algorithms::detectAvx2;
using vorel::algorithms::Processor;

TEST(Processor, DetectionMatchesTheSystem) {
    EXPECT_EQ(detectAvx2(), IsProcessorFeaturePresent(PF_AVX2_INSTRUCTIONS_AVAILABLE) != FALSE);
    EXPECT_EQ(Processor::usesAvx2(), detectAvx2());
}

}  // namespace

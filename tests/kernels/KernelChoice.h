/// \file
/// Tests that run for a kernel with AVX2 and for its plain twin, in both widths, from the same tables. A kernel is a
/// type with its name, its unit, what it needs, and one or two static operations.
///
///     template <class T>
///     struct PlainEncoder {
///         using Unit = T;
///         static constexpr char kName[] = "plain";
///         static constexpr bool kNeedsAvx2 = false;
///         static std::size_t run(…);
///     };
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "kernels/Processor.h"
#include "support/Widths.h"

namespace test {

template <class Kernel>
class KernelTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (Kernel::kNeedsAvx2 && !vorel::kernels::s_useAvx2) {
            GTEST_SKIP() << "this processor has no AVX2";
        }
    }
};

struct KernelNames {
    template <class Kernel>
    static std::string GetName(int index) {
        return std::string(Kernel::kName) + '_' + CharacterNames::GetName<typename Kernel::Unit>(index);
    }
};

}  // namespace test

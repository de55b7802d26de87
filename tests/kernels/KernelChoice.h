/// \file
/// A fixture that runs the same tests for scalar and AVX2 kernels, in both widths. A kernel is a type with a name, a
/// unit type, its requirement and one or two static operations.
///
///     template <class T>
///     struct ScalarEncoder {
///         using Unit = T;
///         static constexpr char kName[] = "scalar";
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

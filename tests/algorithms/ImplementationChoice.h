/// \file
/// A fixture for tests that run with several implementations of an algorithm (scalar, AVX2), in both widths. Each
/// implementation is wrapped in a class, which has a unit type, a name, a constant that says whether the implementation
/// needs AVX2, and static functions. If the processor has no AVX2, the tests of such an implementation are skipped.
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

#include "algorithms/Processor.h"
#include "support/Widths.h"

namespace test {

template <class Implementation>
class ImplementationTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (Implementation::kNeedsAvx2 && !vorel::algorithms::Processor::usesAvx2()) {
            GTEST_SKIP() << "this processor has no AVX2";
        }
    }
};

struct ImplementationNames {
    template <class Implementation>
    static std::string GetName(int index) {
        return std::string(Implementation::kName) + '_' + CharacterNames::GetName<typename Implementation::Unit>(index);
    }
};

}  // namespace test

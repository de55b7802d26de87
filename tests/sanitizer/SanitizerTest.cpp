// Tests of the debug build, in which undefined behaviour ends the program. Each case has one kind of undefined
// behaviour, and runs in a separate process.

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/CaseName.h"

namespace {

// Raised by the checks of undefined behaviour and by the stack protector.
constexpr int kTrap = static_cast<int>(EXCEPTION_ILLEGAL_INSTRUCTION);
constexpr int kAborted = 3;  // by std::abort under Wine; a failed assertion of the standard library calls std::abort

// Volatile, so that the compiler cannot detect or remove the undefined behaviour.
volatile int largest = INT_MAX;
volatile int one = 1;
volatile double huge = 1e300;
volatile std::size_t tooFar = 4;
volatile std::size_t thousand = 1000;
volatile unsigned char two = 2;
void* volatile nowhere = nullptr;

void overflow() {
    largest = largest + one;
}

void shiftTooFar() {
    one = one << (31 + one);
}

void convertTooLarge() {
    one = static_cast<int>(huge);
}

void readPastEndOfArray() {
    static const int kItems[4] = {1, 2, 3, 4};
    one = kItems[tooFar];
}

void readUnalignedInt() {
    alignas(int) static const char kBytes[8] = {};
    one = *reinterpret_cast<const int*>(static_cast<const void*>(kBytes + one));
}

void readInvalidBool() {
    bool answer = false;
    const unsigned char byte = two;
    std::memcpy(&answer, &byte, sizeof byte);
    const volatile bool& seen = answer;
    one = seen ? 1 : 0;
}

void copyFromNull() {
    char to[8];
    std::memcpy(to, nowhere, static_cast<std::size_t>(one - 1));
    one = to[0] == 'x' ? 1 : 0;
}

void readPastEndOfVector() {
    const std::vector<int> items(4);
    one = items[tooFar];
}

void writePastEndOfLocalArray() {
    char text[8];
    char* volatile target = text;
    for (std::size_t unit = 0; unit < thousand; ++unit) {
        target[unit] = 'x';
    }
}

struct Mistake {
    const char* name;
    void (*make)();
    int exitCode;

    friend void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.name; }
};

class Sanitizer : public testing::TestWithParam<Mistake> {};

TEST_P(Sanitizer, EndsTheProgramOnUndefinedBehaviour) {
    const Mistake& mistake = GetParam();
    EXPECT_EXIT(mistake.make(), testing::ExitedWithCode(mistake.exitCode), "");
}

INSTANTIATE_TEST_SUITE_P(Mistakes, Sanitizer,
                         testing::Values(Mistake{"SignedOverflow", overflow, kTrap},
                                         Mistake{"ShiftTooFar", shiftTooFar, kTrap},
                                         Mistake{"ConversionOfTooLargeNumber", convertTooLarge, kTrap},
                                         Mistake{"IndexPastEndOfArray", readPastEndOfArray, kTrap},
                                         Mistake{"UnalignedAccess", readUnalignedInt, kTrap},
                                         Mistake{"InvalidBool", readInvalidBool, kTrap},
                                         Mistake{"CopyFromNull", copyFromNull, kTrap},
                                         Mistake{"IndexPastEndOfVector", readPastEndOfVector, kAborted},
                                         Mistake{"WritePastEndOfLocalArray", writePastEndOfLocalArray, kTrap}),
                         test::caseName);

}  // namespace

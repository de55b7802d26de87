/// \file
/// Where every test program starts: with a log of its own.

#include <gtest/gtest.h>

#include "support/TemporaryLog.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    test::redirectProgramLog();
    return RUN_ALL_TESTS();
}

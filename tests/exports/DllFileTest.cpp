/// \file
/// The file of the DLL: its imports, the properties that make it load fast, its protections, and its debug information.

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "exports/PeFile.h"
#include "support/ChildProcess.h"

namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::StrCaseEq;

const wchar_t* const kSymbolFile = L"vorelCore.dll.debug";

class DllFile : public testing::Test {
protected:
    const test::PeFile dll{L"vorelCore.dll"};
};

std::vector<std::string> sectionNames(const test::PeFile& file) {
    std::vector<std::string> names;
    for (const test::PeFile::Section& section : file.sections()) {
        names.push_back(section.name);
    }
    return names;
}

// The most likely mistake is an import from the older C runtime, msvcrt.dll.
TEST_F(DllFile, ImportsOnlyTheUniversalRuntimeTheSystemAndTheRuntimeOfTheCompiler) {
    EXPECT_THAT(dll.imports(),
                Each(AnyOf(StartsWith("api-ms-win-crt-"), StrCaseEq("KERNEL32.dll"), StrCaseEq("ADVAPI32.dll"),
                           StrCaseEq("libstdc++-6.dll"), StrCaseEq("libgcc_s_seh-1.dll"))));
    EXPECT_THAT(dll.imports(), Contains(StartsWith("api-ms-win-crt-")));
}

TEST_F(DllFile, IsMappedAndLoadsAdvapi32OnFirstUse) {
    if (dll.isLinkedByLld()) {
        GTEST_SKIP() << "the options for this are passed only to GNU's linker";
    }
    EXPECT_THAT(dll.imports(), Not(Contains(StrCaseEq("ADVAPI32.dll"))));
    EXPECT_EQ(dll.header().FileAlignment, 4096u)
        << "Wine reads sections that are not aligned to pages, instead of mapping them";
}

// A small section must be part of .data, because each section takes at least a page of the file and of memory.
TEST_F(DllFile, SmallSectionsArePartOfTheDataSection) {
    if (dll.isLinkedByLld()) {
        GTEST_SKIP() << "the script for this is passed only to GNU's linker";
    }
    EXPECT_THAT(sectionNames(dll), Not(Contains(AnyOf(".CRT", ".tls", ".didat"))));
    const auto data = std::ranges::find(dll.sections(), ".data", &test::PeFile::Section::name);
    ASSERT_NE(data, dll.sections().end());
    EXPECT_TRUE(data->flags & IMAGE_SCN_MEM_WRITE) << "the first use writes the addresses of delayed imports there";
}

TEST_F(DllFile, HasTheProtectionsOfTheSystem) {
    const WORD flags = dll.header().DllCharacteristics;
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    constexpr DWORD kWritableCode = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
    EXPECT_FALSE(dll.sections().empty());
    for (const test::PeFile::Section& section : dll.sections()) {
        EXPECT_NE(section.flags & kWritableCode, kWritableCode) << section.name;
    }
}

#ifdef VOREL_RELEASED_FILE

TEST_F(DllFile, ContainsNoTimestampAndOnlyALinkToItsDebugInformation) {
    EXPECT_EQ(dll.timestamp(), 0u);
    EXPECT_THAT(sectionNames(dll), Not(Contains(StartsWith(".debug_"))));
    EXPECT_THAT(sectionNames(dll), Contains(".gnu_debuglink"));
}

// A change that needs more space raises this limit, and its commit gives the reason.
TEST_F(DllFile, IsNotLargerThanItsLimit) {
    if (dll.isLinkedByLld()) {
        GTEST_SKIP() << "the limit applies only to the code that GCC generates";
    }
    constexpr std::size_t kLimit = 430'000;
    EXPECT_LE(dll.bytes().size(), kLimit);
}

TEST_F(DllFile, HasStackGuards) {
    if (GetFileAttributesW((test::programFolder() + kSymbolFile).c_str()) == INVALID_FILE_ATTRIBUTES) {
        GTEST_SKIP() << "the file with the symbols of the DLL is missing";
    }
    EXPECT_THAT(test::PeFile(kSymbolFile).symbols(), Contains("__stack_chk_fail"));
}

#endif

}  // namespace

/// \file
/// How mappings are created and opened, with and without a file name: the order of the system calls, their arguments,
/// and the handle of the file.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Expect.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/secure/SecuredMappings.h"
#include "whitebox/LiveBlocks.h"
#include "whitebox/SharedAttributes.h"

namespace {

using test::kFailureError;

constexpr const wchar_t* kFile = L"Long folder\\Long name.dat";
constexpr const wchar_t* kName = L"vorel_mapping";
constexpr DWORD kProtection = 0x04000004;
constexpr DWORD kAccess = 0x000F0006;
constexpr DWORD kSizeHigh = 0x12345678;
constexpr DWORD kSizeLow = 0x9ABCDEF0;
const std::wstring kRecord = L"Accessable::ObtainAccessableFileMappingEx: Vorel exception rethrown";

HANDLE someHandle() {
    return CreateSemaphoreW(nullptr, 0, 1, nullptr);
}

/// Replaces the system's calls for files and mappings. The test sets the results of the calls.
class ObtainingMapping : public testing::Test {
protected:
    ~ObtainingMapping() override { EXPECT_EQ(m_openFiles, 0) << "every file must be closed"; }

    HANDLE obtainEx(DWORD sizeHigh = kSizeHigh, DWORD sizeLow = kSizeLow) {
        return vorel::ObtainAccessableFileMappingEx(kFile, kProtection, kAccess, sizeHigh, sizeLow, kName, &fileCreated,
                                                    &mappingCreated);
    }

    /// Resets the trace and the numbers of calls, but not the results that the test has set.
    void begin() {
        trace.clear();
        m_files = m_mappings = m_opens = 0;
    }

    /// The calls in their order, each followed by a space.
    std::string trace;
    bool fileCreated = true;
    bool mappingCreated = true;

    // Results of the calls. The calls of each kind are numbered from 0.
    int mappingExistsFrom = 1000;  // from this number on, calls that open a mapping succeed
    int filesFailFrom = 1000;      // from this number on, calls that open the file fail
    int mappingsFailUntil = 0;     // before this number, calls that create the mapping fail
    DWORD fileError = 0;           // the last error after opening the file
    DWORD mappingError = 0;        // the last error after creating the mapping
    HANDLE lastFile = nullptr;
    test::SharedAttributes fileAttributes;
    test::SharedAttributes mappingAttributes;
    const test::TemporaryLog log;
    test::LiveBlocks blocks;

private:
    int m_files = 0;
    int m_mappings = 0;
    int m_opens = 0;
    int m_openFiles = 0;

    const test::ImportHook<importedGetLongPathNameW> m_longPath{[](LPCWSTR path, LPWSTR longPath, DWORD size) -> DWORD {
        const std::wstring_view text = path;
        if (size <= text.size()) {
            return static_cast<DWORD>(text.size() + 1);
        }
        longPath[text.copy(longPath, size)] = L'\0';
        return static_cast<DWORD>(text.size());
    }};
    const test::ImportHook<importedCreateFileW> m_createFile{[this](LPCWSTR path, DWORD access, DWORD sharing,
                                                                    LPSECURITY_ATTRIBUTES attributes, DWORD disposition,
                                                                    DWORD flags, HANDLE pattern) -> HANDLE {
        trace += "file ";
        EXPECT_STREQ(path, kFile);
        EXPECT_EQ(access, DWORD{0xC0000000}) << "GENERIC_READ | GENERIC_WRITE";
        EXPECT_EQ(sharing, DWORD{3}) << "FILE_SHARE_READ | FILE_SHARE_WRITE";
        EXPECT_EQ(disposition, DWORD{OPEN_ALWAYS});
        EXPECT_EQ(flags, DWORD{0});
        EXPECT_EQ(pattern, nullptr);
        fileAttributes = test::sharedAttributes(attributes);
        const bool fails = m_files++ >= filesFailFrom;
        lastFile = fails ? INVALID_HANDLE_VALUE : someHandle();
        m_openFiles += fails ? 0 : 1;
        SetLastError(fails ? kFailureError : fileError);
        return lastFile;
    }};
    const test::ImportHook<importedCreateFileMappingW> m_createMapping{
        [this](HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protection, DWORD sizeHigh, DWORD sizeLow,
               LPCWSTR name) -> HANDLE {
            trace += "create ";
            EXPECT_EQ(file, lastFile);
            EXPECT_EQ(protection, kProtection);
            trace += (sizeHigh == kSizeHigh && sizeLow == kSizeLow) || (sizeHigh | sizeLow) == 0 ? "" : "othersize ";
            EXPECT_STREQ(name, kName);
            mappingAttributes = test::sharedAttributes(attributes);
            const bool fails = m_mappings++ < mappingsFailUntil;
            HANDLE const mapping = fails ? nullptr : someHandle();
            SetLastError(fails ? kFailureError : mappingError);
            return mapping;
        }};
    const test::ImportHook<importedOpenFileMappingW> m_openMapping{
        [this](DWORD access, BOOL inherited, LPCWSTR name) -> HANDLE {
            trace += inherited ? "inherited " : "open ";
            EXPECT_EQ(access, kAccess);
            EXPECT_STREQ(name, kName);
            const bool found = m_opens++ >= mappingExistsFrom;
            HANDLE const mapping = found ? someHandle() : nullptr;
            SetLastError(found ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
            return mapping;
        }};
    const test::ImportHook<importedCloseHandle> m_close{[this](HANDLE handle) {
        if (handle == lastFile) {
            trace += "close ";
            --m_openFiles;
            lastFile = nullptr;
        }
        const BOOL closed = m_close.original(handle);
        SetLastError(ERROR_SUCCESS);
        return closed;
    }};
    const test::ImportHook<importedSleep> m_sleep{[this](DWORD) { trace += "sleep "; }};
};

std::string repeated(const std::string& text, int count) {
    std::string whole;
    for (int done = 0; done < count; ++done) {
        whole += text;
    }
    return whole;
}

// ---- Mappings of a file handle ----

class ObtainingMappingOfAHandle : public ObtainingMapping {
protected:
    HANDLE obtain() {
        lastFile = INVALID_HANDLE_VALUE;
        HANDLE const mapping =
            vorel::ObtainAccessableFileMapping(lastFile, kProtection, kAccess, kSizeHigh, kSizeLow, kName, &created);
        EXPECT_EQ(blocks.live(), 0u);
        EXPECT_FALSE(log.exists());
        return mapping;
    }

    int created = 7;
};

TEST_F(ObtainingMappingOfAHandle, NewMappingIsCreatedWithOneCall) {
    const test::Handle mapping(obtain());
    EXPECT_TRUE(mapping);
    EXPECT_EQ(created, 1);
    EXPECT_EQ(trace, "create ");
    EXPECT_EQ(mappingAttributes, test::SharedAttributes::expected());
}

TEST_F(ObtainingMappingOfAHandle, ExistingMappingIsNotReportedAsNew) {
    mappingError = ERROR_ALREADY_EXISTS;
    const test::Handle mapping(obtain());
    EXPECT_TRUE(mapping);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(trace, "create ");
}

TEST_F(ObtainingMappingOfAHandle, OpensAMappingThatCannotBeCreated) {
    mappingsFailUntil = 1;
    mappingExistsFrom = 0;
    const test::Handle mapping(obtain());
    EXPECT_TRUE(mapping);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(trace, "create open ");
}

TEST_F(ObtainingMappingOfAHandle, DoesNotRetryIfCreatingAndOpeningFail) {
    mappingsFailUntil = 1000;
    EXPECT_EQ(obtain(), nullptr);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(trace, "create open ");
}

// ---- Mappings of a named file ----

TEST_F(ObtainingMapping, ExistingMappingIsOpenedWithoutOpeningItsFile) {
    mappingExistsFrom = 0;
    const test::Handle mapping(obtainEx());
    EXPECT_TRUE(mapping);
    EXPECT_EQ(trace, "open ");
    EXPECT_FALSE(fileCreated);
    EXPECT_FALSE(mappingCreated);
    EXPECT_EQ(blocks.live(), 0u);
}

TEST_F(ObtainingMapping, ExistingMappingIsOpenedIfEitherHalfOfTheSizeIsNotZero) {
    mappingExistsFrom = 0;
    for (const DWORD high : {0u, 1u}) {
        trace.clear();
        const test::Handle mapping(obtainEx(high, 1 - high));
        EXPECT_TRUE(mapping);
        EXPECT_EQ(trace, "open ");
    }
}

TEST_F(ObtainingMapping, MappingWithoutASizeIsCreatedAndNotOpenedFirst) {
    mappingExistsFrom = 0;
    const test::Handle mapping(obtainEx(0, 0));
    EXPECT_TRUE(mapping);
    EXPECT_EQ(trace, "file create close ");
}

TEST_F(ObtainingMapping, FileIsClosedAfterANewMappingIsCreated) {
    const test::Handle mapping(obtainEx());
    EXPECT_TRUE(mapping);
    EXPECT_EQ(trace, "open file create close ");
    EXPECT_EQ(fileAttributes, test::SharedAttributes::expected());
    EXPECT_EQ(mappingAttributes, test::SharedAttributes::expected());
    EXPECT_EQ(blocks.live(), 0u);
    EXPECT_FALSE(log.exists());
}

TEST_F(ObtainingMapping, FlagsReportNewObjects) {
    for (const bool fileIsNew : {false, true}) {
        for (const bool mappingIsNew : {false, true}) {
            fileError = fileIsNew ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS;
            mappingError = mappingIsNew ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS;
            fileCreated = !fileIsNew;
            mappingCreated = !mappingIsNew;
            const test::Handle mapping(obtainEx());
            EXPECT_TRUE(mapping);
            EXPECT_EQ(fileCreated, fileIsNew);
            EXPECT_EQ(mappingCreated, mappingIsNew);
        }
    }
}

/// The calls of an attempt that does not create the mapping, with and without a size. The calls are the same whether or
/// not the attempt then opens the mapping.
constexpr const char* kAttemptWithoutCreation = "file create open close ";
constexpr const char* kAttemptWithoutCreationOrSize = "file create close ";

TEST_F(ObtainingMapping, CreationIsTriedUpToFiftyTimesWithoutSleeping) {
    mappingsFailUntil = 49;
    const test::Handle mapping(obtainEx());
    EXPECT_TRUE(mapping);
    EXPECT_EQ(trace, "open " + repeated(kAttemptWithoutCreation, 49) + "file create close ");
    EXPECT_TRUE(mappingCreated);
    EXPECT_FALSE(log.exists());
}

TEST_F(ObtainingMapping, EachAttemptOpensAMappingThatAnotherProcessCreatedFirst) {
    mappingsFailUntil = 1000;
    for (const int failedAttempts : {0, 1, 49}) {
        begin();
        mappingExistsFrom = 1 + failedAttempts;  // the first opening precedes the attempts
        fileError = ERROR_ALREADY_EXISTS;
        const test::Handle mapping(obtainEx());
        EXPECT_TRUE(mapping) << failedAttempts;
        EXPECT_EQ(trace, "open " + repeated(kAttemptWithoutCreation, failedAttempts + 1));
        EXPECT_FALSE(fileCreated);
        EXPECT_FALSE(mappingCreated);
        EXPECT_EQ(blocks.live(), 0u);
    }
    EXPECT_FALSE(log.exists());
}

TEST_F(ObtainingMapping, OpenedMappingIsNotReportedAsNew) {
    mappingsFailUntil = 1;
    mappingExistsFrom = 1;
    const test::Handle mapping(obtainEx());
    EXPECT_TRUE(mapping);
    EXPECT_TRUE(fileCreated) << "the attempt that opens the mapping has created the file";
    EXPECT_FALSE(mappingCreated);
}

TEST_F(ObtainingMapping, FailedAttemptsWithoutASizeDoNotOpenTheMapping) {
    mappingExistsFrom = 0;
    mappingsFailUntil = 50;
    EXPECT_THROW(obtainEx(0, 0), vorel::Exception);
    EXPECT_EQ(trace, repeated(kAttemptWithoutCreationOrSize, 50));
}

TEST_F(ObtainingMapping, FiftyFailuresThrowTheSystemText) {
    mappingsFailUntil = 50;
    test::expectThrows<vorel::Exception>(
        [this] { obtainEx(); }, {L"ObtainAccessableFileMappingEx: Opening file mapping failed for " +
                                     std::wstring(kFile) + L" after 50 tries: " + test::systemText(kFailureError),
                                 kRecord});
    EXPECT_EQ(trace, "open " + repeated(kAttemptWithoutCreation, 50));
    EXPECT_FALSE(mappingCreated);
    EXPECT_EQ(blocks.live(), 0u);
}

TEST_F(ObtainingMapping, FailureToOpenTheFileEndsTheAttempts) {
    mappingsFailUntil = 1000;
    filesFailFrom = 3;
    test::expectThrows<vorel::Exception>([this] { obtainEx(); },
                                         {L"ObtainAccessableFileMappingEx: Unable to create file " +
                                              std::wstring(kFile) + L": " + test::systemText(kFailureError),
                                          kRecord});
    EXPECT_EQ(trace, "open " + repeated(kAttemptWithoutCreation, 3) + "file ");
    EXPECT_FALSE(mappingCreated);
    EXPECT_EQ(blocks.live(), 0u);
}

TEST_F(ObtainingMapping, FlagsMayBeNull) {
    const test::Handle mapping(vorel::ObtainAccessableFileMappingEx(kFile, kProtection, kAccess, kSizeHigh, kSizeLow,
                                                                    kName, nullptr, nullptr));
    EXPECT_TRUE(mapping);
    EXPECT_EQ(trace, "open file create close ");
}

}  // namespace

/// \file
/// Tests the flat interface with simulated system failures, and with UTF-8 as the simulated code page of the process.
/// Also tests exceptions of unknown types, and the truncation of messages.

#include <cerrno>
#include <string>
#include <string_view>
#include <thread>

#include <gmock/gmock.h>

#include <windows.h>

#include "flat/Call.h"
#include "flat/FlatCalls.h"
#include "flat/LastError.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"

namespace {

using test::flatFailure;
using test::FlatText;
using test::flatText;
using test::ImportHook;
using test::TemporaryLog;
using testing::ElementsAre;
using vorel::flat::LastErrors;

TEST(FlatCall, ExceptionsOfUnknownTypesAreInternalErrors) {
    const TemporaryLog log;
    EXPECT_EQ(vorel::flat::guardedCall(L"vorel_anything", []() -> vorel_status { throw 7; }), VOREL_ERROR_INTERNAL);
    EXPECT_EQ(test::lastMessage(), L"The operation failed for an unknown reason");
    EXPECT_THAT(log.messages(), ElementsAre("Vorel Error: vorel_anything: Severe error caught"));
}

// ---- Last failure of a thread ---------------------------------------------------------------------------------------

TEST(FlatLastErrors, StoreNothingWithoutASlot) {
    int uses = 0;
    const ImportHook<importedFlsAlloc> alloc([](PFLS_CALLBACK_FUNCTION) { return DWORD{FLS_OUT_OF_INDEXES}; });
    const ImportHook<importedFlsGetValue> get([&](DWORD) -> void* {
        ++uses;
        return nullptr;
    });
    const ImportHook<importedFlsSetValue> set([&](DWORD, void*) { return ++uses; });
    const ImportHook<importedFlsFree> free([&](DWORD) { return ++uses; });
    {
        const LastErrors errors;
        errors.remember(VOREL_ERROR_SYSTEM, L"lost");
        EXPECT_EQ(errors.last(), nullptr);
    }
    EXPECT_EQ(uses, 0) << "without a slot, no slot may be read, set or freed";
}

TEST(FlatLastErrors, FreeTheMemoryIfTheSlotCannotBeSet) {
    int live = 0;
    const ImportHook<importedHeapAlloc> alloc([&](HANDLE heap, DWORD flags, SIZE_T size) {
        ++live;
        return alloc.original(heap, flags, size);
    });
    const ImportHook<importedHeapFree> free([&](HANDLE heap, DWORD flags, void* block) {
        --live;
        return free.original(heap, flags, block);
    });
    const ImportHook<importedFlsSetValue> set([](DWORD, void*) { return FALSE; });
    const LastErrors errors;
    errors.remember(VOREL_ERROR_SYSTEM, L"lost");
    EXPECT_EQ(errors.last(), nullptr);
    EXPECT_EQ(live, 0);
}

TEST(FlatLastErrors, MessagesAreTruncatedButNotWithinASurrogatePair) {
    const LastErrors errors;
    const std::size_t maxUnits = vorel::flat::Failure::kMaxUnits;
    const std::wstring text(maxUnits - 1, L'x');
    struct Case {
        std::wstring message;
        std::wstring kept;
    };
    for (const Case& c : {Case{text + L"yz", text + L"y"}, Case{text + L"\xD83D\xDE00", text},
                          Case{text + L"\xD83D", text + L"\xD83D"}}) {
        errors.remember(VOREL_ERROR_SYSTEM, c.message.c_str());
        ASSERT_NE(errors.last(), nullptr);
        EXPECT_TRUE(errors.last()->message() == c.kept);
    }
}

TEST(FlatLastErrors, AreStoredAgainOnceMemoryIsAvailable) {
    const LastErrors errors;
    {
        const ImportHook<importedHeapAlloc> alloc([](HANDLE, DWORD, SIZE_T) -> void* { return nullptr; });
        errors.remember(VOREL_ERROR_SYSTEM, L"first");
    }
    ASSERT_NE(errors.last(), nullptr);
    EXPECT_EQ(errors.last()->status, VOREL_ERROR_OUT_OF_MEMORY);
    errors.remember(VOREL_ERROR_SYSTEM, L"second");
    EXPECT_EQ(errors.last()->status, VOREL_ERROR_SYSTEM);
    EXPECT_EQ(errors.last()->message(), L"second");
}

// ---- Code pages -----------------------------------------------------------------------------------------------------

/// Simulates a system whose first call, which counts the units of the result, succeeds, and whose second call, which
/// converts the text, fails with `error`.
class FailsAfterCounting {
public:
    explicit FailsAfterCounting(DWORD error) : m_error(error) {}

private:
    // cppcheck-suppress unusedPrivateFunction; called by the two hooks
    int answer() {
        SetLastError(m_error);
        return m_calls++ == 0 ? 1 : 0;
    }

    DWORD m_error;
    int m_calls = 0;
    ImportHook<importedMultiByteToWideChar> m_toWide{[this](UINT, DWORD, LPCCH, int, LPWSTR, int) { return answer(); }};
    ImportHook<importedWideCharToMultiByte> m_toBytes{
        [this](UINT, DWORD, LPCWCH, int, LPSTR, int, LPCCH, LPBOOL) { return answer(); }};
};

TEST(FlatCodePages, ConversionWhoseSecondSystemCallFailsWritesNothing) {
    errno = 0;
    {
        const FailsAfterCounting system(ERROR_NO_UNICODE_TRANSLATION);
        EXPECT_EQ(flatFailure<vorel_char16>([](auto... out) { return vorel_code_page_to_utf16(1252, "a", 1, out...); }),
                  VOREL_ERROR_INVALID_TEXT);
    }
    errno = 0;
    const FailsAfterCounting system(ERROR_INVALID_PARAMETER);
    const FlatText text(L"a");
    EXPECT_EQ(flatFailure<unsigned char>([&](auto... out) {
                  return vorel_utf16_to_code_page(1252, text.data(), text.size(), out..., nullptr);
              }),
              VOREL_ERROR_UNSUPPORTED);
}

TEST(FlatCodePages, FailureWithoutErrnoValueDoesNotDependOnAnEarlierErrno) {
    errno = EILSEQ;
    const FailsAfterCounting system(ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(flatFailure<vorel_char16>([](auto... out) { return vorel_code_page_to_utf16(1252, "a", 1, out...); }),
              VOREL_ERROR_UNSUPPORTED);
}

// ---- Locks ----------------------------------------------------------------------------------------------------------

TEST(FlatLocks, FailedWaitIsReportedAsASystemErrorNotAsATimeout) {
    const TemporaryLog log;
    const FlatText name(test::NamedEvent::uniqueName(L"flat_failing"));
    const DWORD self = GetCurrentThreadId();
    vorel_condition* condition = nullptr;
    vorel_mutex* mutex = nullptr;
    ASSERT_EQ(vorel_condition_open(name.data(), name.size(), &condition), VOREL_OK);
    ASSERT_EQ(vorel_mutex_open(name.data(), name.size(), &mutex), VOREL_OK);
    {
        const ImportHook<importedWaitForSingleObject> wait([&](HANDLE handle, DWORD timeoutMs) {
            if (GetCurrentThreadId() != self) {
                return wait.original(handle, timeoutMs);  // a call by a thread of the test framework
            }
            SetLastError(ERROR_INVALID_HANDLE);
            return DWORD{WAIT_FAILED};
        });
        EXPECT_EQ(vorel_condition_wait(condition, 0), VOREL_ERROR_SYSTEM);
        EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_ERROR_SYSTEM);
        EXPECT_EQ(vorel_mutex_lock(mutex, 5), VOREL_ERROR_SYSTEM);
    }
    EXPECT_EQ(vorel_condition_close(condition), VOREL_OK);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

TEST(FlatLocks, MutexIsStillHeldIfTheReleaseFails) {
    const TemporaryLog log;
    const FlatText name(test::NamedEvent::uniqueName(L"flat_kept"));
    vorel_mutex* mutex = nullptr;
    ASSERT_EQ(vorel_mutex_open(name.data(), name.size(), &mutex), VOREL_OK);
    ASSERT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    {
        const ImportHook<importedReleaseMutex> release([](HANDLE) {
            SetLastError(ERROR_NOT_OWNER);
            return FALSE;
        });
        EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_SYSTEM);
    }
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_NOT_OWNER);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

TEST(FlatLocks, ThreadWithTheIdOfAnExitedThreadDoesNotOwnItsMutex) {
    const TemporaryLog log;
    const FlatText name(test::NamedEvent::uniqueName(L"flat_heir"));
    vorel_mutex* mutex = nullptr;
    ASSERT_EQ(vorel_mutex_open(name.data(), name.size(), &mutex), VOREL_OK);
    const DWORD self = GetCurrentThreadId();
    std::thread([&] {
        const ImportHook<importedGetCurrentThreadId> id([self] { return self; });
        EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    }).join();
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_SYSTEM) << "the system knows the real owner";
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_NOT_OWNER);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

// ---- Path of the log ------------------------------------------------------------------------------------------------

vorel_status setPath(std::wstring_view path) {
    const FlatText text(path);
    return vorel_log_set_path(text.data(), text.size());
}

std::wstring logPath() {
    return flatText([](auto... out) { return vorel_log_path(out...); });
}

TEST(FlatLogPath, InAUtf8ProcessOnlyAnUnpairedSurrogateIsRejected) {
    const TemporaryLog log;
    const ImportHook<importedGetACP> codePage([] { return UINT{CP_UTF8}; });
    int conversions = 0;
    const ImportHook<importedWideCharToMultiByte> toBytes([&](UINT page, DWORD flags, LPCWCH text, int units, LPSTR out,
                                                              int capacity, LPCCH replacement, LPBOOL replaced) {
        ++conversions;
        EXPECT_EQ(page, UINT{CP_UTF8});
        EXPECT_EQ(replaced, nullptr) << "the system rejects other values if the code page is UTF-8";
        return toBytes.original(page, flags, text, units, out, capacity, replacement, replaced);
    });
    EXPECT_EQ(setPath(L"somewhere.txt"), VOREL_OK);
    EXPECT_EQ(conversions, 2);
    EXPECT_EQ(setPath(L"some\xD800where.txt"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(logPath(), L"somewhere.txt");
}

TEST(FlatLogPath, IsUnchangedIfTheNewPathCannotBeConverted) {
    const TemporaryLog log;
    const std::wstring before = logPath();
    const ImportHook<importedWideCharToMultiByte> toBytes(
        [](UINT, DWORD, LPCWCH, int, LPSTR, int, LPCCH, LPBOOL) { return 0; });
    EXPECT_EQ(setPath(L"somewhere.txt"), VOREL_ERROR_INVALID_TEXT);
    EXPECT_EQ(logPath(), before);
}

}  // namespace

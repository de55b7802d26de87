/// \file
/// The converters' system calls, and how the converters handle the results.

#include "vorel/text/CodePages.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/Expect.h"
#include "support/HeldLock.h"
#include "support/ImportHook.h"
#include "text/CodePageState.h"
#include "vorel/exceptions/Exception.h"

namespace {

namespace util = vorel::util;
using vorel::Exception;

constexpr auto kNothing = static_cast<std::size_t>(-1);
constexpr int kUntouched = 77;

/// The arguments of a conversion call to the system.
struct Call {
    UINT page;
    DWORD flags;
    const void* text;
    int count;
    const void* out;
    int capacity;
    bool hasDefault = false;  ///< whether the call passes a default character
    bool asksForUse = false;  ///< whether the call asks if the default character was used
    bool operator==(const Call&) const = default;
};

enum class Throw {
    Nothing,
    Exception,
    Other,
};

/// Replaces both conversion functions of the system. Records each call, and returns a fixed result or throws.
struct System {
    std::vector<Call> calls;
    int result = 0;
    DWORD error = 0;
    bool usesDefault = false;
    Throw thrown = Throw::Nothing;

    static System& instance() {
        static System system;
        return system;
    }

    int answer(const Call& call) {
        calls.push_back(call);
        if (thrown == Throw::Exception) {
            throw Exception(L"broken");
        }
        if (thrown == Throw::Other) {
            throw std::runtime_error("broken");
        }
        SetLastError(error);
        return result;
    }
};

int WINAPI toWide(UINT page, DWORD flags, LPCCH text, int count, LPWSTR out, int capacity) {
    return System::instance().answer({page, flags, text, count, out, capacity});
}

int WINAPI toBytes(UINT page, DWORD flags, LPCWCH text, int count, LPSTR out, int capacity, LPCCH defaultCharacter,
                   LPBOOL used) {
    System& system = System::instance();
    if (used) {
        *used = system.usesDefault ? TRUE : FALSE;
    }
    return system.answer({page, flags, text, count, out, capacity, defaultCharacter != nullptr, used != nullptr});
}

class CodePages : public ::testing::Test {
protected:
    void SetUp() override { System::instance() = System(); }

    /// Sets errno to `kUntouched`, runs `operation` while the system fails with `error`, and returns the result of
    /// `operation`.
    template <class Operation>
    auto underFailure(DWORD error, Operation&& operation) {
        m_system.result = 0;
        m_system.error = error;
        errno = kUntouched;
        return operation();
    }

    /// Expects exactly one system call, which tests whether a code page is usable. The call must convert one byte, the
    /// terminator of an empty text, without an output buffer.
    void expectUsabilityTest(UINT page) {
        ASSERT_EQ(m_system.calls.size(), 1u);
        const Call& call = m_system.calls[0];
        EXPECT_EQ(call, (Call{page, 0, call.text, 1, nullptr, 0}));
        EXPECT_STREQ(static_cast<const char*>(call.text), "");
        m_system.calls.clear();
    }

    System& m_system = System::instance();
    test::ImportPatch<decltype(::MultiByteToWideChar)> m_toWide{importedMultiByteToWideChar, &toWide};
    test::ImportPatch<decltype(::WideCharToMultiByte)> m_toBytes{importedWideCharToMultiByte, &toBytes};
};

int handleOf(unsigned int to, unsigned int from) {
    return static_cast<int>(from << 16 | to);
}

TEST_F(CodePages, ToWc_PassesItsArgumentsAndRejectsInvalidText) {
    const char text[] = "text";
    wchar_t out[9];
    m_system.result = 7;
    EXPECT_EQ(util::iconv_to_wc(handleOf(1252, 65001), text, 4, out, 9), 7u);
    EXPECT_EQ(m_system.calls, (std::vector<Call>{{65001, MB_ERR_INVALID_CHARS, text, 4, out, 9}}));
}

TEST_F(CodePages, FromWc_PassesItsArgumentsAndQueriesTheDefaultCharacterIfRequested) {
    const wchar_t text[] = L"text";
    char out[9];
    m_system.result = 5;
    m_system.usesDefault = true;
    EXPECT_EQ(util::iconv_from_wc(handleOf(1252, 65001), text, 4, out, 9, nullptr), 5u);
    for (const bool used : {true, false}) {
        m_system.usesDefault = used;
        bool defaultUsed = !used;
        EXPECT_EQ(util::iconv_from_wc(handleOf(1252, 65001), text, 4, out, 9, &defaultUsed), 5u);
        EXPECT_EQ(defaultUsed, used);
    }
    const Call silent = {1252, 0, text, 4, out, 9, false, false};
    const Call asking = {1252, 0, text, 4, out, 9, false, true};
    EXPECT_EQ(m_system.calls, (std::vector<Call>{silent, asking, asking}));
}

TEST_F(CodePages, Conversions_ReportSystemErrorsInErrno) {
    struct Case {
        DWORD error;
        int toWc;
        int fromWc;
    };
    const Case cases[] = {
        {ERROR_INVALID_PARAMETER, 22, 22},
        {ERROR_INVALID_FLAGS, 22, 22},
        {ERROR_INSUFFICIENT_BUFFER, 7, 7},
        {ERROR_NO_UNICODE_TRANSLATION, 42, kUntouched},  // only narrow text can be invalid
        {ERROR_ACCESS_DENIED, kUntouched, kUntouched},
        {ERROR_SUCCESS, kUntouched, kUntouched},
    };
    wchar_t wide[9];
    char bytes[9];
    for (const Case& c : cases) {
        EXPECT_EQ(underFailure(c.error, [&] { return util::iconv_to_wc(handleOf(0, 1252), "x", 1, wide, 9); }),
                  kNothing);
        EXPECT_EQ(errno, c.toWc) << c.error;
        EXPECT_EQ(underFailure(c.error, [&] { return util::iconv_from_wc(1252, L"x", 1, bytes, 9, nullptr); }),
                  kNothing);
        EXPECT_EQ(errno, c.fromWc) << c.error;
    }
}

TEST_F(CodePages, InvalidConverter_CausesNoSystemCall) {
    wchar_t wide[9];
    char bytes[9];
    for (const int handle : {0, -1, handleOf(0xFFFF, 0xFFFF)}) {
        EXPECT_EQ(util::iconv_to_wc(handle, "x", 1, wide, 9), kNothing);
        EXPECT_EQ(util::iconv_from_wc(handle, L"x", 1, bytes, 9, nullptr), kNothing);
    }
    EXPECT_TRUE(m_system.calls.empty());
}

TEST_F(CodePages, Conversions_RejectSizesThatDoNotFitIntoAnInt) {
    constexpr std::size_t kMaxCount = INT_MAX;
    constexpr std::size_t kTruncatedToFour = (std::size_t{1} << 32) + 4;
    struct Case {
        std::size_t count;
        std::size_t capacity;
        int countThere;  // the count that is passed to the system
        int capacityThere;
        bool rejected = false;
    };
    // SIZE_MAX means "up to the terminator". The system's value with this meaning is -1.
    const Case cases[] = {
        {kMaxCount, kMaxCount, INT_MAX, INT_MAX}, {SIZE_MAX, 9, -1, 9},          {kMaxCount + 1, 9, 0, 0, true},
        {kTruncatedToFour, 9, 0, 0, true},        {SIZE_MAX - 1, 9, 0, 0, true}, {4, kMaxCount + 1, 0, 0, true},
        {4, kTruncatedToFour, 0, 0, true},        {4, SIZE_MAX, 0, 0, true},
    };
    wchar_t wide[9];
    char bytes[9];
    m_system.result = 3;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.count << " into " << c.capacity);
        m_system.calls.clear();
        errno = kUntouched;
        EXPECT_EQ(util::iconv_to_wc(handleOf(0, 1252), bytes, c.count, wide, c.capacity), c.rejected ? kNothing : 3);
        EXPECT_EQ(errno, c.rejected ? EINVAL : kUntouched);
        errno = kUntouched;
        EXPECT_EQ(util::iconv_from_wc(1252, wide, c.count, bytes, c.capacity, nullptr), c.rejected ? kNothing : 3);
        EXPECT_EQ(errno, c.rejected ? EINVAL : kUntouched);
        const std::vector<Call> expected = {{1252, MB_ERR_INVALID_CHARS, bytes, c.countThere, wide, c.capacityThere},
                                            {1252, 0, wide, c.countThere, bytes, c.capacityThere}};
        EXPECT_EQ(m_system.calls, c.rejected ? std::vector<Call>() : expected);
    }
}

TEST_F(CodePages, FromWc_FailsIfTheSystemCannotReportTheUseOfTheDefaultCharacter) {
    char bytes[9];
    for (bool used : {true, false}) {
        const bool before = used;
        EXPECT_EQ(underFailure(ERROR_INVALID_PARAMETER,
                               [&] { return util::iconv_from_wc(CP_UTF8, L"x", 1, bytes, 9, &used); }),
                  kNothing);
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(used, before);
    }
    EXPECT_FALSE(underFailure(ERROR_INVALID_PARAMETER, [] { return util::iconv_isCheckDefaultValid(CP_UTF8); }));
}

TEST_F(CodePages, IsCheckDefaultValid_IsFalseOnlyAfterErrorInvalidParameter) {
    for (const int page : {65001, 1252, -1}) {
        m_system.calls.clear();
        m_system.result = 1;
        m_system.error = ERROR_INVALID_PARAMETER;  // must be ignored after success
        EXPECT_TRUE(util::iconv_isCheckDefaultValid(page));
        ASSERT_EQ(m_system.calls.size(), 1u);
        const Call& call = m_system.calls[0];
        EXPECT_EQ(call, (Call{static_cast<UINT>(page), 0, call.text, 1, call.out, 1, false, true}));
        EXPECT_EQ(*static_cast<const wchar_t*>(call.text), L'a');
        EXPECT_NE(call.out, nullptr);
    }
    const auto isValidUnder = [this](DWORD error) {
        return underFailure(error, [] { return util::iconv_isCheckDefaultValid(1252); });
    };
    EXPECT_FALSE(isValidUnder(ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(isValidUnder(ERROR_INVALID_FLAGS));
    EXPECT_TRUE(isValidUnder(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_TRUE(isValidUnder(ERROR_SUCCESS));
}

TEST_F(CodePages, GetCodePage_ReturnsOnlyUsableCodePages) {
    m_system.result = 1;
    EXPECT_EQ(util::iconv_getCodePage("koi8-r"), 20866);
    expectUsabilityTest(20866);
    EXPECT_EQ(underFailure(ERROR_INVALID_PARAMETER, [] { return util::iconv_getCodePage("koi8-r"); }), -1);
    EXPECT_EQ(errno, kUntouched);
    expectUsabilityTest(20866);
    EXPECT_EQ(util::iconv_getCodePage("no such name"), -1);
    EXPECT_EQ(util::iconv_getCodePage(nullptr), -1);
    EXPECT_TRUE(m_system.calls.empty());
}

TEST_F(CodePages, Open_TestsTheSystemCodePageIfBothNamesAreGiven) {
    m_system.result = 1;
    EXPECT_EQ(util::iconv_open("utf-8", "latin1"), handleOf(0, 28591));
    expectUsabilityTest(CP_ACP);
    EXPECT_EQ(underFailure(ERROR_INVALID_PARAMETER, [] { return util::iconv_open("utf-8", "latin1"); }), -1);
    EXPECT_EQ(errno, 22);
    expectUsabilityTest(CP_ACP);
    // If only one name is given, no code page is tested.
    EXPECT_EQ(underFailure(ERROR_INVALID_PARAMETER, [] { return util::iconv_open("utf-8", nullptr); }), 65001);
    EXPECT_EQ(util::iconv_open(nullptr, "latin1"), handleOf(0, 28591));
    EXPECT_EQ(errno, kUntouched);
    EXPECT_TRUE(m_system.calls.empty());
}

// The handle keeps the low 16 bits of each number, so 65536 becomes 0, the system code page.
TEST_F(CodePages, OpenCodepage_TestsTheSystemCodePageIfANumberIsTruncatedToZero) {
    for (const auto& [to, from] : {std::pair(65536, 1252), std::pair(1252, 65536)}) {
        m_system.result = 1;
        EXPECT_NE(util::iconv_open_codepage(to, from), -1);
        expectUsabilityTest(CP_ACP);
        EXPECT_EQ(underFailure(ERROR_INVALID_PARAMETER,
                               [target = to, source = from] { return util::iconv_open_codepage(target, source); }),
                  -1);
        EXPECT_EQ(errno, 22);
        expectUsabilityTest(CP_ACP);
    }
    EXPECT_EQ(util::iconv_open_codepage(12345, 0), 12345);
    EXPECT_EQ(util::iconv_open_codepage(0, 12345), handleOf(0, 12345));
    EXPECT_TRUE(m_system.calls.empty());
}

TEST_F(CodePages, Exceptions_AreRecordedWithTheNameOfTheOperation) {
    wchar_t wide[9];
    char bytes[9];
    const auto expectRecords = [this](const std::wstring& operation, auto&& convert) {
        m_system.thrown = Throw::Exception;
        test::expectThrows<Exception>(convert, {L"broken", L"iconv::" + operation + L": Vorel exception rethrown"});
        m_system.thrown = Throw::Other;
        test::expectThrows<Exception>(convert, {L"iconv::" + operation + L": Severe error thrown"});
        m_system.thrown = Throw::Nothing;
    };
    expectRecords(L"iconv_to_wc", [&] { util::iconv_to_wc(handleOf(0, 1252), "x", 1, wide, 9); });
    expectRecords(L"iconv_from_wc", [&] { util::iconv_from_wc(1252, L"x", 1, bytes, 9, nullptr); });
    expectRecords(L"CheckDefaultParamIsValid", [] { util::iconv_isCheckDefaultValid(1252); });
    expectRecords(L"iconv_open", [] { util::iconv_open("utf-8", "latin1"); });
    expectRecords(L"iconv_open_codepage", [] { util::iconv_open_codepage(65536, 1252); });
    expectRecords(L"iconv_getCodePage", [] { util::iconv_getCodePage("utf-8"); });
}

// ---- Map of names ---------------------------------------------------------------------------------------------------

auto& mapOfNames() {
    return vorel::detail::codePageState.get()->codePageNames;
}

TEST(CodePageMap, EveryLookupFillsTheMapOnce) {
    using Lookup = void (*)();
    const Lookup lookups[] = {
        [] { util::iconv_open("utf-8", "latin1"); },     [] { util::iconv_open("utf-8", nullptr); },
        [] { util::iconv_open(nullptr, nullptr); },      [] { util::iconv_getCodePage("utf-8"); },
        [] { util::iconv_getCodePage("no such name"); }, [] { util::iconv_getCodePage(nullptr); },
    };
    for (const Lookup lookup : lookups) {
        mapOfNames().clear();
        lookup();
        EXPECT_EQ(mapOfNames().size(), 617u);
        lookup();
        EXPECT_EQ(mapOfNames().size(), 617u);
    }
}

TEST(CodePageMap, OperationsWithNumbersDoNotFillTheMap) {
    mapOfNames().clear();
    util::iconv_open_codepage(65001, 1252);
    util::iconv_isCheckDefaultValid(1252);
    util::iconv_close(65001);
    EXPECT_EQ(mapOfNames().size(), 0u);
}

TEST(CodePageMap, LookupsAcquireTheLockOfTheMap) {
    using Lookup = void (*)();
    const Lookup lookups[] = {
        [] { util::iconv_open("utf-8", nullptr); },
        [] { util::iconv_getCodePage("utf-8"); },
    };
    vorel::AutoCriticalSection& lock = vorel::detail::codePageState.get()->codeMapLock;
    for (const bool isFilled : {false, true}) {
        for (const Lookup lookup : lookups) {
            mapOfNames().clear();
            if (isFilled) {
                lookup();
            }
            test::expectWaitsFor(lock, lookup, [&] { EXPECT_EQ(mapOfNames().size(), isFilled ? 617u : 0u); });
            EXPECT_EQ(mapOfNames().size(), 617u);
        }
    }
}

TEST(CodePageMap, OperationsWithoutNamesDoNotAcquireTheLockOfTheMap) {
    test::expectPasses(vorel::detail::codePageState.get()->codeMapLock, [] {
        const int converter = util::iconv_open_codepage(1252, 1252);
        wchar_t wide[1] = {};
        char bytes[1] = {};
        util::iconv_to_wc(converter, "x", 1, wide, 1);
        util::iconv_from_wc(converter, wide, 1, bytes, 1, nullptr);
        util::iconv_reset(converter);
        EXPECT_EQ(util::iconv_close(converter), 0);
        EXPECT_EQ(bytes[0], 'x');
    });
}

/// Replaces the map with a map without buckets, so every search in the map fails.
class MapWithoutBuckets {
public:
    MapWithoutBuckets() { replace(0); }
    ~MapWithoutBuckets() { replace(vorel::detail::kStateTableBuckets); }

    MapWithoutBuckets(const MapWithoutBuckets&) = delete;
    MapWithoutBuckets& operator=(const MapWithoutBuckets&) = delete;

private:
    static void replace(unsigned int buckets) {
        std::destroy_at(&mapOfNames());
        std::construct_at(&mapOfNames(), buckets);
    }
};

TEST(CodePageMap, FailureToFillTheMapIsRecordedByEachFunction) {
    const MapWithoutBuckets broken;
    const auto expectRecords = [](const std::wstring& operation, auto&& lookup) {
        test::expectThrows<Exception>(lookup, {L"Tried to find in a hash map with 0 buckets",
                                               L"iconv::FillCodeMap: Vorel exception rethrown",
                                               L"iconv::" + operation + L": Vorel exception rethrown"});
    };
    expectRecords(L"iconv_open", [] { util::iconv_open("utf-8", nullptr); });
    expectRecords(L"iconv_getCodePage", [] { util::iconv_getCodePage("utf-8"); });
}

}  // namespace

#include "vorel/text/CodePages.h"

#include <windows.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "vorel/exceptions/Exception.h"

namespace {

namespace util = vorel::util;
using vorel::Exception;

constexpr auto kNothing = static_cast<std::size_t>(-1);
constexpr int kUtf8 = 65001;
constexpr int kLatin1 = 28591;

/// The result of a failing operation, and errno.
template <class Result>
struct Failure {
    Result result;
    int error;
    bool operator==(const Failure&) const = default;
};

template <class Operation>
auto failureOf(Operation&& operation) {
    errno = 0;
    const auto result = operation();
    return Failure<std::remove_const_t<decltype(result)>>{result, errno};
}

const Failure<int> kInvalid = {-1, EINVAL};
const Failure<int> kBadHandle = {-1, EBADF};

/// The expected handle of a converter.
int handleOf(unsigned int to, unsigned int from) {
    return static_cast<int>(from << 16 | to);
}

TEST(CodePages, GetCodePage_IgnoresCase) {
    for (const char* name : {"UTF-8", "utf-8", "Utf-8", "UNICODE (utf-8)"}) {
        EXPECT_EQ(util::iconv_getCodePage(name), kUtf8);
    }
    // Only A to Z are converted to lower case. So '_' in "SHIFT_JIS" differs from \x7F, whose code is larger by 32.
    for (const char* name : {"UTF8", "", "UTF-8 ", "no such name", "SHIFT\x7FJIS", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(util::iconv_getCodePage(name), -1);
    }
}

TEST(CodePages, Open_IgnoresTheTargetIfTheSourceIsNamed) {
    EXPECT_EQ(util::iconv_open("UTF-8", "LATIN1"), handleOf(0, kLatin1));
    EXPECT_EQ(util::iconv_open("no such name", "latin1"), handleOf(0, kLatin1));  // `to` is ignored
    EXPECT_EQ(util::iconv_open(nullptr, "utf-8"), handleOf(0, kUtf8));
    EXPECT_EQ(util::iconv_open("UTF-8", nullptr), kUtf8);
    EXPECT_EQ(failureOf([] { return util::iconv_open(nullptr, nullptr); }), kInvalid);
    EXPECT_EQ(failureOf([] { return util::iconv_open("no such name", nullptr); }), kInvalid);
    EXPECT_EQ(failureOf([] { return util::iconv_open("UTF-8", "no such name"); }), kInvalid);
}

TEST(CodePages, OpenCodepage_UsesTheLow16BitsAndRejectsTwoZeros) {
    EXPECT_EQ(util::iconv_open_codepage(kUtf8, kLatin1), handleOf(kUtf8, kLatin1));
    EXPECT_EQ(util::iconv_open_codepage(0, 1), 0x10000);
    EXPECT_EQ(util::iconv_open_codepage(12345, 0), 12345);
    EXPECT_EQ(util::iconv_open_codepage(65536, 1252), handleOf(0, 1252));
    EXPECT_EQ(util::iconv_open_codepage(1252, 65536), 1252);
    EXPECT_EQ(util::iconv_open_codepage(-1, 1), handleOf(0xFFFF, 1));
    EXPECT_EQ(util::iconv_open_codepage(0, -1), handleOf(0, 0xFFFF));
    EXPECT_EQ(util::iconv_open_codepage(0, 65536 + 1252), handleOf(0, 1252));
    // The handle of these two numbers is -1, so this result is not a failure, and errno does not change.
    EXPECT_EQ(failureOf([] { return util::iconv_open_codepage(-1, -1); }), (Failure<int>{-1, 0}));
    EXPECT_EQ(failureOf([] { return util::iconv_open_codepage(0, 0); }), kInvalid);
    EXPECT_EQ(failureOf([] { return util::iconv_open_codepage(65536, 0); }), kInvalid);
    EXPECT_EQ(failureOf([] { return util::iconv_open_codepage(0, 65536); }), kInvalid);
    EXPECT_EQ(failureOf([] { return util::iconv_open_codepage(65536, 65536); }), kInvalid);
}

TEST(CodePages, Close_RejectsOnlyHandlesWithPage65535) {
    EXPECT_EQ(util::iconv_close(kUtf8), 0);
    EXPECT_EQ(util::iconv_close(0), 0);
    EXPECT_EQ(util::iconv_close(handleOf(0, kUtf8)), 0);
    EXPECT_EQ(failureOf([] { return util::iconv_close(-1); }), kBadHandle);
    EXPECT_EQ(failureOf([] { return util::iconv_close(handleOf(0xFFFF, 1)); }), kBadHandle);
    EXPECT_EQ(failureOf([] { return util::iconv_close(handleOf(1, 0xFFFF)); }), kBadHandle);
    errno = 0;
    util::iconv_reset(-1);
    EXPECT_EQ(errno, 0);
}

TEST(CodePages, Iconv_AlwaysThrows) {
    test::expectThrows<Exception>(
        [] { util::iconv(kUtf8, nullptr, nullptr, nullptr, nullptr); },
        {L"This function has not been tested.  If you are attempting to use it, please confirm that the behavior is as "
         L"you expect and remove this Exception.  iconv_from_wc and iconv_to_wc can be used without problem."});
}

TEST(CodePages, ToWc_UsesTheUpperHalfOfTheHandle) {
    wchar_t out[8] = {};
    EXPECT_EQ(util::iconv_to_wc(handleOf(0, kUtf8), "A\xC3\xA9", 3, out, 8), 2u);
    EXPECT_EQ(std::wstring(out, 2), L"A\u00E9");
    EXPECT_EQ(util::iconv_to_wc(handleOf(kUtf8, 1252), "\x80", 1, out, 8), 1u);
    EXPECT_EQ(out[0], L'\u20AC');
    EXPECT_EQ(util::iconv_to_wc(handleOf(0, kUtf8), "A\xC3\xA9", 3, nullptr, 0), 2u);
    EXPECT_EQ(util::iconv_to_wc(handleOf(0, kUtf8), "A\xC3\xA9", SIZE_MAX, out, 8), 3u);
    EXPECT_EQ(std::wstring(out, 3), std::wstring(L"A\u00E9\0", 3));
}

TEST(CodePages, ToWc_FailureSetsErrno) {
    wchar_t out[8] = {};
    const auto convert = [&](int handle, const char* text, std::size_t count, std::size_t capacity) {
        return failureOf([&] { return util::iconv_to_wc(handle, text, count, out, capacity); });
    };
    const auto failed = [](int error) { return Failure<std::size_t>{kNothing, error}; };
    EXPECT_EQ(convert(0, "A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(kUtf8, "A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(handleOf(0xFFFF, 0), "A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(-1, "A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(handleOf(kUtf8, 0xFFFF), "A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(handleOf(0, kUtf8), "AB", 2, 1), failed(E2BIG));
    EXPECT_EQ(convert(handleOf(0, kUtf8), "\xFF", 1, 8), failed(EILSEQ));
    EXPECT_EQ(convert(handleOf(0, kUtf8), "", 0, 8), failed(EINVAL));
    EXPECT_EQ(convert(handleOf(0, 12345), "A", 1, 8), failed(EINVAL));
    EXPECT_EQ(convert(handleOf(0, kUtf8), "A", std::size_t{1} << 32, 8), failed(EINVAL));
    EXPECT_EQ(EILSEQ, 42);
}

TEST(CodePages, FromWc_UsesTheLowerHalfOfTheHandle) {
    char out[8] = {};
    EXPECT_EQ(util::iconv_from_wc(kUtf8, L"A\u00E9", 2, out, 8, nullptr), 3u);
    EXPECT_EQ(std::string(out, 3), "A\xC3\xA9");
    bool used = true;
    EXPECT_EQ(util::iconv_from_wc(handleOf(1252, kUtf8), L"\u20AC", 1, out, 8, &used), 1u);
    EXPECT_EQ(out[0], '\x80');
    EXPECT_FALSE(used);
    EXPECT_EQ(util::iconv_from_wc(1252, L"\u4E00", 1, out, 8, &used), 1u);
    EXPECT_TRUE(used);
    EXPECT_EQ(util::iconv_from_wc(kUtf8, L"A\u00E9", SIZE_MAX, out, 8, nullptr), 4u);
    EXPECT_EQ(std::string(out, 4), std::string("A\xC3\xA9\0", 4));
}

TEST(CodePages, FromWc_FailureSetsErrno) {
    char out[8] = {};
    bool used = true;
    const auto convert = [&](int handle, const wchar_t* text, std::size_t count, std::size_t capacity) {
        return failureOf([&] { return util::iconv_from_wc(handle, text, count, out, capacity, nullptr); });
    };
    const auto failed = [](int error) { return Failure<std::size_t>{kNothing, error}; };
    EXPECT_EQ(convert(0, L"A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(handleOf(0, kUtf8), L"A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(util::iconv_open("UTF-8", "LATIN1"), L"A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(-1, L"A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(handleOf(0xFFFF, 1), L"A", 1, 8), failed(EBADF));
    EXPECT_EQ(convert(1252, L"AB", 2, 1), failed(E2BIG));
    EXPECT_EQ(convert(1252, L"", 0, 8), failed(EINVAL));
    EXPECT_EQ(convert(12345, L"A", 1, 8), failed(EINVAL));
    EXPECT_EQ(convert(1252, L"A", 1, std::size_t{1} << 32), failed(EINVAL));
    EXPECT_EQ(util::iconv_from_wc(12345, L"A", 1, out, 8, &used), kNothing);
    EXPECT_TRUE(used);  // untouched
}

TEST(CodePages, IsCheckDefaultValidMatchesTheSystem) {
    for (const int page : {kUtf8, 1252, kLatin1, 932, 50220, 65000, 12345}) {
        char byte = 0;
        BOOL used = FALSE;
        const bool done = WideCharToMultiByte(static_cast<UINT>(page), 0, L"a", 1, &byte, 1, nullptr, &used) != 0;
        const bool allowed = done || GetLastError() != ERROR_INVALID_PARAMETER;
        EXPECT_EQ(util::iconv_isCheckDefaultValid(page), allowed) << page;
        bool defaultUsed = false;
        char out[8];
        errno = 0;
        const std::size_t written = util::iconv_from_wc(page, L"a", 1, out, 8, &defaultUsed);
        EXPECT_EQ(written != kNothing, done) << page;
        EXPECT_EQ(errno, done ? 0 : EINVAL) << page;
    }
}

TEST(CodePages, ThreadsMayLookUpNamesConcurrently) {
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([] {
            for (int round = 0; round < 500; ++round) {
                EXPECT_EQ(util::iconv_open("koi8-r", nullptr), 20866);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace

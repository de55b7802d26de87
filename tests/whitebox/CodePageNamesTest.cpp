#include "text/CodePageNames.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ImportHook.h"
#include "support/RandomText.h"
#include "text/CodePageState.h"
#include "vorel/text/CodePages.h"

namespace {

using vorel::text::CodePageName;
using vorel::text::kCodePageNames;

constexpr auto kNothing = static_cast<std::size_t>(-1);

namespace util = vorel::util;

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::set<unsigned int> pagesOfTheTable() {
    std::set<unsigned int> pages;
    for (const CodePageName& row : kCodePageNames) {
        pages.insert(row.codePage);
    }
    return pages;
}

bool hasCodePage(unsigned int page) {
    return MultiByteToWideChar(page, 0, "", 1, nullptr, 0) != 0;
}

TEST(CodePageNames, TableContains617NamesOf146CodePages) {
    EXPECT_EQ(std::size(kCodePageNames), 617u);
    EXPECT_EQ(pagesOfTheTable().size(), 146u);
}

TEST(CodePageNames, AreSortedByCodePageAndInUpperCase) {
    EXPECT_TRUE(std::is_sorted(std::begin(kCodePageNames), std::end(kCodePageNames),
                               [](const CodePageName& a, const CodePageName& b) { return a.codePage < b.codePage; }));
    for (const CodePageName& row : kCodePageNames) {
        EXPECT_EQ(upperCase(row.name()), row.name());
        EXPECT_FALSE(std::string(row.name()).empty());
    }
    EXPECT_STREQ(kCodePageNames[0].name(), "IBM EBCDIC US-CANADA");
    EXPECT_EQ(kCodePageNames[0].codePage, 37u);
    EXPECT_STREQ(std::rbegin(kCodePageNames)->name(), "UTF-8");
}

/// The FNV-1a digest of all rows. Each row is a line such as "37:IBM EBCDIC US-CANADA".
std::uint64_t digestOfTheTable() {
    std::uint64_t digest = 0xCBF29CE484222325;
    for (const CodePageName& row : kCodePageNames) {
        for (const char c : std::to_string(row.codePage) + ':' + row.name() + '\n') {
            digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001B3;
        }
    }
    return digest;
}

TEST(CodePageNames, TableMatchesItsDigest) {
    // Callers rely on every name and its code page. The digest also depends on the order of the rows.
    EXPECT_EQ(digestOfTheTable(), 0xD52CEDB5EBE62034u);
}

TEST(CodePageNames, AreFoundInAnyCase) {
    std::set<std::string> seen;
    for (const CodePageName& row : kCodePageNames) {
        EXPECT_TRUE(seen.insert(row.name()).second) << row.name() << " occurs twice";
        std::string lower = row.name();
        std::string mixed = row.name();
        for (std::size_t at = 0; at < lower.size(); ++at) {
            const bool isLetter = lower[at] >= 'A' && lower[at] <= 'Z';
            lower[at] = isLetter ? static_cast<char>(lower[at] - 'A' + 'a') : lower[at];
            mixed[at] = at % 2 == 0 ? lower[at] : mixed[at];
        }
        for (const std::string& name : {std::string(row.name()), lower, mixed}) {
            EXPECT_EQ(util::iconv_open(name.c_str(), nullptr), static_cast<int>(row.codePage)) << name;
            EXPECT_EQ(util::iconv_getCodePage(name.c_str()),
                      hasCodePage(row.codePage) ? static_cast<int>(row.codePage) : -1)
                << name;
        }
    }
}

/// The hash function of the library's map of names. For each byte, the new hash is 31 times the previous hash plus the
/// byte, with A to Z in lower case.
std::uint32_t hashOf(const std::string& name) {
    std::uint32_t hash = 0;
    for (const char c : name) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        hash = hash * 31 + static_cast<unsigned char>(isCapital ? c - 'A' + 'a' : c);
    }
    return hash;
}

TEST(CodePageNames, UnknownNameWithTheHashOfAKnownNameIsNotFound) {
    int collisions = 0;
    for (const CodePageName& row : kCodePageNames) {
        const std::string name = row.name();
        for (std::size_t at = 0; at + 1 < name.size(); ++at) {
            if (name[at] < '1' || name[at] > '9' || name[at + 1] < 'A' || name[at + 1] > 'Z') {
                continue;
            }
            // Subtracting 1 from a byte and adding 31 to the next byte leaves the hash unchanged.
            std::string colliding = name;
            colliding[at] = static_cast<char>(colliding[at] - 1);
            colliding[at + 1] = static_cast<char>(colliding[at + 1] - 'A' + 'a' + 31);
            EXPECT_EQ(hashOf(colliding), hashOf(name));
            EXPECT_EQ(util::iconv_open(colliding.c_str(), nullptr), -1) << colliding;
            ++collisions;
        }
    }
    EXPECT_GT(collisions, 0);
}

/// A lookup reads the map only while it holds the lock. Another thread may change the map afterwards.
TEST(CodePageNames, AreReadUnderTheLock) {
    vorel::detail::CodePageState& state = *vorel::detail::codePageState.get();
    const void* const section = state.codeMapLock.getHandle();
    const auto fillWithPage = [&](unsigned int page) {
        state.codePageNames.clear();
        state.codePageNames.put(hashOf("utf-8"), "UTF-8", page);
    };
    using Lookup = int (*)();
    const Lookup lookups[] = {[] { return util::iconv_open("utf-8", nullptr); },
                              [] { return util::iconv_getCodePage("utf-8"); }};
    for (const Lookup lookup : lookups) {
        fillWithPage(1252);
        int depth = 0;
        const test::ImportHook<importedEnterCriticalSection> enter([&](CRITICAL_SECTION* entered) {
            enter.original(entered);
            depth += entered == section ? 1 : 0;
        });
        const test::ImportHook<importedLeaveCriticalSection> leave([&](CRITICAL_SECTION* left) {
            depth -= left == section ? 1 : 0;
            if (left == section && depth == 0) {
                fillWithPage(437);  // simulates a change by a thread that waited for the lock
            }
            leave.original(left);
        });
        EXPECT_EQ(lookup(), 1252);
        EXPECT_EQ(lookup(), 437);
        EXPECT_EQ(depth, 0);
    }
    state.codePageNames.clear();
}

/// Converts `text` with a direct call of the system's function.
std::wstring directly(UINT page, const std::string& text) {
    wchar_t out[256];
    const int units =
        MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()), out, 256);
    return units > 0 ? std::wstring(out, static_cast<std::size_t>(units)) : L"failed";
}

std::string directly(UINT page, const std::wstring& text) {
    char out[256];
    const int bytes =
        WideCharToMultiByte(page, 0, text.data(), static_cast<int>(text.size()), out, 256, nullptr, nullptr);
    return bytes > 0 ? std::string(out, static_cast<std::size_t>(bytes)) : "failed";
}

TEST(CodePageNames, EveryCodePageConvertsLikeADirectCallOfTheSystem) {
    test::RandomText random(20261121);
    int found = 0;
    for (const unsigned int page : pagesOfTheTable()) {
        if (!hasCodePage(page)) {
            continue;
        }
        ++found;
        for (int round = 0; round < 20; ++round) {
            const std::vector<unsigned char> bytes = random.bytes(1 + random.below(20));
            const std::string text(bytes.begin(), bytes.end());
            wchar_t wide[256];
            const std::size_t units = util::iconv_to_wc(util::iconv_open_codepage(0, static_cast<int>(page)),
                                                        text.data(), text.size(), wide, 256);
            ASSERT_EQ(units == kNothing ? L"failed" : std::wstring(wide, units), directly(page, text)) << page;
            std::wstring back;
            for (std::size_t unit = 0; unit < 8; ++unit) {
                back += static_cast<wchar_t>(1 + random.below(random.oneIn(2) ? 0x7F : 0x2FFF));
            }
            char narrow[256];
            const std::size_t count = util::iconv_from_wc(util::iconv_open_codepage(static_cast<int>(page), 0),
                                                          back.data(), back.size(), narrow, 256, nullptr);
            ASSERT_EQ(count == kNothing ? "failed" : std::string(narrow, count), directly(page, back)) << page;
        }
    }
    EXPECT_GT(found, 10);
}

}  // namespace

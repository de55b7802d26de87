// The capacity of a result. Up to 1 Mi units, the capacity of a string is a power of two. Above 1 Mi units, it is a
// multiple of 1 Mi units. The capacity of an array is five slots, doubled as often as necessary. Decoding to a string
// gives the capacity that it would have if blocks of 450 units were appended. Encoding to an array gives the capacity
// that it would have if blocks of at most 256 bytes were appended. Encoding to a string gives the capacity that one
// call of `reserve` for the whole text would give.

#include <string>

#include <gtest/gtest.h>

#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::util::ConvertStringtoUTF8;
using vorel::util::ConvertUTF8toString;
using vorel::util::EncodeAndAppendToBuffer;

constexpr unsigned int kMi = 0x100000;

struct Growth {
    unsigned int length;
    unsigned int capacity;
    const char* why;
};

/// Whether a text and its terminator exactly fill a capacity above 1 Mi units. For such a text, `reserve` allocates 1
/// Mi units more.
bool endsAtStep(unsigned int length) {
    return length > kMi && (length + 1) % kMi == 0;
}

constexpr Growth kOfStrings[] = {
    {1, 16, "the smallest capacity"},
    {15, 16, "space for the terminator only"},
    {16, 32, "no space for the terminator in 16 units"},
    {255, 256, "one block of encoded text, less one byte"},
    {256, 512, "one block of encoded text"},
    {449, 512, "one block of decoded text, less one unit"},
    {450, 512, "one block of decoded text"},
    {451, 512, "one block and one unit"},
    {511, 512, "a text that fills 512 units with its terminator"},
    {512, 1024, "no space for the terminator in 512 units"},
    {1000, 1024, "several blocks"},
    {65535, 65536, "a text of many blocks that fills 65,536 units with its terminator"},
    {65536, 131072, "no space for the terminator in 65,536 units"},
    {kMi - 1, kMi, "the last capacity before the growth by 1 Mi units"},
    {kMi, 2 * kMi, "the first growth by 1 Mi units"},
    {2 * kMi - 2, 2 * kMi, "one unit free in 2 Mi units"},
    {2 * kMi - 1, 2 * kMi, "a text that fills 2 Mi units with its terminator"},
    {2 * kMi, 3 * kMi, "no space for the terminator in 2 Mi units"},
    {3 * kMi - 1, 3 * kMi, "a text that fills 3 Mi units with its terminator"},
    {3 * kMi, 4 * kMi, "no space for the terminator in 3 Mi units"},
    {5 * kMi - 1, 5 * kMi, "a text that fills 5 Mi units with its terminator"},
};

TEST(UnicodeCapacity, LengthOfDecodedTextDeterminesTheCapacity) {
    for (const Growth& growth : kOfStrings) {
        SCOPED_TRACE(testing::Message() << growth.length << ": " << growth.why);
        const std::string ascii(growth.length, 'a');
        BaseString<wchar_t> fresh;
        ASSERT_TRUE(ConvertUTF8toString(fresh, ascii.c_str(), -1, true));
        EXPECT_EQ(fresh.length(), growth.length);
        EXPECT_EQ(fresh.capacity(), growth.capacity);
        BaseString<wchar_t> reused(L"before");
        ASSERT_TRUE(ConvertUTF8toString(reused, ascii.c_str(), static_cast<int>(ascii.size()), true));
        EXPECT_EQ(reused.capacity(), growth.capacity);
    }
}

TEST(UnicodeCapacity, LengthOfEncodedTextDeterminesTheCapacity) {
    for (const Growth& growth : kOfStrings) {
        SCOPED_TRACE(testing::Message() << growth.length << ": " << growth.why);
        const std::wstring ascii(growth.length, L'a');
        const unsigned int capacity = growth.capacity + (endsAtStep(growth.length) ? kMi : 0);
        BaseString<char> fresh;
        ConvertStringtoUTF8(ascii.c_str(), fresh, -1);
        EXPECT_EQ(fresh.length(), growth.length);
        EXPECT_EQ(fresh.capacity(), capacity);
        BaseString<char> reused("before");
        ConvertStringtoUTF8(ascii.c_str(), reused, static_cast<int>(ascii.size()));
        EXPECT_EQ(reused.capacity(), capacity);
    }
}

/// Texts that nearly or completely fill a capacity, and that end with characters of several units or bytes.
TEST(UnicodeCapacity, CapacityIncludesAllUnitsOfTheLastCharacter) {
    for (const unsigned int full : {1024u, kMi, 2 * kMi}) {
        for (unsigned int missing = 0; missing != 6; ++missing) {
            SCOPED_TRACE(testing::Message() << missing << " units fewer than " << full);
            const unsigned int length = full - missing;
            const unsigned int next = full < kMi ? 2 * full : full + kMi;
            BaseString<wchar_t> units;
            ASSERT_TRUE(
                ConvertUTF8toString(units, (std::string(length - 2, 'a') + "\xF0\x9F\x98\x80").c_str(), -1, true));
            EXPECT_EQ(units.length(), length);
            EXPECT_EQ(units.capacity(), missing == 0 ? next : full);
            BaseString<char> bytes;
            ConvertStringtoUTF8((std::wstring(length - 7, L'a') + L"\x20AC\xD83D\xDE00").c_str(), bytes, -1);
            EXPECT_EQ(bytes.length(), length);
            EXPECT_EQ(bytes.capacity(), missing == 0 || endsAtStep(length) ? next : full);
        }
    }
}

TEST(UnicodeCapacity, ShorterTextDoesNotReduceTheCapacity) {
    BaseString<wchar_t> units;
    units.reserve(2 * kMi, true);
    ASSERT_TRUE(ConvertUTF8toString(units, std::string(1000, 'a').c_str(), -1, true));
    EXPECT_EQ(units.capacity(), 3 * kMi);
    BaseString<char> bytes;
    bytes.reserve(2 * kMi, true);
    ConvertStringtoUTF8(std::wstring(1000, L'a').c_str(), bytes, -1);
    EXPECT_EQ(bytes.capacity(), 3 * kMi);
}

/// Trailing bytes are not checked. If the first byte of a sequence is not a valid lead byte, the decoder keeps only the
/// whole blocks of 450 units before this byte.
TEST(UnicodeCapacity, CapacityForMalformedTextFitsItsOutput) {
    struct Case {
        std::string bytes;
        unsigned int length;
        unsigned int capacity;
        const char* why;
    };
    const std::string tail(3000, 'a');
    const Case cases[] = {
        {std::string(449, 'a') + "\xFF" + tail, 0, 0, "no whole block before the invalid byte"},
        {std::string(450, 'a') + "\xFF" + tail, 450, 512, "one block before the invalid byte"},
        {std::string(530, 'a') + "\xFF" + tail, 450, 512, "530 units would not fit in the capacity"},
        {std::string(449, 'a') + "\xF0\x9F\x98\x80\xFF" + tail, 450, 512,
         "a pair crosses the end of the block; its first unit is kept"},
        {std::string(1023, 'a') + "\xFF" + tail, 900, 1024, "1,023 units before the invalid byte would fit"},
        {std::string(1024, 'a') + "\xFF" + tail, 900, 1024, "1,024 units before the invalid byte would not fit"},
        {std::string(1800, 'a') + "\xFF" + tail, 1800, 2048, "four blocks before the invalid byte"},
        {std::string(kMi, 'a') + "\xFF" + tail, kMi - 76, kMi, "2,330 blocks before the invalid byte"},
        {std::string(1020, 'a') + "\xC3zzz", 1023, 1024, "any byte after the lead byte is a trailing byte"},
        {std::string(1020, 'a') + "\xC3zzzz", 1024, 2048,
         "one more letter fills the capacity, so the terminator does not fit"},
        {std::string(1021, 'a') + "\xF0\x80\x81\x81z", 1023, 1024, "an overlong form of four bytes is one unit"},
        {std::string(1021, 'a') + "\xF2\x80\x81\x81z", 1024, 2048, "four bytes for a value above 0xFFFF are a pair"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        BaseString<wchar_t> units;
        ConvertUTF8toString(units, c.bytes.c_str(), -1, false);
        EXPECT_EQ(units.length(), c.length);
        EXPECT_EQ(units.capacity(), c.capacity);
    }
    BaseString<char> bytes;
    ConvertStringtoUTF8((std::wstring(1020, L'a') + L"\xD800\xDC00").c_str(), bytes, -1);
    EXPECT_EQ(bytes.capacity(), 2048u) << "a pair is encoded as four bytes";
    BaseString<char> replaced;
    ConvertStringtoUTF8((std::wstring(1020, L'a') + L"\xDC00\xD800").c_str(), replaced, -1);
    EXPECT_EQ(replaced.capacity(), 1024u) << "each unpaired surrogate is encoded as one byte";
}

/// If the text is invalid, the string grows only if the whole blocks of 450 units before the invalid byte do not fit.
TEST(UnicodeCapacity, StringGrowsOnlyForTheWholeBlocksOfInvalidText) {
    struct Case {
        unsigned int before;    // units reserved
        unsigned int units;     // units before the invalid byte
        unsigned int length;    // units that are kept
        unsigned int capacity;  // capacity after the conversion
    };
    constexpr Case kCases[] = {{0, 0, 0, 0},         {0, 3, 0, 0},          {15, 3, 0, 16},
                               {15, 20, 0, 16},      {15, 449, 0, 16},      {15, 450, 450, 512},
                               {100, 130, 0, 128},   {449, 460, 450, 512},  {511, 530, 450, 512},
                               {511, 899, 450, 512}, {511, 900, 900, 1024}, {1000, 700, 450, 1024}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.units << " units before the invalid byte, " << c.before << " reserved");
        const std::string text = std::string(c.units, 'a') + "\xFFz";
        for (const bool throwOnError : {false, true}) {
            BaseString<wchar_t> output;
            output.reserve(c.before, true);
            output.clear();
            try {
                EXPECT_FALSE(ConvertUTF8toString(output, text.c_str(), -1, throwOnError));
                EXPECT_FALSE(throwOnError);
            } catch (const vorel::Exception&) {
                EXPECT_TRUE(throwOnError);
            }
            EXPECT_EQ(output.view(), std::wstring(c.length, L'a'));
            EXPECT_EQ(output.capacity(), c.capacity);
            EXPECT_EQ(output.c_str() == nullptr, c.capacity == 0);
        }
    }
}

TEST(UnicodeCapacity, CapacityOfAnArrayDoubles) {
    constexpr Growth kOfArrays[] = {
        {1, 5, "the smallest capacity"},
        {5, 5, "all five slots"},
        {6, 10, "one byte more than five slots"},
        {320, 320, "all 320 slots"},
        {321, 640, "one byte more than 320 slots"},
        {640, 640, "all 640 slots"},
        {641, 1280, "one byte more than 640 slots"},
        {5000, 5120, "many blocks"},
        {5 * (kMi / 4), 5 * (kMi / 4), "all slots of a large array"},
    };
    for (const Growth& growth : kOfArrays) {
        SCOPED_TRACE(testing::Message() << growth.length << ": " << growth.why);
        const std::wstring ascii(growth.length, L'a');
        Array<unsigned char> replaced;
        ConvertStringtoUTF8(ascii.c_str(), replaced, false, -1);
        EXPECT_EQ(replaced.size(), growth.length);
        EXPECT_EQ(replaced.allocated(), growth.capacity);
        Array<unsigned char> appended;
        EncodeAndAppendToBuffer(ascii.c_str(), appended);
        EXPECT_EQ(appended.allocated(), growth.capacity);
    }
    Array<unsigned char> odd;
    odd.reserve(7, true);
    ConvertStringtoUTF8(std::wstring(1000, L'a').c_str(), odd, false, -1);
    EXPECT_EQ(odd.allocated(), 1792u) << "seven slots, doubled eight times";
    EncodeAndAppendToBuffer(std::wstring(1000, L'\xD800').c_str(), odd);
    EXPECT_EQ(odd.size(), 4000u) << "three bytes for each surrogate";
    EXPECT_EQ(odd.allocated(), 7168u);
}

}  // namespace

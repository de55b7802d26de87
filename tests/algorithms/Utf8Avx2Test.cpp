/// \file
/// The AVX2 codec converts the first part of a text, and leaves the rest to the scalar codec. The tests use random and
/// damaged texts at inaccessible pages. They check that the converted part agrees with the reference, does not end
/// within a character, and fits into the capacity.

#include "algorithms/Utf8Avx2.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "algorithms/Processor.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "support/Utf8Reference.h"

namespace {

using test::RandomText;
using vorel::algorithms::countDecodedAvx2;
using vorel::algorithms::countEncodedAvx2;
using vorel::algorithms::decodeUtf8Avx2;
using vorel::algorithms::encodeUtf8Avx2;
using vorel::algorithms::Overwrite;
using vorel::algorithms::Progress;

constexpr std::uint64_t kSeed = 20261121;
constexpr std::size_t kNoBound = static_cast<std::size_t>(-1);
constexpr std::size_t kMax = 100;
constexpr unsigned char kGuardByte = 0x5A;
constexpr wchar_t kGuard = 0x5A5A;

/// A wide text that consists of runs. All characters of a run are of one kind.
std::wstring randomText(RandomText& random, bool withLoneSurrogates) {
    std::wstring text;
    const std::size_t length = random.below(kMax);
    while (text.size() < length) {
        const std::size_t kind = random.below(withLoneSurrogates ? 6 : 5);
        for (std::size_t count = 1 + random.below(random.oneIn(3) ? 40 : 4); count != 0; --count) {
            switch (kind) {
            case 0: text += static_cast<wchar_t>(1 + random.below(0x7F)); break;
            case 1: text += static_cast<wchar_t>(0x80 + random.below(0x780)); break;
            case 2: text += static_cast<wchar_t>(0x800 + random.below(0xD000)); break;
            case 3: text += static_cast<wchar_t>(0xE000 + random.below(0x2000)); break;
            case 4:
                text += static_cast<wchar_t>(0xD800 + random.below(0x400));
                text += static_cast<wchar_t>(0xDC00 + random.below(0x400));
                break;
            default: text += static_cast<wchar_t>(0xD800 + random.below(0x800)); break;
            }
        }
    }
    return text;
}

class Utf8Avx2 : public testing::Test {
protected:
    void SetUp() override {
        if (!vorel::algorithms::Processor::usesAvx2()) {
            GTEST_SKIP() << "this processor has no AVX2";
        }
    }

    /// Decodes at most the first `left` bytes of `bytes`, which end at an inaccessible page, and checks the result.
    Progress decode(std::string_view bytes, std::size_t left, std::size_t room, Overwrite overwrite) {
        const auto* const input =
            m_bytes.placeAtEnd({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        std::wstring out(room + 40, kGuard);
        const Progress done = decodeUtf8Avx2(input, left, out.data(), room, overwrite);
        EXPECT_LE(done.read, left);
        EXPECT_LE(done.written, room);
        const test::DecodedText expected = test::decodeUtf8(bytes, static_cast<int>(done.read));
        EXPECT_FALSE(expected.error);
        EXPECT_EQ(expected.bytesRead, done.read)
            << "the part that was read must end between two characters, before any zero";
        EXPECT_EQ(out.substr(0, done.written), expected.units);
        const std::size_t untouched = overwrite == Overwrite::Allowed ? room : done.written;
        EXPECT_EQ(out.find_first_not_of(kGuard, untouched), std::wstring::npos)
            << "nothing may be written after the capacity, nor after the text if overwriting is forbidden";
        const Progress counted = countDecodedAvx2(input, left);
        EXPECT_LE(counted.read, left);
        const test::DecodedText countedText = test::decodeUtf8(bytes, static_cast<int>(counted.read));
        EXPECT_EQ(countedText.bytesRead, counted.read)
            << "the part that was read must end between two characters, before any zero";
        EXPECT_EQ(countedText.units.size(), counted.written);
        return done;
    }

    /// Encodes at most the first `left` units of `units` and checks the result. If `paired` is true, surrogates are
    /// read in pairs.
    Progress encode(std::wstring_view units, std::size_t left, std::size_t room, bool paired) {
        const auto* const input = m_units.placeAtEnd(units);
        std::string out(room + 40, static_cast<char>(kGuardByte));
        const Progress done = encodeUtf8Avx2(input, left, reinterpret_cast<unsigned char*>(out.data()), room, paired);
        EXPECT_LE(done.read, left);
        EXPECT_LE(done.written, room);
        const std::wstring taken(units.substr(0, done.read));
        EXPECT_EQ(taken.find(L'\0'), std::wstring::npos);
        EXPECT_EQ(out.substr(0, done.written),
                  paired ? test::encodeUtf16(taken + L'\0', -1).bytes : test::encodeUnits(taken));
        EXPECT_EQ(out.find_first_not_of(static_cast<char>(kGuardByte), room), std::string::npos)
            << "nothing may be written after the capacity";
        const Progress counted = countEncodedAvx2(input, left, paired);
        EXPECT_LE(counted.read, left);
        const std::wstring countedUnits(units.substr(0, counted.read));
        EXPECT_EQ(countedUnits.find(L'\0'), std::wstring::npos);
        EXPECT_EQ(counted.written, paired ? test::encodeUtf16(countedUnits + L'\0', -1).bytes.size()
                                          : test::encodeUnits(countedUnits).size());
        return done;
    }

    test::PageEdge<unsigned char> m_bytes{std::size_t{3} * 4096};
    test::PageEdge<wchar_t> m_units{std::size_t{3} * 4096};
};

TEST_F(Utf8Avx2, DecodesRandomTextsWithinBoundAndCapacity) {
    RandomText random(kSeed);
    for (int text = 0; text < 1500; ++text) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", text " << text);
        std::string bytes = test::encodeUtf16(randomText(random, false) + L'\0', -1).bytes;
        if (random.oneIn(2) && !bytes.empty()) {
            bytes[random.below(bytes.size())] = static_cast<char>(random.bits());
        }
        bytes += std::string(6, '\0');
        for (const Overwrite overwrite : {Overwrite::Allowed, Overwrite::Forbidden}) {
            decode(bytes, kNoBound, 2 * kMax, overwrite);
            decode(bytes, random.below(bytes.size()), 2 * kMax, overwrite);
            decode(bytes, kNoBound, random.below(kMax), overwrite);
            decode(bytes, random.below(bytes.size()), random.below(kMax), overwrite);
        }
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(Utf8Avx2, EncodesRandomTextsWithinBoundAndCapacity) {
    RandomText random(kSeed);
    for (int text = 0; text < 1500; ++text) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", text " << text);
        std::wstring units = randomText(random, random.oneIn(2));
        if (random.oneIn(3) && !units.empty()) {
            units[random.below(units.size())] = static_cast<wchar_t>(random.bits());
        }
        units += L'\0';
        for (const bool paired : {true, false}) {
            encode(units, kNoBound, 3 * kMax, paired);
            encode(units, random.below(units.size()), 3 * kMax, paired);
            encode(units, kNoBound, random.below(3 * kMax), paired);
            encode(units, random.below(units.size()), random.below(kMax), paired);
        }
        if (HasFailure()) {
            return;
        }
    }
}

/// A character and its number of bytes in UTF-8.
struct Kind {
    const char* name;
    std::wstring character;
    std::size_t bytes;
};

const Kind& kindOf(std::size_t index) {
    static const Kind kKinds[] = {{"ASCII", L"a", 1},
                                  {"two bytes", L"\x00E9", 2},
                                  {"three bytes", L"\x20AC", 3},
                                  {"four bytes", L"\xD83D\xDE00", 4}};
    return kKinds[index];
}
constexpr std::size_t kKindCount = 4;

std::wstring repeated(const std::wstring& character, std::size_t count) {
    std::wstring units;
    for (; count != 0; --count) {
        units += character;
    }
    return units;
}

TEST_F(Utf8Avx2, ConvertsWellFormedTextsCompletely) {
    for (std::size_t index = 0; index != kKindCount; ++index) {
        const Kind& kind = kindOf(index);
        for (std::size_t count = 0; count != 70; ++count) {
            SCOPED_TRACE(testing::Message() << kind.name << ", " << count);
            const std::wstring units = repeated(kind.character, count);
            // The text is far from the end of the page, and the capacity is exactly the required capacity.
            std::string bytes = test::encodeUtf16(units + L'\0', -1).bytes;
            const std::size_t size = bytes.size();
            bytes += std::string(64, '\0');
            EXPECT_EQ(decode(bytes, kNoBound, units.size(), Overwrite::Allowed).read, size);
            EXPECT_EQ(decode(bytes, size, units.size(), Overwrite::Forbidden).read, size);
            const std::wstring padded = units + std::wstring(32, L'\0');
            EXPECT_EQ(encode(padded, kNoBound, size, true).read, units.size());
            EXPECT_EQ(encode(padded, units.size(), size, true).read, units.size());
        }
    }
}

/// A text that continues in the next page is converted completely.
TEST_F(Utf8Avx2, ConvertsAcrossPages) {
    for (std::size_t index = 0; index != kKindCount; ++index) {
        const Kind& kind = kindOf(index);
        for (std::size_t padding = 40; padding != 110; ++padding) {
            SCOPED_TRACE(testing::Message() << kind.name << ", " << padding);
            const std::wstring units = L"z" + repeated(kind.character, std::max<std::size_t>(4200 / kind.bytes, 2200));
            const std::string bytes = test::encodeUtf16(units + L'\0', -1).bytes;
            const std::string padded = bytes + std::string(padding, '\0');
            EXPECT_EQ(decode(padded, kNoBound, units.size(), Overwrite::Allowed).read, bytes.size());
            EXPECT_EQ(decode(padded, bytes.size(), units.size(), Overwrite::Allowed).read, bytes.size());
            const std::wstring paddedUnits = units + std::wstring(padding, L'\0');
            EXPECT_EQ(encode(paddedUnits, kNoBound, bytes.size() + 64, true).read, units.size());
            EXPECT_EQ(encode(paddedUnits, units.size(), bytes.size() + 64, true).read, units.size());
        }
    }
}

/// A long run of characters of one or two bytes is converted across pages without a stop at each border. The text ends
/// with zeros or at the bound, directly before an inaccessible page. Its last 64 bytes or 32 units may be left to the
/// scalar codec.
TEST_F(Utf8Avx2, ConvertsRunsOfSeveralPages) {
    for (const std::size_t index : {std::size_t{0}, std::size_t{1}}) {
        const Kind& kind = kindOf(index);
        for (std::size_t more = 0; more != 70; ++more) {
            SCOPED_TRACE(testing::Message() << kind.name << ", " << more);
            const std::wstring units = repeated(kind.character, 5000 + more);
            const std::string bytes = test::encodeUtf16(units + L'\0', -1).bytes;
            const std::size_t room = bytes.size() + 64;
            for (std::size_t zeros = 1; zeros != 4; ++zeros) {
                const std::string endedBytes = bytes + std::string(zeros, '\0');
                const std::wstring endedUnits = units + std::wstring(zeros, L'\0');
                EXPECT_GE(decode(endedBytes, kNoBound, room, Overwrite::Allowed).read + 64, bytes.size());
                EXPECT_GE(encode(endedUnits, kNoBound, room, true).read + 32, units.size());
            }
            EXPECT_GE(decode(bytes, bytes.size(), room, Overwrite::Allowed).read + 64, bytes.size());
            EXPECT_GE(encode(units, units.size(), room, true).read + 32, units.size());
            // Another kind of character ends the run.
            const std::wstring mixed = units + L"\x20AC" + units.substr(0, more) + L'\0';
            const std::string mixedBytes = test::encodeUtf16(mixed, -1).bytes + '\0';
            EXPECT_GE(decode(mixedBytes, kNoBound, room, Overwrite::Allowed).read + 64, bytes.size());
            EXPECT_GE(encode(mixed, kNoBound, room, true).read + 32, units.size());
        }
    }
}

/// Texts of several pages that switch between kinds of characters.
TEST_F(Utf8Avx2, ConvertsRandomTextsOfSeveralPages) {
    constexpr std::size_t kUnits = 3000;
    RandomText random(kSeed);
    for (int text = 0; text < 60; ++text) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", text " << text);
        const auto longText = [&](bool withLoneSurrogates) {
            std::wstring units;
            while (units.size() < kUnits) {
                units += randomText(random, withLoneSurrogates && random.oneIn(20));
            }
            return units;
        };
        const std::wstring units = longText(true) + std::wstring(32, L'\0');
        const std::size_t room = random.oneIn(2) ? 3 * units.size() : random.below(3 * kUnits);
        encode(units, kNoBound, room, true);
        encode(units, random.below(units.size()), room, false);
        const std::string bytes = test::encodeUtf16(longText(false) + L'\0', -1).bytes + std::string(64, '\0');
        decode(bytes, kNoBound, room, Overwrite::Allowed);
        decode(bytes, random.below(bytes.size()), room, Overwrite::Allowed);
        if (HasFailure()) {
            return;
        }
    }
}

/// A byte that the conversion does not accept as a lead byte (a surplus trailing byte, 0xF1, 0xFF) ends the input like
/// a zero. So the byte may be the last byte before an inaccessible page.
TEST_F(Utf8Avx2, ReadsNothingPastAnInvalidByte) {
    for (const std::string last : {"\x80", "\xBF", "\xF1", "\xFF", "\xC3\xA9\x80", "\xE2\x82\xAC\x80"}) {
        for (const std::string before : {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
            std::string text;
            for (std::size_t count = 0; count != 40; ++count, text += before) {
                const std::string bytes = text + last;
                EXPECT_LE(decode(bytes, kNoBound, 200, Overwrite::Allowed).read, bytes.size() - 1);
                EXPECT_LE(decode(bytes, kNoBound, 200, Overwrite::Forbidden).read, bytes.size() - 1);
            }
        }
    }
}

/// The encoder may store bytes after the encoded text. They must be zeros, so that unused slots of an array stay zero.
TEST_F(Utf8Avx2, StoresOnlyZerosAfterTheEncodedText) {
    RandomText random(kSeed);
    for (int text = 0; text < 1500; ++text) {
        const std::wstring units = randomText(random, true) + std::wstring(20, L'\0');
        const std::size_t left = random.below(units.size());
        std::string out(3 * kMax + 200, '\0');
        const Progress done = encodeUtf8Avx2(m_units.placeAtEnd(units), left,
                                             reinterpret_cast<unsigned char*>(out.data()), out.size(), text % 2 == 0);
        ASSERT_EQ(out.find_first_not_of('\0', done.written), std::string::npos)
            << "seed " << kSeed << ", text " << text;
    }
}

TEST_F(Utf8Avx2, StopsBeforeMalformedText) {
    // The malformed sequences are: a surplus trailing byte, two sequences whose last byte is missing, a lead byte above
    // 0xF0 with trailing bytes, an overlong form, and a lead byte above 0xF0 without trailing bytes.
    for (const std::string damage : {"\x80", "\xC3z", "\xE2\x82z", "\xF1\x80\x80\x80", "\xF0\x8F\xBF\xBF", "\xF8"}) {
        for (const std::string before : {"", "a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
            for (std::size_t count = 0; count != 20; ++count) {
                std::string bytes;
                for (std::size_t character = 0; character != count; ++character) {
                    bytes += before;
                }
                const std::size_t valid = bytes.size();
                bytes += damage + std::string(64, 'z') + std::string(6, '\0');
                EXPECT_LE(decode(bytes, kNoBound, 200, Overwrite::Allowed).read, valid)
                    << "malformed sequence of " << damage.size() << " bytes";
            }
        }
    }
}

}  // namespace

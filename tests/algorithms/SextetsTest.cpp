#include "algorithms/Sextets.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "algorithms/Base64Text.h"
#include "algorithms/DaylightText.h"
#include "algorithms/ImplementationChoice.h"
#include "support/BitTextReference.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"

namespace {

namespace algorithms = vorel::algorithms;
using test::Bytes;

constexpr std::size_t kBlockBytes = 24;
constexpr std::size_t kBlockCharacters = 32;
constexpr std::size_t kBlockGroups = 8;
constexpr std::size_t kPage = 4096;

/// An encoding: its alphabet from the reference, and its tables for the algorithms under test.
struct Encoding {
    std::string_view characters;
    algorithms::SextetAlphabet alphabet;
    const algorithms::SextetValues& values;
};

const Encoding kEncodings[] = {
    {test::kBase64Characters,
     {algorithms::kBase64Alphabet.data(), algorithms::SextetOrder::Base64},
     algorithms::kBase64Values},
    {test::kDaylightCharacters,
     {algorithms::kDaylightAlphabet.data(), algorithms::SextetOrder::Daylight},
     algorithms::kDaylightValues},
};
const Encoding& kBase64 = kEncodings[0];
const Encoding& kDaylight = kEncodings[1];

/// Decodes a group of four characters. Returns false at the first character without a value, and does not read the
/// characters after it.
template <class T>
bool decodeGroup(const T* text, const algorithms::SextetValues& table, unsigned char* out) {
    unsigned int values[4] = {};
    for (std::size_t at = 0; at < 4; ++at) {
        const unsigned int unit = static_cast<std::make_unsigned_t<T>>(text[at]);
        values[at] = unit < 128 ? table.values[unit] : algorithms::SextetValues::kNone;
        if (values[at] == algorithms::SextetValues::kNone) {
            return false;
        }
    }
    algorithms::decodeFour(values[0], values[1], values[2], values[3], out);
    return true;
}

template <class T>
struct Scalar {
    using Unit = T;
    static constexpr char kName[] = "scalar";
    static constexpr bool kNeedsAvx2 = false;
    static constexpr std::size_t kOverhang = 0;  // bytes that the Base64 decoder may write after the last block
    static constexpr std::size_t kMinBytes = 3;  // fewer bytes are not encoded

    static std::size_t encode(const unsigned char* bytes, std::size_t count, const Encoding& encoding, T* out) {
        const T* const end = algorithms::encodeGroups(bytes, count, encoding.alphabet.characters, out);
        return static_cast<std::size_t>(end - out) / 4 * 3;
    }
    /// Decodes at most `blocks` blocks, and returns the number of groups before the first character without a value.
    static std::size_t decodeBase64(const T* text, std::size_t blocks, unsigned char* out) {
        std::size_t group = 0;
        while (group < blocks * kBlockGroups && decodeGroup(text + 4 * group, kBase64.values, out + 3 * group)) {
            ++group;
        }
        return group;
    }
    static void decodeDaylight(const T* text, std::size_t groups, unsigned char* out) {
        for (std::size_t group = 0; group < groups; ++group) {
            const T* const characters = text + 4 * group;
            algorithms::decodeFour(algorithms::daylightValueOf(characters[0]),
                                   algorithms::daylightValueOf(characters[1]),
                                   algorithms::daylightValueOf(characters[2]),
                                   algorithms::daylightValueOf(characters[3]), out + 3 * group);
        }
    }
};

template <class T>
struct Avx2 {
    using Unit = T;
    static constexpr char kName[] = "AVX2";
    static constexpr bool kNeedsAvx2 = true;
    static constexpr std::size_t kOverhang = 8;
    static constexpr std::size_t kMinBytes = 12;

    static std::size_t encode(const unsigned char* bytes, std::size_t count, const Encoding& encoding, T* out) {
        return algorithms::encodeSextetsAvx2(bytes, count, encoding.alphabet.order, out);
    }
    static std::size_t decodeBase64(const T* text, std::size_t blocks, unsigned char* out) {
        return algorithms::decodeBase64Avx2(text, blocks, out);
    }
    static void decodeDaylight(const T* text, std::size_t groups, unsigned char* out) {
        algorithms::decodeDaylightAvx2(text, groups, out);
    }
};

template <class Implementation>
class Sextets : public test::ImplementationTest<Implementation> {
protected:
    using Unit = typename Implementation::Unit;
    using Text = std::basic_string<Unit>;

    /// Encodes bytes that end or begin at an inaccessible page into a buffer of exactly the required size. Expects that
    /// all whole groups are encoded if there are enough bytes for the algorithm, and none otherwise.
    void expectEncoded(const Bytes& bytes, const Encoding& encoding) {
        const std::size_t whole = bytes.size() / 3 * 3;
        const std::size_t expected = whole < Implementation::kMinBytes ? 0 : whole;
        const std::string wanted = test::charactersOf(
            test::bitsOf({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(expected)}), encoding.characters);
        for (unsigned char* const from : {m_bytes.lastElements(bytes.size()), m_bytes.firstElement()}) {
            std::copy(bytes.begin(), bytes.end(), from);
            Unit* const out = m_text.lastElements(expected / 3 * 4);
            ASSERT_EQ(Implementation::encode(from, bytes.size(), encoding, out), expected);
            ASSERT_EQ(Text(out, expected / 3 * 4), test::text<Unit>(wanted));
        }
    }

    /// Decodes the text at `place` into a buffer of exactly `blocks` blocks and `kOverhang` bytes. Expects that
    /// `groups` groups are decoded. After their bytes, the algorithm may write zeros, but nothing else.
    void expectBase64(const Unit* place, std::size_t blocks, std::size_t groups) {
        const std::size_t capacity = blocks * kBlockBytes + Implementation::kOverhang;
        unsigned char* const out = m_bytes.lastElements(capacity);
        std::fill_n(out, capacity, static_cast<unsigned char>(0xEE));
        ASSERT_EQ(Implementation::decodeBase64(place, blocks, out), groups);
        ASSERT_EQ(Bytes(out, out + 3 * groups), bytesOf(place, groups, kBase64));
        const unsigned char* const untouched =
            std::find_if(out + 3 * groups, out + capacity, [](unsigned char value) { return value != 0; });
        ASSERT_TRUE(std::all_of(untouched, const_cast<const unsigned char*>(out + capacity),
                                [](unsigned char value) { return value == 0xEE; }));
    }

    /// Decodes `groups` groups of the text at `place` into a buffer of exactly their size.
    void expectDaylight(const Unit* place, std::size_t groups) {
        unsigned char* const out = m_bytes.lastElements(3 * groups);
        Implementation::decodeDaylight(place, groups, out);
        ASSERT_EQ(Bytes(out, out + 3 * groups), bytesOf(place, groups, kDaylight));
    }

    static Bytes bytesOf(const Unit* text, std::size_t groups, const Encoding& encoding) {
        std::vector<unsigned int> units;
        for (std::size_t at = 0; at < 4 * groups; ++at) {
            units.push_back(static_cast<std::make_unsigned_t<Unit>>(text[at]));
        }
        return test::bytesOfCharacters(units, encoding.characters);
    }

    /// A text that repeats the alphabet, but skips one character after each block. So each character appears at every
    /// position of a block if the text is long enough.
    static Text textOf(const Encoding& encoding, std::size_t length) {
        Text text;
        for (std::size_t at = 0; at < length; ++at) {
            text += static_cast<Unit>(encoding.characters[(at + at / kBlockCharacters) % 64]);
        }
        return text;
    }

    const Unit* placedAtEnd(const Text& text) {
        return m_text.placeAtEnd(std::basic_string_view<Unit>(text.c_str(), text.size() + 1));
    }
    const Unit* placedAtStart(const Text& text) {
        return m_text.placeAtStart(std::basic_string_view<Unit>(text.c_str(), text.size() + 1));
    }

    /// The number of groups that are decoded if a text of `length` characters ends, with its terminator, at the end of
    /// a page. `valid` is the number of groups that are decoded at other places. At the end of a page, the AVX2
    /// algorithm does not read a block that extends past the terminator.
    static std::size_t groupsAtEnd(std::size_t valid, std::size_t length) {
        const std::size_t readable = (length + 1) / kBlockCharacters * kBlockGroups;
        return Implementation::kNeedsAvx2 ? std::min(valid, readable) : valid;
    }

    test::PageEdge<unsigned char> m_bytes{2 * kPage};
    test::PageEdge<Unit> m_text{2 * kPage / sizeof(Unit)};
};

using Implementations = ::testing::Types<Scalar<char>, Scalar<wchar_t>, Avx2<char>, Avx2<wchar_t>>;
TYPED_TEST_SUITE(Sextets, Implementations, test::ImplementationNames);

TYPED_TEST(Sextets, Encode_EncodesAllWholeGroupsForEveryCount) {
    test::RandomText random(20261123);
    for (const Encoding& encoding : kEncodings) {
        for (std::size_t count = 0; count <= 10 * kBlockBytes + 1; ++count) {
            SCOPED_TRACE(count);
            ASSERT_NO_FATAL_FAILURE(this->expectEncoded(random.bytes(count), encoding));
        }
    }
}

TYPED_TEST(Sextets, Encode_WritesEveryCharacterAtEveryBlockPosition) {
    for (const Encoding& encoding : kEncodings) {
        std::vector<unsigned int> units;
        for (std::size_t at = 0; at < 64 * kBlockCharacters; ++at) {
            units.push_back(static_cast<unsigned char>(encoding.characters[(at + at / kBlockCharacters) % 64]));
        }
        ASSERT_NO_FATAL_FAILURE(this->expectEncoded(test::bytesOfCharacters(units, encoding.characters), encoding));
    }
}

TYPED_TEST(Sextets, Encode_AgreesWithTheReferenceOnRandomBytes) {
    test::RandomText random(20261124);
    for (int round = 0; round < 500; ++round) {
        ASSERT_NO_FATAL_FAILURE(this->expectEncoded(random.bytes(random.below(400)), kEncodings[random.below(2)]))
            << "round " << round;
    }
}

TYPED_TEST(Sextets, DecodeBase64_StopsAtTheEndOfTheTextOrOfTheGivenBlocks) {
    for (std::size_t length = 0; length <= 10 * kBlockCharacters + 1; ++length) {
        const auto text = this->textOf(kBase64, length);
        for (const std::size_t blocks : {0u, 1u, 2u, 4u, 5u, 9u, 12u}) {
            SCOPED_TRACE(testing::Message() << blocks << " blocks, text of length " << length);
            const std::size_t groups = std::min(blocks * kBlockGroups, length / 4);
            ASSERT_NO_FATAL_FAILURE(this->expectBase64(this->placedAtStart(text), blocks, groups));
            ASSERT_NO_FATAL_FAILURE(
                this->expectBase64(this->placedAtEnd(text), blocks, this->groupsAtEnd(groups, length)));
        }
    }
}

TYPED_TEST(Sextets, DecodeBase64_ContinuesAcrossPages) {
    using T = typename TypeParam::Unit;
    const auto text = this->textOf(kBase64, 6 * kBlockCharacters);
    for (std::size_t before = 0; before <= 6 * kBlockCharacters; ++before) {
        SCOPED_TRACE(before);
        T* const place = this->m_text.firstElement() + kPage / sizeof(T) - before;
        std::copy_n(text.c_str(), text.size() + 1, place);
        ASSERT_NO_FATAL_FAILURE(this->expectBase64(place, 6, 6 * kBlockGroups));
    }
}

TYPED_TEST(Sextets, DecodeBase64_StopsAtEveryInvalidUnitAtEveryBlockPosition) {
    using T = typename TypeParam::Unit;
    const auto text = this->textOf(kBase64, 7 * kBlockCharacters);
    for (unsigned int unit = 0; unit < 1u << 8 * sizeof(T); ++unit) {
        const bool isKnown = test::valueIn(kBase64.characters, unit) != std::string_view::npos;
        const bool everywhere = unit < 0x100 || unit % 0x101 == 0;  // other units only at one position
        for (std::size_t at = everywhere ? 0 : unit % 32; at < kBlockCharacters; at += everywhere ? 1 : 32) {
            SCOPED_TRACE(testing::Message() << unit << " at " << at);
            auto changed = text;
            const std::size_t position = (1 + unit % 4) * kBlockCharacters + at;  // in the second to the fifth block
            changed[position] = static_cast<T>(unit);
            const std::size_t groups = isKnown ? 7 * kBlockGroups : position / 4;
            ASSERT_NO_FATAL_FAILURE(this->expectBase64(this->placedAtEnd(changed), 7, groups));
        }
    }
}

TYPED_TEST(Sextets, DecodeBase64_AgreesWithTheReferenceOnRandomTexts) {
    using T = typename TypeParam::Unit;
    test::RandomText random(20261125);
    for (int round = 0; round < 2000; ++round) {
        auto text = test::text<T>(random.from(kBase64.characters, random.below(400)));
        const std::size_t blocks = random.below(text.size() / kBlockCharacters + 2);
        for (std::size_t damage = random.below(3); damage != 0 && !text.empty(); --damage) {
            const auto unit = static_cast<T>(random.bits());
            text[random.below(text.size())] = unit != 0 ? unit : T{'='};
        }
        const auto invalid = std::find_if(text.begin(), text.end(), [&](T unit) {
            const auto value = static_cast<std::make_unsigned_t<T>>(unit);
            return test::valueIn(kBase64.characters, value) == std::string_view::npos;
        });
        const std::size_t valid = std::min(blocks * kBlockGroups, static_cast<std::size_t>(invalid - text.begin()) / 4);
        ASSERT_NO_FATAL_FAILURE(this->expectBase64(this->placedAtStart(text), blocks, valid)) << round;
        ASSERT_NO_FATAL_FAILURE(
            this->expectBase64(this->placedAtEnd(text), blocks, this->groupsAtEnd(valid, text.size())))
            << round;
    }
}

TYPED_TEST(Sextets, DecodeDaylight_DecodesExactlyTheGivenGroups) {
    for (std::size_t groups = kBlockGroups; groups <= 6 * kBlockGroups; ++groups) {
        SCOPED_TRACE(groups);
        // The text has no terminator.
        ASSERT_NO_FATAL_FAILURE(
            this->expectDaylight(this->m_text.placeAtEnd(this->textOf(kDaylight, 4 * groups)), groups));
    }
}

TYPED_TEST(Sextets, DecodeDaylight_DecodesEveryUnitAtEveryBlockPosition) {
    using T = typename TypeParam::Unit;
    const auto text = this->textOf(kDaylight, 3 * kBlockCharacters);
    for (unsigned int unit = 0; unit < 1u << 8 * sizeof(T); ++unit) {
        const bool everywhere = unit < 0x100 || unit % 0x101 == 0;  // other units only at one position
        for (std::size_t at = everywhere ? 0 : unit % 32; at < kBlockCharacters; at += everywhere ? 1 : 32) {
            SCOPED_TRACE(testing::Message() << unit << " at " << at);
            auto changed = text;
            changed[kBlockCharacters + at] = static_cast<T>(unit);
            ASSERT_NO_FATAL_FAILURE(this->expectDaylight(this->placedAtEnd(changed), 3 * kBlockGroups));
        }
    }
}

TEST(SextetsTables, ContainTheAlphabets) {
    for (const Encoding& encoding : kEncodings) {
        EXPECT_EQ(std::string_view(encoding.alphabet.characters, 64), encoding.characters);
        for (unsigned int character = 0; character < 128; ++character) {
            const std::size_t value = test::valueIn(encoding.characters, character);
            EXPECT_EQ(encoding.values.values[character], value == std::string_view::npos ? 0xFFu : value) << character;
        }
    }
}

}  // namespace

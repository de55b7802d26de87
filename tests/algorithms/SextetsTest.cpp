#include "algorithms/Sextets.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "algorithms/ImplementationChoice.h"
#include "support/BitTextReference.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"

namespace {

namespace algorithms = vorel::algorithms;
using algorithms::InvalidCharacters;
using test::Bytes;

constexpr std::size_t kBlockBytes = 24;
constexpr std::size_t kBlockCharacters = 32;
constexpr std::size_t kPage = 4096;

/// The tables of the algorithms for an encoding, and its alphabet from the reference.
struct Encoding {
    std::string_view characters;
    std::string_view alphabet;
    const algorithms::SextetRows& rows;
    const algorithms::SextetValues& values;
};

const Encoding kEncodings[] = {
    {test::kBase64Characters, algorithms::kBase64Alphabet, algorithms::kBase64Rows, algorithms::kBase64Values},
    {test::kDaylightCharacters, algorithms::kDaylightAlphabet, algorithms::kDaylightRows, algorithms::kDaylightValues},
};

template <class T>
struct Scalar {
    using Unit = T;
    static constexpr char kName[] = "scalar";
    static constexpr bool kNeedsAvx2 = false;
    static constexpr std::size_t kOverhang = 0;

    static std::size_t encode(const unsigned char* bytes, std::size_t count, const Encoding& encoding, T* out) {
        return static_cast<std::size_t>(algorithms::encodeGroups(bytes, count, encoding.alphabet.data(), out) - out) /
               4 * 3;
    }
    /// Decodes block by block with the operations for one group.
    static std::size_t decode(const T* text, std::size_t blocks, const Encoding& encoding, InvalidCharacters rule,
                              unsigned char* out) {
        for (std::size_t block = 0; block < blocks; ++block, text += kBlockCharacters, out += kBlockBytes) {
            unsigned int values[kBlockCharacters];
            for (std::size_t at = 0; at < kBlockCharacters; ++at) {
                const unsigned int unit = static_cast<std::make_unsigned_t<T>>(text[at]);
                values[at] = unit < 128 ? encoding.values.values[unit] : algorithms::SextetValues::kNone;
                if (values[at] == algorithms::SextetValues::kNone) {
                    if (rule == InvalidCharacters::Stop) {
                        return block;
                    }
                    values[at] = 0;
                }
            }
            for (std::size_t at = 0; at < kBlockCharacters; at += 4) {
                algorithms::decodeFour(values[at], values[at + 1], values[at + 2], values[at + 3], out + at / 4 * 3);
            }
        }
        return blocks;
    }
};

template <class T>
struct Avx2 {
    using Unit = T;
    static constexpr char kName[] = "AVX2";
    static constexpr bool kNeedsAvx2 = true;
    static constexpr std::size_t kOverhang = 8;

    static std::size_t encode(const unsigned char* bytes, std::size_t count, const Encoding& encoding, T* out) {
        return algorithms::encodeSextetsAvx2(bytes, count, encoding.alphabet.data(), out);
    }
    static std::size_t decode(const T* text, std::size_t blocks, const Encoding& encoding, InvalidCharacters rule,
                              unsigned char* out) {
        return algorithms::decodeSextetsAvx2(text, blocks, encoding.rows, rule, out);
    }
};

template <class Implementation>
class Sextets : public test::ImplementationTest<Implementation> {
protected:
    using Unit = typename Implementation::Unit;
    using Text = std::basic_string<Unit>;

    /// Encodes bytes that end at an inaccessible page into a buffer of exactly the required size. Expects all whole
    /// groups, except those that cannot be read in blocks.
    void expectEncoded(const Bytes& bytes, const Encoding& encoding) {
        unsigned char* const from = m_bytes.lastElements(bytes.size());
        std::copy(bytes.begin(), bytes.end(), from);
        Unit* const out = m_text.lastElements(bytes.size() / 3 * 4);
        const std::size_t done = Implementation::encode(from, bytes.size(), encoding, out);
        const std::size_t left = bytes.size() - done;
        ASSERT_LE(done, bytes.size());
        ASSERT_EQ(done % 3, 0u);
        ASSERT_LT(left, Implementation::kNeedsAvx2 ? 2 * kBlockBytes : 3u);
        const std::string wanted = test::charactersOf(
            test::bitsOf({bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(left)}), encoding.characters);
        ASSERT_EQ(Text(out, done / 3 * 4), test::text<Unit>(wanted));
    }

    /// Decodes the text at `place` into a buffer for exactly `blocks` blocks and the overhang. Expects `done` blocks.
    void expectDecoded(const Unit* place, std::size_t blocks, const Encoding& encoding, InvalidCharacters rule,
                       std::size_t done) {
        unsigned char* const out = m_bytes.lastElements(blocks * kBlockBytes + Implementation::kOverhang);
        ASSERT_EQ(Implementation::decode(place, blocks, encoding, rule, out), done);
        std::vector<unsigned int> units;
        for (std::size_t at = 0; at < done * kBlockCharacters; ++at) {
            units.push_back(static_cast<std::make_unsigned_t<Unit>>(place[at]));
        }
        ASSERT_EQ(Bytes(out, out + done * kBlockBytes), test::bytesOfCharacters(units, encoding.characters));
    }

    /// A text with every character of the alphabet at every position of a block.
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

    test::PageEdge<unsigned char> m_bytes{2 * kPage};
    test::PageEdge<Unit> m_text{2 * kPage / sizeof(Unit)};
};

using Implementations = ::testing::Types<Scalar<char>, Scalar<wchar_t>, Avx2<char>, Avx2<wchar_t>>;
TYPED_TEST_SUITE(Sextets, Implementations, test::ImplementationNames);

TYPED_TEST(Sextets, Encode_EveryCountAndNothingElse) {
    test::RandomText random(20261123);
    for (const Encoding& encoding : kEncodings) {
        for (std::size_t count = 0; count <= 5 * kBlockBytes + 1; ++count) {
            SCOPED_TRACE(count);
            ASSERT_NO_FATAL_FAILURE(this->expectEncoded(random.bytes(count), encoding));
        }
    }
}

TYPED_TEST(Sextets, Encode_EveryCharacterAtEveryBlockPosition) {
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

TYPED_TEST(Sextets, Decode_OnlyTheGivenWholeBlocks) {
    for (const Encoding& encoding : kEncodings) {
        for (std::size_t length = 0; length <= 4 * kBlockCharacters + 1; ++length) {
            const auto* const place = this->placedAtEnd(this->textOf(encoding, length));
            const std::size_t whole = length / kBlockCharacters;
            for (std::size_t blocks = 0; blocks <= 5; ++blocks) {
                SCOPED_TRACE(testing::Message() << blocks << " blocks of " << length);
                ASSERT_NO_FATAL_FAILURE(
                    this->expectDecoded(place, blocks, encoding, InvalidCharacters::Stop, std::min(blocks, whole)));
                const std::size_t counted = std::min(blocks, whole);  // with Zeros the caller knows the length
                ASSERT_NO_FATAL_FAILURE(
                    this->expectDecoded(place, counted, encoding, InvalidCharacters::AsZero, counted));
            }
        }
    }
}

TYPED_TEST(Sextets, Decode_ContinuesAcrossPages) {
    using T = typename TypeParam::Unit;
    for (std::size_t before = 0; before <= 3 * kBlockCharacters; ++before) {
        SCOPED_TRACE(before);
        const auto text = this->textOf(kEncodings[0], 3 * kBlockCharacters);
        T* const place = this->m_text.firstElement() + kPage / sizeof(T) - before;
        std::copy_n(text.c_str(), text.size() + 1, place);
        ASSERT_NO_FATAL_FAILURE(this->expectDecoded(place, 4, kEncodings[0], InvalidCharacters::Stop, 3));
    }
}

TYPED_TEST(Sextets, Decode_EveryUnitAtEveryBlockPosition) {
    using T = typename TypeParam::Unit;
    for (const Encoding& encoding : kEncodings) {
        auto text = this->textOf(encoding, 3 * kBlockCharacters);
        for (unsigned int unit = 0; unit < 1u << 8 * sizeof(T); ++unit) {
            const bool isKnown = test::valueIn(encoding.characters, unit) != std::string_view::npos;
            const bool everywhere = unit < 0x100 || unit % 0x101 == 0;  // all other units at one position each
            for (std::size_t at = everywhere ? 0 : unit % 32; at < kBlockCharacters; at += everywhere ? 1 : 32) {
                SCOPED_TRACE(testing::Message() << unit << " at " << at);
                auto changed = text;
                changed[kBlockCharacters + at] = static_cast<T>(unit);
                const auto* const place = this->placedAtEnd(changed);
                ASSERT_NO_FATAL_FAILURE(
                    this->expectDecoded(place, 3, encoding, InvalidCharacters::Stop, isKnown ? 3 : 1));
                ASSERT_NO_FATAL_FAILURE(this->expectDecoded(place, 3, encoding, InvalidCharacters::AsZero, 3));
            }
        }
    }
}

TYPED_TEST(Sextets, Decode_AgreesWithTheReferenceOnRandomTexts) {
    using T = typename TypeParam::Unit;
    test::RandomText random(20261125);
    for (int round = 0; round < 2000; ++round) {
        const Encoding& encoding = kEncodings[random.below(2)];
        auto text = test::text<T>(random.from(encoding.characters, random.below(300)));
        const std::size_t blocks = text.size() / kBlockCharacters;
        for (std::size_t damage = random.below(3); damage != 0 && !text.empty(); --damage) {
            text[random.below(text.size())] = static_cast<T>(random.bits());
        }
        const auto invalid = std::find_if(text.begin(), text.end(), [&](T unit) {
            const auto value = static_cast<std::make_unsigned_t<T>>(unit);
            return test::valueIn(encoding.characters, value) == std::string_view::npos;
        });
        const std::size_t clean = static_cast<std::size_t>(invalid - text.begin()) / kBlockCharacters;
        const auto* const place = this->placedAtEnd(text);
        ASSERT_NO_FATAL_FAILURE(this->expectDecoded(place, blocks, encoding, InvalidCharacters::AsZero, blocks))
            << round;
        ASSERT_NO_FATAL_FAILURE(this->expectDecoded(place, blocks, encoding, InvalidCharacters::Stop, clean)) << round;
    }
}

TEST(SextetsTables, ContainTheAlphabets) {
    for (const Encoding& encoding : kEncodings) {
        EXPECT_EQ(encoding.alphabet, encoding.characters);
        for (unsigned int character = 0; character < 128; ++character) {
            const std::size_t value = test::valueIn(encoding.characters, character);
            EXPECT_EQ(encoding.values.values[character], value == std::string_view::npos ? 0xFFu : value) << character;
        }
    }
}

}  // namespace

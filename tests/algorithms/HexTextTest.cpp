#include "algorithms/HexText.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

#include "algorithms/ImplementationChoice.h"
#include "algorithms/Processor.h"
#include "support/BitTextReference.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"

namespace {

namespace algorithms = vorel::algorithms;
using algorithms::HexCase;
using test::Bytes;

constexpr std::size_t kMax = 4096;
constexpr std::string_view kDigits = "0123456789abcdefABCDEF";

bool isDigit(unsigned int unit) {
    return unit != 0 && unit < 128 && kDigits.find(static_cast<char>(unit)) != std::string_view::npos;
}

/// Decodes pairs of digits.
template <class T>
Bytes bytesOf(const std::basic_string<T>& digits) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        const std::string pair = {static_cast<char>(digits[at]), static_cast<char>(digits[at + 1])};
        bytes.push_back(static_cast<unsigned char>(std::stoul(pair, nullptr, 16)));
    }
    return bytes;
}

// ---- Encoding -------------------------------------------------------------------------------------------------------

template <class T>
struct Scalar {
    using Unit = T;
    static constexpr char kName[] = "scalar";
    static constexpr bool kNeedsAvx2 = false;
    static T* encode(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) {
        return algorithms::encodeHexScalar(bytes, count, letters, out);
    }
};

template <class T>
struct InBlocks {
    using Unit = T;
    static constexpr char kName[] = "blocks";
    static constexpr bool kNeedsAvx2 = false;
    static T* encode(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) {
        return algorithms::encodeHex(bytes, count, letters, out);
    }
};

template <class T>
struct InAvx2Blocks {
    using Unit = T;
    static constexpr char kName[] = "AVX2";
    static constexpr bool kNeedsAvx2 = true;
    static T* encode(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) {
        constexpr std::size_t kMin = 16;
        if (count < kMin) {
            return algorithms::encodeHexScalar(bytes, count, letters, out);
        }
        algorithms::encodeHexAvx2(bytes, count, letters, out);
        return out + 2 * count;
    }
};

/// `encodeHex` with AVX2 switched off: SSE2 blocks, or the scalar loop for fewer than eight bytes. With AVX2, it would
/// use SSE2 only for fewer than sixteen bytes.
template <class T>
struct InSse2Blocks {
    using Unit = T;
    static constexpr char kName[] = "SSE2";
    static constexpr bool kNeedsAvx2 = false;
    static T* encode(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) {
        const bool usesAvx2 = algorithms::Processor::usesAvx2();
        algorithms::Processor::setAvx2ForTests(false);
        T* const end = algorithms::encodeHex(bytes, count, letters, out);
        algorithms::Processor::setAvx2ForTests(usesAvx2);
        return end;
    }
};

template <class Implementation>
class HexEncoding : public test::ImplementationTest<Implementation> {
protected:
    /// Encodes bytes that end at an inaccessible page into a buffer of exactly the required size.
    void expectEncoded(const Bytes& bytes) {
        using T = typename Implementation::Unit;
        unsigned char* const from = m_bytes.lastElements(bytes.size());
        std::copy(bytes.begin(), bytes.end(), from);
        for (const HexCase letters : {HexCase::Upper, HexCase::Lower}) {
            T* const out = m_text.lastElements(2 * bytes.size());
            ASSERT_EQ(Implementation::encode(from, bytes.size(), letters, out), out + 2 * bytes.size());
            ASSERT_EQ(std::basic_string<T>(out, 2 * bytes.size()),
                      test::text<T>(test::hexOf(bytes, letters == HexCase::Upper)));
        }
    }

    test::PageEdge<unsigned char> m_bytes{kMax};
    test::PageEdge<typename Implementation::Unit> m_text{kMax};
};

using Encoders = ::testing::Types<Scalar<char>, Scalar<wchar_t>, InBlocks<char>, InBlocks<wchar_t>, InSse2Blocks<char>,
                                  InSse2Blocks<wchar_t>, InAvx2Blocks<char>, InAvx2Blocks<wchar_t>>;
TYPED_TEST_SUITE(HexEncoding, Encoders, test::ImplementationNames);

TYPED_TEST(HexEncoding, EncodesExactlyTheGivenBytesForEveryCount) {
    test::RandomText random(20261123);
    for (std::size_t count = 0; count <= 200; ++count) {
        ASSERT_NO_FATAL_FAILURE(this->expectEncoded(random.bytes(count))) << count;
    }
}

TYPED_TEST(HexEncoding, EncodesEveryByteAtEveryBlockPosition) {
    for (std::size_t shift = 0; shift < 64; ++shift) {
        Bytes bytes(256 + shift);
        std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
        std::rotate(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(shift), bytes.end());
        ASSERT_NO_FATAL_FAILURE(this->expectEncoded(bytes)) << shift;
    }
}

// ---- Decoding -------------------------------------------------------------------------------------------------------

/// The SSE2 blocks. If the processor has AVX2, the decoder uses them for short text, and for the blocks after the last
/// AVX2 block. Without AVX2, the decoder uses them for all blocks.
template <class T>
struct Sse2 {
    using Unit = T;
    static constexpr char kName[] = "SSE2";
    static constexpr bool kNeedsAvx2 = false;
    static constexpr std::size_t kBlock = 16;
    static std::size_t decode(const T* text, std::size_t blocks, unsigned char* out) {
        std::size_t done = 0;
        while (done < blocks && algorithms::decodeHexBlock(text + done * kBlock, out + done * kBlock / 2)) {
            ++done;
        }
        return done;
    }
};

template <class T>
struct Avx2 {
    using Unit = T;
    static constexpr char kName[] = "AVX2";
    static constexpr bool kNeedsAvx2 = true;
    static constexpr std::size_t kBlock = 32;
    static std::size_t decode(const T* text, std::size_t blocks, unsigned char* out) {
        return algorithms::decodeHexAvx2(text, blocks, out);
    }
};

/// Decodes long text in AVX2 blocks if the processor has AVX2, and decodes the remaining text in SSE2 blocks.
template <class T>
struct Together {
    using Unit = T;
    static constexpr char kName[] = "together";
    static constexpr bool kNeedsAvx2 = false;
    static constexpr std::size_t kBlock = 16;
    static std::size_t decode(const T* text, std::size_t blocks, unsigned char* out) {
        return algorithms::decodeHex(text, blocks, out);
    }
};

template <class Implementation>
class HexDecoding : public test::ImplementationTest<Implementation> {
protected:
    using Text = std::basic_string<typename Implementation::Unit>;

    /// Decodes text that ends at an inaccessible page into a buffer for exactly `blocks` blocks. Expects that decoding
    /// stops before the block with the first invalid character, and writes nothing after the decoded blocks.
    void expectDecoded(const Text& text, std::size_t blocks) {
        const auto invalid = std::find_if_not(text.begin(), text.end(), [](auto unit) {
            return isDigit(static_cast<std::make_unsigned_t<decltype(unit)>>(unit));
        });
        const auto digits = static_cast<std::size_t>(invalid - text.begin());
        const std::size_t done = std::min(blocks, digits / Implementation::kBlock);
        unsigned char* const out = m_bytes.lastElements(blocks * Implementation::kBlock / 2);
        std::fill_n(out, blocks * Implementation::kBlock / 2, static_cast<unsigned char>(0xEE));
        ASSERT_EQ(Implementation::decode(m_text.placeAtEnd(text), blocks, out), done);
        Bytes wanted = bytesOf(text.substr(0, done * Implementation::kBlock));
        wanted.resize(blocks * Implementation::kBlock / 2, 0xEE);
        ASSERT_EQ(Bytes(out, out + wanted.size()), wanted);
    }

    test::PageEdge<unsigned char> m_bytes{kMax};
    test::PageEdge<typename Implementation::Unit> m_text{kMax};
};

using Decoders =
    ::testing::Types<Sse2<char>, Sse2<wchar_t>, Avx2<char>, Avx2<wchar_t>, Together<char>, Together<wchar_t>>;
TYPED_TEST_SUITE(HexDecoding, Decoders, test::ImplementationNames);

TYPED_TEST(HexDecoding, DecodesOnlyTheGivenBlocks) {
    test::RandomText random(20261124);
    for (std::size_t blocks = 0; blocks <= 9; ++blocks) {
        for (std::size_t more = 0; more <= TypeParam::kBlock; ++more) {
            const std::string digits = random.from(kDigits, blocks * TypeParam::kBlock + more);
            ASSERT_NO_FATAL_FAILURE(this->expectDecoded(test::text<typename TypeParam::Unit>(digits), blocks))
                << blocks << " blocks and " << more << " characters";
        }
    }
}

TYPED_TEST(HexDecoding, DecodesEveryUnitAtEveryBlockPosition) {
    using T = typename TypeParam::Unit;
    constexpr std::size_t kBlock = TypeParam::kBlock;
    const auto text = test::text<T>("0123456789abcdefABCDEF9876543210").substr(0, kBlock);
    for (unsigned int unit = 0; unit < 1u << 8 * sizeof(T); ++unit) {
        const bool everywhere = unit < 0x100 || unit % 0x101 == 0;  // other units only at one position
        for (std::size_t at = everywhere ? 0 : unit % kBlock; at < kBlock; at += everywhere ? 1 : kBlock) {
            auto changed = text + text + text;
            changed[kBlock + at] = static_cast<T>(unit);
            ASSERT_NO_FATAL_FAILURE(this->expectDecoded(changed, 3)) << unit << " at " << at;
        }
    }
}

TYPED_TEST(HexDecoding, AgreesWithTheReferenceOnRandomTexts) {
    using T = typename TypeParam::Unit;
    test::RandomText random(20261125);
    for (int round = 0; round < 2000; ++round) {
        auto text = test::text<T>(random.from(kDigits, random.below(300)));
        for (std::size_t damage = random.below(3); damage != 0 && !text.empty(); --damage) {
            text[random.below(text.size())] = static_cast<T>(random.bits());
        }
        ASSERT_NO_FATAL_FAILURE(this->expectDecoded(text, text.size() / TypeParam::kBlock)) << round;
    }
}

TEST(HexDigitTable, ContainsExactlyTheValuesOfDigits) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const std::string digit(1, static_cast<char>(byte));
        EXPECT_EQ(algorithms::hexDigitOf(digit[0]), isDigit(byte) ? std::stoul(digit, nullptr, 16) : 0xFFu) << byte;
    }
}

}  // namespace

#include "algorithms/UrlText.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "algorithms/ImplementationChoice.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "support/UrlReference.h"

namespace {

namespace algorithms = vorel::algorithms;
using algorithms::UrlEscape;
using algorithms::UrlProgress;
using algorithms::UrlTable;
using algorithms::UrlUse;

constexpr std::size_t kBlock = 32;

/// A table of the library's encoder, and the same rule for the reference encoder.
struct Use {
    const UrlTable& table;
    test::UrlRule rule;
};

const std::vector<Use>& uses() {
    static const std::vector<Use> kUses = [] {
        const std::string reserved = std::string("~").append(test::kUrlReserved);
        return std::vector<Use>{
            {algorithms::urlTable(UrlUse::Plain), {"~", false}},
            {algorithms::urlTable(UrlUse::PlainWithPlus), {"~", true}},
            {algorithms::urlTable(UrlUse::Reserved), {reserved, false}},
            {algorithms::urlTable(UrlUse::ReservedWithPlus), {reserved, true}},
            {algorithms::urlTable(UrlUse::Path), {"?", false}},
            {algorithms::urlTable(UrlUse::PathSegment), {"/?", false}},
            {algorithms::urlTable(UrlUse::Query), {"+", true}},
            {algorithms::urlTable(UrlUse::QueryParameter), {"+&=", true}},
            {algorithms::urlTable(UrlUse::OtherComponent), {"", false}},
        };
    }();
    return kUses;
}

/// Encodes byte by byte, as the encoder does for bytes that are not in a block.
struct Scalar {
    using Unit = char;
    static constexpr char kName[] = "scalar";
    static constexpr bool kNeedsAvx2 = false;
    static constexpr std::size_t kOverhang = sizeof(UrlEscape);  // bytes that encode() may write after the result

    static std::size_t measurable(std::size_t count) { return count; }
    static std::size_t encodable(std::size_t count) { return count; }

    static UrlProgress measure(const char* text, std::size_t count, const UrlTable& table) {
        std::size_t length = 0;
        for (const char c : std::string_view(text, count)) {
            length += table.bytes[static_cast<unsigned char>(c)].length;
        }
        return {count, length};
    }
    static UrlProgress encode(const char* text, std::size_t count, const UrlTable& table, char* out) {
        const char* const start = out;
        for (const char c : std::string_view(text, count)) {
            const UrlEscape& escape = table.bytes[static_cast<unsigned char>(c)];
            std::memcpy(out, &escape, sizeof escape);
            out += escape.length;
        }
        return {count, static_cast<std::size_t>(out - start)};
    }
};

struct Avx2 {
    using Unit = char;
    static constexpr char kName[] = "AVX2";
    static constexpr bool kNeedsAvx2 = true;
    static constexpr std::size_t kOverhang = algorithms::kUrlOverhang;

    /// measure() reads all whole blocks; encode() reads a whole block only if another whole block follows.
    static std::size_t measurable(std::size_t count) { return count / kBlock * kBlock; }
    static std::size_t encodable(std::size_t count) { return count < 2 * kBlock ? 0 : (count / kBlock - 1) * kBlock; }

    static UrlProgress measure(const char* text, std::size_t count, const UrlTable& table) {
        return algorithms::measureUrlAvx2(text, count, table);
    }
    static UrlProgress encode(const char* text, std::size_t count, const UrlTable& table, char* out) {
        const std::size_t length = algorithms::urlLength({text, encodable(count)}, table);
        return algorithms::encodeUrlAvx2(text, count, table, out, length + kOverhang);
    }
};

template <class Implementation>
class UrlEscapes : public test::ImplementationTest<Implementation> {
protected:
    /// Measures and encodes a text without a terminator, which ends at an inaccessible page. The output buffer has
    /// space for exactly the result and `kOverhang` bytes.
    void expectEncoded(const std::string& text, const Use& use) {
        const char* const position = m_text.placeAtEnd(text);
        const std::string measured =
            test::urlEncoded(text.substr(0, Implementation::measurable(text.size())), use.rule);
        const UrlProgress length = Implementation::measure(position, text.size(), use.table);
        ASSERT_EQ(length.read, Implementation::measurable(text.size()));
        ASSERT_EQ(length.written, measured.size());

        const std::string wanted = test::urlEncoded(text.substr(0, Implementation::encodable(text.size())), use.rule);
        char* const out = m_out.lastElements(wanted.size() + Implementation::kOverhang);
        const UrlProgress done = Implementation::encode(position, text.size(), use.table, out);
        ASSERT_EQ(done.read, Implementation::encodable(text.size()));
        ASSERT_EQ(std::string(out, done.written), wanted);
    }

    test::PageEdge<char> m_text{4096};
    test::PageEdge<char> m_out{4096};
};

using Implementations = ::testing::Types<Scalar, Avx2>;
TYPED_TEST_SUITE(UrlEscapes, Implementations, test::ImplementationNames);

TYPED_TEST(UrlEscapes, EncodeTextsOfEveryLengthWithinTheCapacity) {
    test::RandomText random(20261123);
    for (const std::string_view alphabet : {"abcdefgh", "%", " ", "ab %/~\x80"}) {
        for (std::size_t length = 0; length <= 5 * kBlock + 1; ++length) {
            const Use& use = uses()[length % uses().size()];
            ASSERT_NO_FATAL_FAILURE(this->expectEncoded(random.from(alphabet, length), use)) << length;
        }
    }
}

TYPED_TEST(UrlEscapes, EncodeEveryByteAtEveryBlockPosition) {
    for (const Use& use : uses()) {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            for (std::size_t at = 0; at < kBlock; ++at) {
                std::string text(3 * kBlock, 'x');
                text[kBlock + at] = static_cast<char>(byte);
                ASSERT_NO_FATAL_FAILURE(this->expectEncoded(text, use)) << byte << " at " << at;
            }
        }
    }
}

TYPED_TEST(UrlEscapes, AgreeWithTheReferenceOnRandomTexts) {
    test::RandomText random(20261124);
    for (int round = 0; round < 3000; ++round) {
        std::string text = random.from("abcdefghijklmnopqrstuvwxyz", random.below(400));
        for (std::size_t changes = random.below(1 + text.size() / (1 + random.below(8))); changes != 0; --changes) {
            text[random.below(text.size())] = static_cast<char>(random.bits());
        }
        ASSERT_NO_FATAL_FAILURE(this->expectEncoded(text, uses()[random.below(uses().size())])) << "round " << round;
    }
}

TEST(UrlText, EncodesUpToTheCapacity) {
    test::RandomText random(20261125);
    test::PageEdge<char> edge(4096);
    for (const std::string_view alphabet : {"abcdefgh", "%", " ", "ab %/~\x80"}) {
        for (const Use& use : uses()) {
            const std::string text = random.from(alphabet, 5 * kBlock + 7);
            const std::size_t enough = test::urlEncoded(text, use.rule).size() + algorithms::kUrlOverhang;
            for (std::size_t capacity = 0; capacity <= enough; ++capacity) {
                char* const out = edge.lastElements(capacity);
                const UrlProgress done = algorithms::encodeUrl(text, use.table, out, capacity);
                ASSERT_EQ(std::string(out, done.written), test::urlEncoded(text.substr(0, done.read), use.rule));
                ASSERT_TRUE(capacity == 0 ? done.written == 0 : done.written < capacity)
                    << "space for a terminator must remain";
                ASSERT_TRUE(done.read == text.size() || capacity != enough)
                    << "the whole text must be encoded if the capacity is sufficient";
            }
        }
    }
}

TEST(UrlTables, AgreeWithTheReferenceForEveryByte) {
    for (const Use& use : uses()) {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            const std::string text(1, static_cast<char>(byte));
            const UrlEscape& escape = use.table.bytes[byte];
            EXPECT_EQ(std::string(escape.text, escape.length), test::urlEncoded(text, use.rule)) << byte;
            const bool stays = byte < 128 && (use.table.plainRowsOfColumn[byte % 16] >> byte / 16 & 1) != 0;
            EXPECT_EQ(stays, test::urlEncoded(text, use.rule) == text) << byte;
        }
    }
}

}  // namespace

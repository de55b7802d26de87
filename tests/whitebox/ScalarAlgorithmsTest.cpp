// Operations that have AVX2 algorithms must give the same results with the scalar algorithms. The inputs are random.
// Texts to decode are valid or damaged. The inputs of the UTF-8 conversions and of the Base64 decoder end at an
// inaccessible page or inside accessible memory.

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "algorithms/Processor.h"
#include "support/Arrays.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/text/Base64.h"
#include "vorel/text/Daylight.h"
#include "vorel/text/Hex.h"
#include "vorel/text/Unicode.h"
#include "vorel/text/Url.h"

namespace {

using test::RandomText;
using vorel::Array;
using vorel::BaseString;
using vorel::Exception;
namespace algorithms = vorel::algorithms;
namespace util = vorel::util;

constexpr std::uint64_t kSeed = 20261121;

class ScalarAlgorithms : public ::testing::Test {
protected:
    void SetUp() override {
        if (!m_hasAvx2) {
            GTEST_SKIP() << "this processor does not support AVX2";
        }
        Exception::SetMirrorErrorLog(false);
    }

    void TearDown() override {
        algorithms::Processor::setAvx2ForTests(m_hasAvx2);
        Exception::SetMirrorErrorLog(true);
    }

    /// Compares the results of `operation` with and without AVX2.
    template <class Operation>
    static void expectSame(const Operation& operation) {
        algorithms::Processor::setAvx2ForTests(true);
        const auto fast = operation();
        algorithms::Processor::setAvx2ForTests(false);
        const auto scalar = operation();
        ASSERT_EQ(fast, scalar);
    }

private:
    bool m_hasAvx2 = algorithms::Processor::usesAvx2();
};

/// The text that a conversion wrote, or the message of the exception that it threw.
template <class T, class Convert>
std::basic_string<T> resultOf(Convert&& convert) {
    BaseString<T> output;
    try {
        convert(output);
    } catch (const Exception& e) {
        const std::wstring_view message = e.what();
        return std::basic_string<T>(message.begin(), message.end());
    }
    return std::basic_string<T>(output.view());
}

/// The result as `resultOf` returns it, and the capacity of the output (0 after an exception). The capacity must not
/// depend on which algorithm counted the characters of the text.
template <class T, class Convert>
std::pair<std::basic_string<T>, unsigned int> resultAndCapacityOf(Convert&& convert) {
    unsigned int capacity = 0;
    const auto text = resultOf<T>([&](BaseString<T>& output) {
        convert(output);
        capacity = output.capacity();
    });
    return {text, capacity};
}

/// A random number of characters: usually fewer than 200, sometimes enough for several blocks of the conversion.
std::size_t lengthOf(RandomText& random) {
    return random.below(random.oneIn(20) ? 3000 : 200);
}

template <class T>
const T* placed(test::PageEdge<T>& edge, const std::basic_string<T>& text, RandomText& random) {
    const std::basic_string_view<T> withTerminator(text.c_str(), text.size() + 1);
    if (random.oneIn(3)) {
        return edge.placeAtEnd(withTerminator);
    }
    T* const start = edge.firstElement() + random.below(500);
    withTerminator.copy(start, withTerminator.size());
    return start;
}

/// Random UTF-8 with characters of one to four bytes, sometimes damaged. Most characters have the same length.
std::string utf8Text(RandomText& random) {
    std::string text;
    const std::size_t usualKind = random.below(6);
    for (std::size_t count = lengthOf(random); count != 0; --count) {
        const std::size_t kind = random.oneIn(4) ? random.below(4) : usualKind;
        const auto trailing = [&] { return static_cast<char>(0x80 + random.below(0x40)); };
        if (kind == 1) {
            text += {static_cast<char>(0xC0 + random.below(0x20)), trailing()};
        } else if (kind == 2) {
            text += {static_cast<char>(0xE0 + random.below(0x10)), trailing(), trailing()};
        } else if (kind == 3) {
            text += {static_cast<char>(random.oneIn(6) ? 0xF4 : 0xF0), trailing(), trailing(), trailing()};
        } else {
            text += static_cast<char>(1 + random.below(0x7F));
        }
        if (random.oneIn(150)) {
            text += static_cast<char>(1 + random.below(0xFF));
        }
    }
    return text;
}

TEST_F(ScalarAlgorithms, Utf8ToWide) {
    RandomText random(kSeed);
    test::PageEdge<char> edge(std::size_t{4} * 4096);
    for (int count = 0; count < 20000; ++count) {
        const std::string text = utf8Text(random);
        // The codec reads all bytes that a lead byte requires, even if some of them are after the terminator.
        const char* const start = placed(edge, text + std::string(5, '\0'), random);
        const int length = random.oneIn(2) ? -1 : static_cast<int>(random.below(text.size() + 1));
        const auto capacity = static_cast<unsigned int>(random.below(600));
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            return resultAndCapacityOf<wchar_t>([&](BaseString<wchar_t>& output) {
                output.reserve(capacity, true);
                output.clear();
                util::ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(start), length, false);
            });
        })) << "text "
            << count;
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            std::vector<wchar_t> buffer(capacity + 1);
            const bool done = util::ConvertUTF8toString(buffer.data(), capacity,
                                                        reinterpret_cast<const unsigned char*>(start), length, false);
            return done && capacity != 0 ? std::wstring(buffer.data()) : std::wstring(L"failed");
        })) << "text "
            << count;
    }
}

TEST_F(ScalarAlgorithms, WideToUtf8) {
    RandomText random(kSeed);
    test::PageEdge<wchar_t> edge(std::size_t{2} * 4096);
    for (int count = 0; count < 20000; ++count) {
        std::wstring text;
        const std::size_t usualKind = random.below(5);
        for (std::size_t units = lengthOf(random); units != 0; --units) {
            const std::size_t kind = random.oneIn(4) ? random.below(5) : usualKind;
            const std::size_t limits[] = {0x7F, 0x7FF, 0xD7FF, 0xFFFF, 0xFFFF};
            if (kind == 4) {
                text += {static_cast<wchar_t>(0xD800 + random.below(0x400)),
                         static_cast<wchar_t>(0xDC00 + random.below(0x400))};
            } else {
                text += static_cast<wchar_t>(1 + random.below(limits[kind]));
            }
        }
        const wchar_t* const start = placed(edge, text, random);
        const int length = random.oneIn(2) ? -1 : static_cast<int>(random.below(text.size() + 1));
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            return resultAndCapacityOf<char>(
                [&](BaseString<char>& output) { util::ConvertStringtoUTF8(start, output, length); });
        })) << "text "
            << count;
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            Array<unsigned char> output;
            util::EncodeAndAppendToBuffer(start, output);
            return test::valuesOf(output);
        })) << "text "
            << count;
    }
}

TEST_F(ScalarAlgorithms, BinaryToText) {
    RandomText random(kSeed);
    for (int count = 0; count < 10000; ++count) {
        const Array<unsigned char> bytes = test::arrayOf(random.bytes(random.below(300)));
        ASSERT_NO_FATAL_FAILURE(expectSame(
            [&] { return resultOf<char>([&](BaseString<char>& text) { util::Base64::Encode(bytes, text); }); }));
        ASSERT_NO_FATAL_FAILURE(expectSame(
            [&] { return resultOf<wchar_t>([&](BaseString<wchar_t>& text) { util::Base64::Encode(bytes, text); }); }));
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            return resultOf<wchar_t>([&](BaseString<wchar_t>& text) { util::Daylight::Encode(bytes, text); });
        }));
        const bool upperCase = random.oneIn(2);
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            return resultOf<char>([&](BaseString<char>& text) { util::byteArrayToHexString(bytes, text, upperCase); });
        }));
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            return resultOf<wchar_t>(
                [&](BaseString<wchar_t>& text) { util::byteArrayToHexString(bytes, text, upperCase); });
        }));
    }
}

/// Random text from an alphabet. Up to two characters are replaced by random characters.
template <class T>
std::basic_string<T> damagedText(RandomText& random, std::string_view alphabet, std::size_t length) {
    std::basic_string<T> text;
    for (const char c : random.from(alphabet, length)) {
        text += static_cast<T>(c);
    }
    for (std::size_t damage = random.below(3); damage != 0 && !text.empty(); --damage) {
        const auto unit = static_cast<T>(random.oneIn(2) ? random.below(0x80) + 1 : random.bits());
        text[random.below(text.size())] = unit != 0 ? unit : T{'='};
    }
    return text;
}

constexpr std::string_view kBase64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

template <class T>
void decodeBase64BothWays(void (*expect)(const std::function<std::pair<std::vector<unsigned char>, int>()>&)) {
    RandomText random(kSeed);
    test::PageEdge<T> edge(4096);
    for (int count = 0; count < 2000; ++count) {
        const T* const start = placed(edge, damagedText<T>(random, kBase64Alphabet, random.below(400)), random);
        expect([start] {
            Array<unsigned char> bytes;
            int result = 2;
            try {
                result = util::Base64::Decode(start, bytes);
            } catch (const Exception&) {
                // Thrown for a unit above 255. `bytes` contains the bytes of the groups before this unit.
            }
            return std::pair(test::valuesOf(bytes), result);
        });
    }
}

TEST_F(ScalarAlgorithms, Base64ToBinary) {
    const auto expect = [](const std::function<std::pair<std::vector<unsigned char>, int>()>& operation) {
        expectSame(operation);
    };
    decodeBase64BothWays<char>(expect);
    decodeBase64BothWays<wchar_t>(expect);
}

TEST_F(ScalarAlgorithms, DaylightToBinary) {
    RandomText random(kSeed);
    for (int count = 0; count < 10000; ++count) {
        const std::wstring text = damagedText<wchar_t>(random, ".,+0123456789ABCxyz", 4 * random.below(100)) + L"3";
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            Array<unsigned char> bytes;
            if (text.size() > 1) {
                util::Daylight::Decode(text.c_str(), bytes);
            }
            return test::valuesOf(bytes);
        })) << "text "
            << count;
    }
}

TEST_F(ScalarAlgorithms, HexToBinary) {
    RandomText random(kSeed);
    for (int count = 0; count < 10000; ++count) {
        const std::wstring text = damagedText<wchar_t>(random, "0123456789abcdefABCDEF", 2 * random.below(100));
        const std::string narrow = damagedText<char>(random, "0123456789abcdefABCDEF", 2 * random.below(100));
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            Array<unsigned char> bytes;
            const int result = util::Hex::Decode(text.c_str(), bytes);
            return std::pair(test::valuesOf(bytes), result);
        })) << "text "
            << count;
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            Array<unsigned char> bytes;
            util::hexStringToByteArray(narrow.c_str(), bytes);
            return test::valuesOf(bytes);
        })) << "text "
            << count;
    }
}

TEST_F(ScalarAlgorithms, UrlEncoding) {
    RandomText random(kSeed);
    for (int count = 0; count < 10000; ++count) {
        const std::string text = damagedText<char>(random, "abcdefghij/?&=+%~ \"<>", random.below(300));
        const bool reserved = random.oneIn(2);
        const bool plus = random.oneIn(2);
        ASSERT_NO_FATAL_FAILURE(expectSame([&] {
            return resultOf<char>(
                [&](BaseString<char>& output) { util::urlEncode(text.c_str(), output, reserved, plus); });
        })) << "text "
            << count;
        for (int component = 0; component < 5; ++component) {
            ASSERT_NO_FATAL_FAILURE(expectSame([&] {
                return resultOf<char>([&](BaseString<char>& output) {
                    util::urlEncodeComponent(text.c_str(), output, static_cast<util::UrlComponent>(component));
                });
            })) << "text "
                << count;
        }
    }
}

}  // namespace

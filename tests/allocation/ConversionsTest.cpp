// Conversions (also by the locale), locks and debug targets with a failing heap.

#include <typeinfo>

#include "allocation/Walker.h"
#include "exceptions/DebugTargets.h"
#include "exceptions/LocaleText.h"
#include "support/Utf8Reference.h"
#include "support/WideText.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/sync/AutoMutex.h"
#include "vorel/sync/Condition.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::util::ConvertStringtoUTF16;
using vorel::util::ConvertStringtoUTF8;
using vorel::util::ConvertUTF16toString;
using vorel::util::ConvertUTF8toString;
using vorel::util::EncodeAndAppendToBuffer;

using Requests = std::vector<Attempt::Request>;

std::string bytesOf(const Array<unsigned char>& array) {
    return {reinterpret_cast<const char*>(array.data()), array.size()};
}

/// The requests of a string or an array that doubles its capacity from `first` to `last` elements of `unit` bytes.
Requests doubling(unsigned int first, unsigned int last, unsigned int unit) {
    Requests requests;
    for (unsigned int count = first; count <= last; count *= 2) {
        requests.push_back({count, unit});
    }
    return requests;
}

/// A text of 1,800 characters, which have one to three bytes each in UTF-8. The decoder and the encoder convert it in
/// several blocks.
const std::string& longUtf8() {
    static const std::string kText = [] {
        std::string text;
        for (int count = 0; count < 600; ++count) {
            text += "a\xC3\xA9\xE2\x82\xAC";
        }
        return text;
    }();
    return kText;
}
const std::wstring& longWide() {
    static const std::wstring kText = test::decodeUtf8(longUtf8() + '\0', -1).units;
    return kText;
}

void utf8ToString(Attempt& attempt) {
    const auto* const text = reinterpret_cast<const unsigned char*>(longUtf8().c_str());
    BaseString<wchar_t> output(L"before");
    attempt.perform([&] { ConvertUTF8toString(output, text, -1, true); });
    attempt.expectMemoryException({{2048, 2}}, {L"vorel::util::ConvertUTF8toString: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_EQ(attempt.requests(), 1u) << "the output must grow once";
        EXPECT_EQ(output.view(), longWide());
    } else {
        EXPECT_TRUE(longWide().starts_with(output.view())) << "the output must be the beginning of the text";
    }
}

/// The overloads for narrow text add a last record, which quotes the text. If the memory stays exhausted, the quoted
/// text cannot be converted to wide text, so only the records before the last record are complete.
void expectMemoryExceptionWithInput(Attempt& attempt, const Requests& requests, const std::string& record,
                                    const std::string& quoted) {
    const std::wstring wideRecord = test::widened(record);
    if (!attempt.memoryStaysExhausted()) {
        attempt.expectMemoryException(requests, {wideRecord, test::widened(quoted)});
        return;
    }
    EXPECT_EQ(attempt.thrown(), typeid(vorel::MemoryException).name());
    ASSERT_GE(attempt.logged().size(), 2u);
    EXPECT_TRUE(attempt.logged()[0].starts_with("Vorel Error: No more memory is available: "));
    EXPECT_EQ(attempt.logged()[1], "Vorel Error: " + record);
}

void utf8OfCharsToString(Attempt& attempt) {
    const std::string text(600, 'x');
    BaseString<wchar_t> output;
    attempt.perform([&] { ConvertUTF8toString(output, text.c_str(), -1, true); });
    expectMemoryExceptionWithInput(attempt, doubling(512, 1024, 2),
                                   "vorel::util::ConvertUTF8toString: Vorel exception rethrown",
                                   "Failed to convert utf8 text to String: " + text);
    if (attempt.completed()) {
        EXPECT_EQ(output.view(), std::wstring(600, L'x'));
    }
}

void invalidUtf8ToString(Attempt& attempt) {
    BaseString<wchar_t> output;
    const std::string bytes = "ab\xFF" + std::string(20, '\x41');
    std::wstring dump = L"Hex string: 41";
    for (int count = 1; count < 20; ++count) {
        dump += L"-41";
    }
    attempt.perform(
        [&] { ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(bytes.c_str()), -1, true); });
    const std::vector<std::wstring> records = {L"vorel::util::ConvertUTF8toString: Vorel exception rethrown"};
    if (attempt.thrown() == typeid(vorel::MemoryException).name()) {
        // Either the hex dump or the text before the error could not be stored.
        Requests requests = doubling(16, 128, 2);
        attempt.expectMemoryException(requests, records);
    } else {
        attempt.expectThrown(typeid(vorel::Exception).name(),
                             {L"Error converting UTF-8 character (" + dump + L")", records[0]});
    }
    EXPECT_TRUE(output.empty());
}

/// The units before the error are not a whole block, so nothing is appended.
void invalidUtf8WithoutBlocks(Attempt& attempt) {
    BaseString<wchar_t> output;
    bool result = true;
    attempt.perform([&] { result = ConvertUTF8toString(output, "abc\xFFz", -1, false); });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
    EXPECT_FALSE(result);
    EXPECT_EQ(output.c_str(), nullptr);
}

/// Two blocks of 450 units are appended, one after the other. The 130 units after them are not a whole block, so they
/// are dropped.
void invalidUtf8WithBlocks(Attempt& attempt) {
    BaseString<wchar_t> output;
    const std::string text = std::string(1030, 'x') + "\xFF";
    attempt.perform([&] { ConvertUTF8toString(output, text.c_str(), -1, false); });
    const bool failed = attempt.allocationFailed();
    EXPECT_EQ(attempt.thrown(), failed ? typeid(vorel::MemoryException).name() : "");
    EXPECT_EQ(output.view(), std::wstring(failed ? output.capacity() == 0 ? 0 : 450 : 900, L'x'));
    EXPECT_EQ(output.capacity(), failed ? output.empty() ? 0u : 512u : 1024u);
}

/// If the text does not fit into the string and the string cannot grow, the string keeps the blocks that fit.
template <unsigned int Reserved, unsigned int Units, unsigned int Kept, unsigned int Needed>
void utf8ToReservedString(Attempt& attempt) {
    BaseString<wchar_t> output;
    output.reserve(Reserved, true);
    output.clear();
    const std::string text(Units, 'x');
    attempt.perform(
        [&] { ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(text.c_str()), -1, true); });
    attempt.expectMemoryException({{Needed, 2}}, {L"vorel::util::ConvertUTF8toString: Vorel exception rethrown"});
    EXPECT_EQ(output.view(), std::wstring(attempt.completed() ? Units : Kept, L'x'));
}

void utf8ToBuffer(Attempt& attempt) {
    wchar_t buffer[4] = {};
    attempt.perform(
        [&] { ConvertUTF8toString(buffer, 4, reinterpret_cast<const unsigned char*>("abcdef"), -1, true); });
    attempt.expectCompleted();
    EXPECT_FALSE(attempt.allocationFailed()) << "the conversion must allocate nothing";
    EXPECT_STREQ(buffer, L"abc");
}

void stringToUtf8Array(Attempt& attempt) {
    const wchar_t* const text = longWide().c_str();
    Array<unsigned char> output;
    attempt.perform([&] { ConvertStringtoUTF8(text, output, true, -1); });
    attempt.expectMemoryException({{5120, 1}}, {L"vorel::util::ConvertStringtoUTF8: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_EQ(attempt.requests(), 1u) << "the output must grow once";
        EXPECT_EQ(bytesOf(output), longUtf8() + '\0');
    } else {
        EXPECT_TRUE(longUtf8().starts_with(bytesOf(output)));
    }
}

void stringToUtf8String(Attempt& attempt) {
    const wchar_t* const text = longWide().c_str();
    BaseString<char> output("before");
    attempt.perform([&] { ConvertStringtoUTF8(text, output, -1); });
    attempt.expectMemoryException({{4096, 1}}, {L"vorel::util::ConvertStringtoUTF8: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_EQ(attempt.requests(), 1u) << "the output must grow once";
    }
    EXPECT_EQ(output.view(), attempt.completed() ? longUtf8() : "");
}

void encodeAndAppend(Attempt& attempt) {
    const wchar_t* const text = longWide().c_str();
    Array<unsigned char> output;
    output.append('>');
    attempt.perform([&] { EncodeAndAppendToBuffer(text, output); });
    attempt.expectMemoryException({{5120, 1}}, {L"vorel::util::EncodeAndAppendToBuffer: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_EQ(attempt.requests(), 1u) << "the output must grow once";
        EXPECT_EQ(bytesOf(output), ">" + longUtf8());
    } else {
        EXPECT_TRUE((">" + longUtf8()).starts_with(bytesOf(output)));
        EXPECT_GE(output.size(), 1u) << "the existing contents must remain";
    }
}

void stringToUtf16(Attempt& attempt) {
    Array<unsigned char> output;
    const std::wstring text(100, L'x');
    attempt.perform([&] { ConvertStringtoUTF16(text.c_str(), output, false, true, -1); });
    attempt.expectMemoryException(doubling(160, 320, 1),
                                  {L"vorel::util::ConvertStringtoUTF16: Vorel exception rethrown"});
    EXPECT_EQ(output.size(), attempt.completed() ? 202u : 0u);
}

void utf16ToString(Attempt& attempt) {
    BaseString<wchar_t> output(L"before");
    const std::string bytes(200, 'x');
    attempt.perform([&] { ConvertUTF16toString(output, bytes.data(), 200); });
    expectMemoryExceptionWithInput(attempt, {{128, 2}}, "vorel::util::ConvertUTF16toString: Vorel exception rethrown",
                                   "Failed to convert UTF-16 text to String: " + bytes);
    EXPECT_EQ(output.view(), attempt.completed() ? std::wstring(100, L'\x7878') : L"");
}

void utf16WithoutLength(Attempt& attempt) {
    BaseString<wchar_t> output;
    attempt.perform([&] { ConvertUTF16toString(output, reinterpret_cast<const unsigned char*>("A"), -1); });
    attempt.expectThrown(typeid(vorel::Exception).name(),
                         {L"A string length needs to be specified for UTF-16 to UCS conversion",
                          L"vorel::util::ConvertUTF16toString: Vorel exception rethrown"});
}

/// Checks a conversion by the locale. The result is the converted text. If memory for the converted text cannot be
/// allocated, the result is the error text `noMemory`. If this text cannot be stored either, the result is empty.
template <class From, class To>
void byLocale(Attempt& attempt, void (*convert)(const From*, BaseString<To>&), const char* noMemory,
              const wchar_t* context) {
    const auto source = longText<From>(100);
    BaseString<To> target(textOf<To>("before").c_str());
    attempt.perform([&] { convert(source.c_str(), target); });
    attempt.expectCompleted();
    const bool isConverted = target.view() == longText<To>(100);
    const bool isFailure = target.view() == textOf<To>(noMemory);
    if (!attempt.allocationFailed()) {
        EXPECT_TRUE(isConverted);
    } else if (isFailure) {
        EXPECT_EQ(attempt.logged().size(), 0u);
    } else {
        EXPECT_TRUE(target.empty());
        const std::wstring wideContext = context;
        ASSERT_EQ(attempt.logged().size(), 2u);
        EXPECT_TRUE(attempt.logged()[0].starts_with("Vorel Error: No more memory is available: "));
        EXPECT_EQ(attempt.logged()[1], "Vorel Error: " + test::narrowed(wideContext) + ": Vorel exception caught");
    }
    // If only the first request fails, the result is the error text. The second request is for that text.
    EXPECT_EQ(isFailure, attempt.allocationFailed() && !attempt.memoryStaysExhausted() && attempt.requests() == 2);
}

void narrowToWide(Attempt& attempt) {
    byLocale<char, wchar_t>(attempt, vorel::detail::mbs2wcs, "Out of memory for text conversion",
                            L"vorel::Exception - mbs2wcs");
}

void wideToNarrow(Attempt& attempt) {
    byLocale<wchar_t, char>(attempt, vorel::detail::wcs2mbs, "Out of memory in text conversion",
                            L"vorel::Exception - wcs2mbs");
}

/// The conversion fails. The error text needs a larger buffer than the converted text, so the output may have to grow
/// again.
void unconvertibleToNarrow(Attempt& attempt) {
    BaseString<char> target;
    attempt.perform([&] { vorel::detail::wcs2mbs(L"ab\x4E00", target); });
    attempt.expectCompleted();
    if (!attempt.allocationFailed()) {
        EXPECT_TRUE(target.view() == "Error in text conversion");
    } else if (attempt.logged().empty()) {
        EXPECT_TRUE(target.view() == "Out of memory in text conversion");
    } else {
        EXPECT_TRUE(target.empty()) << target.view();
    }
}

template <class Section>
void constructSection(Attempt& attempt) {
    attempt.perform([] { const Section section; });
    attempt.expectException(typeid(vorel::Exception).name(), {L"malloc failed"});
}

void constructMutex(Attempt& attempt) {
    attempt.perform([] { const vorel::AutoMutex mutex(nullptr, false, false); });
    attempt.expectException(typeid(vorel::Exception).name(),
                            {L"malloc failed", L"AutoMutex::AutoMutex(): Vorel exception rethrown"});
}

void constructCondition(Attempt& attempt) {
    vorel::ForcedCriticalSection lock;
    attempt.perform([&] { const vorel::Condition condition(lock); });
    attempt.expectException(typeid(vorel::Exception).name(),
                            {L"malloc failed", L"Condition::Condition(): Vorel exception rethrown"});
}

void addDebugTarget(Attempt& attempt) {
    vorel::DebugTargets<wchar_t, vorel::NoLock> targets;
    attempt.perform([&] { targets.set(L"a target with a name of some length", true); });
    attempt.expectMemoryException({{36, 2}});
    EXPECT_EQ(targets.isActive(L"a target with a name of some length"), attempt.completed());
}

const std::vector<Operation>& conversionOperations() {
    static const std::vector<Operation> kOperations = {
        {"Utf8ToString", utf8ToString},
        {"Utf8ToString_OfChars", utf8OfCharsToString},
        {"Utf8ToString_OfInvalidText", invalidUtf8ToString},
        {"Utf8ToString_OfInvalidTextWithoutBlocks", invalidUtf8WithoutBlocks},
        {"Utf8ToString_OfInvalidTextWithBlocks", invalidUtf8WithBlocks},
        {"Utf8ToString_WithoutABlockThatFits", utf8ToReservedString<100, 130, 0, 256>},
        {"Utf8ToString_WithTwoBlocksThatFit", utf8ToReservedString<1000, 2000, 900, 2048>},
        {"Utf8ToBuffer", utf8ToBuffer},
        {"StringToUtf8_Array", stringToUtf8Array},
        {"StringToUtf8_String", stringToUtf8String},
        {"EncodeAndAppend", encodeAndAppend},
        {"StringToUtf16", stringToUtf16},
        {"Utf16ToString", utf16ToString},
        {"Utf16ToString_WithoutLength", utf16WithoutLength},
        {"ByLocale_NarrowToWide", narrowToWide},
        {"ByLocale_WideToNarrow", wideToNarrow},
        {"ByLocale_UnconvertibleToNarrow", unconvertibleToNarrow},
    };
    return kOperations;
}

const std::vector<Operation>& otherOperations() {
    static const std::vector<Operation> kOperations = {
        {"AutoCriticalSection", constructSection<vorel::AutoCriticalSection>},
        {"ForcedCriticalSection", constructSection<vorel::ForcedCriticalSection>},
        {"AutoMutex", constructMutex},
        {"Condition", constructCondition},
        {"DebugTarget", addDebugTarget},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Conversions, FailingHeap, underBothFailures(conversionOperations()), failingHeapName);
INSTANTIATE_TEST_SUITE_P(Objects, FailingHeap, underBothFailures(otherOperations()), failingHeapName);

}  // namespace

// Conversions, locks and texts by the locale under a failing heap.

#include <typeinfo>

#include "allocation/Walker.h"
#include "exceptions/DebugTargets.h"
#include "exceptions/LocaleText.h"
#include "support/Utf8Reference.h"
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

using Requests = std::vector<Trial::Request>;

std::string bytesOf(const Array<unsigned char>& array) {
    return {reinterpret_cast<const char*>(array.data()), array.size()};
}

/// Growth of a string or an array by `unit`, by doubling from `first` to `last`.
Requests doubling(unsigned int first, unsigned int last, unsigned int unit) {
    Requests requests;
    for (unsigned int count = first; count <= last; count *= 2) {
        requests.push_back({count, unit});
    }
    return requests;
}

/// 1,800 characters in UTF-8, of one to three bytes: several blocks in each direction.
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

void utf8ToString(Trial& trial) {
    BaseString<wchar_t> output(L"before");
    trial.perform(
        [&] { ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(longUtf8().c_str()), -1, true); });
    trial.expectMemoryException(doubling(512, 4096, 2),
                                {L"vorel::util::ConvertUTF8toString: Vorel exception rethrown"});
    if (trial.completed()) {
        EXPECT_EQ(output.view(), longWide());
    } else {
        EXPECT_TRUE(longWide().starts_with(output.view())) << "whole blocks at most";
    }
}

/// The forms for narrow text add a record that quotes it. Without any memory the quoted text cannot be made wide: the
/// records before it are all there is.
void expectMemoryExceptionWithInput(Trial& trial, const Requests& requests, const std::string& record,
                                    const std::string& quoted) {
    const std::wstring wideRecord(record.begin(), record.end());
    if (!trial.staysWithoutMemory()) {
        trial.expectMemoryException(requests, {wideRecord, std::wstring(quoted.begin(), quoted.end())});
        return;
    }
    EXPECT_EQ(trial.thrown(), typeid(vorel::MemoryException).name());
    ASSERT_GE(trial.logged().size(), 2u);
    EXPECT_TRUE(trial.logged()[0].starts_with("Vorel Error: No more memory is available: "));
    EXPECT_EQ(trial.logged()[1], "Vorel Error: " + record);
}

void utf8OfCharsToString(Trial& trial) {
    const std::string text(600, 'x');
    BaseString<wchar_t> output;
    trial.perform([&] { ConvertUTF8toString(output, text.c_str(), -1, true); });
    expectMemoryExceptionWithInput(trial, doubling(512, 1024, 2),
                                   "vorel::util::ConvertUTF8toString: Vorel exception rethrown",
                                   "Failed to convert utf8 text to String: " + text);
    if (trial.completed()) {
        EXPECT_EQ(output.view(), std::wstring(600, L'x'));
    }
}

void badUtf8ToString(Trial& trial) {
    BaseString<wchar_t> output;
    const std::string bytes = "ab\xFF" + std::string(20, '\x41');
    std::wstring dump = L"Hex string: 41";
    for (int count = 1; count < 20; ++count) {
        dump += L"-41";
    }
    trial.perform(
        [&] { ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(bytes.c_str()), -1, true); });
    const std::vector<std::wstring> records = {L"vorel::util::ConvertUTF8toString: Vorel exception rethrown"};
    if (trial.thrown() == typeid(vorel::MemoryException).name()) {
        // The dump, or the text before the error, found no room.
        Requests requests = doubling(16, 128, 2);
        trial.expectMemoryException(requests, records);
    } else {
        trial.expectThrown(typeid(vorel::Exception).name(),
                           {L"Error converting UTF-8 character (" + dump + L")", records[0]});
    }
    EXPECT_TRUE(output.empty());
}

void utf8ToBuffer(Trial& trial) {
    wchar_t buffer[4] = {};
    trial.perform([&] { ConvertUTF8toString(buffer, 4, reinterpret_cast<const unsigned char*>("abcdef"), -1, true); });
    trial.expectCompleted();
    EXPECT_FALSE(trial.refused()) << "nothing is allocated";
    EXPECT_STREQ(buffer, L"abc");
}

void stringToUtf8Array(Trial& trial) {
    Array<unsigned char> output;
    trial.perform([&] { ConvertStringtoUTF8(longWide().c_str(), output, true, -1); });
    trial.expectMemoryException(doubling(320, 5120, 1),
                                {L"vorel::util::ConvertStringtoUTF8: Vorel exception rethrown"});
    if (trial.completed()) {
        EXPECT_EQ(bytesOf(output), longUtf8() + '\0');
    } else {
        EXPECT_TRUE(longUtf8().starts_with(bytesOf(output)));
    }
}

void stringToUtf8String(Trial& trial) {
    BaseString<char> output("before");
    trial.perform([&] { ConvertStringtoUTF8(longWide().c_str(), output, -1); });
    trial.expectMemoryException(doubling(256, 8192, 1),
                                {L"vorel::util::ConvertStringtoUTF8: Vorel exception rethrown"});
    EXPECT_EQ(output.view(), trial.completed() ? longUtf8() : "");
}

void encodeAndAppend(Trial& trial) {
    Array<unsigned char> output;
    output.append('>');
    trial.perform([&] { EncodeAndAppendToBuffer(longWide().c_str(), output); });
    trial.expectMemoryException(doubling(320, 5120, 1),
                                {L"vorel::util::EncodeAndAppendToBuffer: Vorel exception rethrown"});
    if (trial.completed()) {
        EXPECT_EQ(bytesOf(output), ">" + longUtf8());
    } else {
        EXPECT_TRUE((">" + longUtf8()).starts_with(bytesOf(output)));
        EXPECT_GE(output.size(), 1u) << "what was there stays";
    }
}

void stringToUtf16(Trial& trial) {
    Array<unsigned char> output;
    const std::wstring text(100, L'x');
    trial.perform([&] { ConvertStringtoUTF16(text.c_str(), output, false, true, -1); });
    trial.expectMemoryException(doubling(160, 320, 1),
                                {L"vorel::util::ConvertStringtoUTF16: Vorel exception rethrown"});
    EXPECT_EQ(output.size(), trial.completed() ? 202u : 0u);
}

void utf16ToString(Trial& trial) {
    BaseString<wchar_t> output(L"before");
    const std::string bytes(200, 'x');
    trial.perform([&] { ConvertUTF16toString(output, bytes.data(), 200); });
    expectMemoryExceptionWithInput(trial, {{128, 2}}, "vorel::util::ConvertUTF16toString: Vorel exception rethrown",
                                   "Failed to convert UTF-16 text to String: " + bytes);
    EXPECT_EQ(output.view(), trial.completed() ? std::wstring(100, L'\x7878') : L"");
}

void utf16WithoutALength(Trial& trial) {
    BaseString<wchar_t> output;
    trial.perform([&] { ConvertUTF16toString(output, reinterpret_cast<const unsigned char*>("A"), -1); });
    trial.expectThrown(typeid(vorel::Exception).name(),
                       {L"A string length needs to be specified for UTF-16 to UCS conversion",
                        L"vorel::util::ConvertUTF16toString: Vorel exception rethrown"});
}

/// A text by the locale: the converted one, the text of the failure when its buffer was refused, or nothing when that
/// text had no room either. `unit` and `capacity` belong to the text that is written last.
template <class From, class To>
void byLocale(Trial& trial, void (*convert)(const From*, BaseString<To>&), const char* noMemory,
              const wchar_t* context) {
    const auto source = longText<From>(100);
    BaseString<To> target(textOf<To>("before").c_str());
    trial.perform([&] { convert(source.c_str(), target); });
    trial.expectCompleted();
    const bool isWhole = target.view() == longText<To>(100);
    const bool isFailure = target.view() == textOf<To>(noMemory);
    if (!trial.refused()) {
        EXPECT_TRUE(isWhole);
    } else if (isFailure) {
        EXPECT_EQ(trial.logged().size(), 0u);
    } else {
        EXPECT_TRUE(target.empty());
        const std::wstring wideContext = context;
        ASSERT_EQ(trial.logged().size(), 2u);
        EXPECT_TRUE(trial.logged()[0].starts_with("Vorel Error: No more memory is available: "));
        EXPECT_EQ(trial.logged()[1],
                  "Vorel Error: " + std::string(wideContext.begin(), wideContext.end()) + ": Vorel exception caught");
    }
    // Only the first request can be answered by a text: the second one is for the text itself.
    EXPECT_EQ(isFailure, trial.refused() && !trial.staysWithoutMemory() && trial.requests() == 2);
}

void narrowToWide(Trial& trial) {
    byLocale<char, wchar_t>(trial, vorel::detail::mbs2wcs, "Out of memory for text conversion",
                            L"vorel::Exception - mbs2wcs");
}

void wideToNarrow(Trial& trial) {
    byLocale<wchar_t, char>(trial, vorel::detail::wcs2mbs, "Out of memory in text conversion",
                            L"vorel::Exception - wcs2mbs");
}

template <class Section>
void constructSection(Trial& trial) {
    trial.perform([] { const Section section; });
    trial.expectException(typeid(vorel::Exception).name(), {L"malloc failed"});
}

void constructMutex(Trial& trial) {
    trial.perform([] { const vorel::AutoMutex mutex(nullptr, false, false); });
    trial.expectException(typeid(vorel::Exception).name(),
                          {L"malloc failed", L"AutoMutex::AutoMutex(): Vorel exception rethrown"});
}

void constructCondition(Trial& trial) {
    vorel::ForcedCriticalSection lock;
    trial.perform([&] { const vorel::Condition condition(lock); });
    trial.expectException(typeid(vorel::Exception).name(),
                          {L"malloc failed", L"Condition::Condition(): Vorel exception rethrown"});
}

void addDebugTarget(Trial& trial) {
    vorel::DebugTargets<wchar_t, vorel::NoLock> targets;
    trial.perform([&] { targets.set(L"a target with a name of some length", true); });
    trial.expectMemoryException({{36, 2}});
    EXPECT_EQ(targets.isActive(L"a target with a name of some length"), trial.completed());
}

const std::vector<Operation>& conversionOperations() {
    static const std::vector<Operation> kOperations = {
        {"Utf8ToString", utf8ToString},
        {"Utf8ToString_OfChars", utf8OfCharsToString},
        {"Utf8ToString_OfABadText", badUtf8ToString},
        {"Utf8ToBuffer", utf8ToBuffer},
        {"StringToUtf8_Array", stringToUtf8Array},
        {"StringToUtf8_String", stringToUtf8String},
        {"EncodeAndAppend", encodeAndAppend},
        {"StringToUtf16", stringToUtf16},
        {"Utf16ToString", utf16ToString},
        {"Utf16ToString_WithoutALength", utf16WithoutALength},
        {"ByLocale_NarrowToWide", narrowToWide},
        {"ByLocale_WideToNarrow", wideToNarrow},
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

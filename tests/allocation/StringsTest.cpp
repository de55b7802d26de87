// Strings with a failing heap: a failed operation leaves the string and its buffer unchanged. Only a failed `format`
// clears the string, unless the format or an argument points into the string's buffer.

#include <cstring>
#include <optional>
#include <typeinfo>

#include "allocation/Walker.h"
#include "support/WideText.h"
#include "vorel/core/BaseString.h"

namespace {

using vorel::BaseString;

template <class T>
constexpr unsigned int kUnit = sizeof(T);

/// The state of a string that a failure must not change.
template <class T>
struct Before {
    explicit Before(BaseString<T>& string)
        : data(string.data()), capacity(string.capacity()), length(string.length()), text(string.view()) {}

    void expectUnchanged(BaseString<T>& string) const {
        EXPECT_EQ(string.data(), data);
        EXPECT_EQ(string.capacity(), capacity);
        EXPECT_EQ(string.length(), length);
        EXPECT_EQ(string.view(), text);
    }

    T* data;
    unsigned int capacity;
    unsigned int length;
    std::basic_string<T> text;
};

/// Performs `step` on a string that contains "0123456789" in a buffer of 16 units, and expects `after` as the result.
/// If a request failed, expects an unchanged string and an exception for `wanted` units.
template <class T, class Step>
void change(Attempt& attempt, unsigned int wanted, const std::basic_string<T>& after, Step&& step) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const Before<T> before(string);
    attempt.perform([&] { step(string); });
    attempt.expectMemoryException({{wanted, kUnit<T>}});
    if (attempt.completed()) {
        EXPECT_EQ(string.view(), after);
    } else {
        before.expectUnchanged(string);
    }
}

/// Constructs a string, and expects `text` as the result.
template <class T, class Make>
void make(Attempt& attempt, unsigned int wanted, const std::basic_string<T>& text, Make&& make) {
    std::optional<BaseString<T>> string;
    attempt.perform([&] { make(string); });
    attempt.expectMemoryException({{wanted, kUnit<T>}});
    ASSERT_EQ(string.has_value(), attempt.completed());
    if (string) {
        EXPECT_EQ(string->view(), text);
    }
}

template <class T>
void fromText(Attempt& attempt) {
    const auto text = longText<T>(40);
    make<T>(attempt, 64, text, [&](auto& string) { string.emplace(text.c_str()); });
}

template <class T>
void fromCountedText(Attempt& attempt) {
    const auto text = longText<T>(5);
    make<T>(attempt, 16, text, [&](auto& string) { string.emplace(text.c_str(), 5); });
}

template <class T>
void copied(Attempt& attempt) {
    const auto text = longText<T>(300);
    const BaseString<T> original(text.c_str());
    make<T>(attempt, 512, text, [&](auto& string) { string.emplace(original); });
}

template <class T>
void assignText(Attempt& attempt) {
    const auto text = longText<T>(100);
    change<T>(attempt, 128, text, [&](auto& string) { string = text.c_str(); });
}

template <class T>
void assignString(Attempt& attempt) {
    const auto text = longText<T>(100);
    const BaseString<T> other(text.c_str());
    change<T>(attempt, 128, text, [&](auto& string) { string = other; });
}

template <class T>
void appendText(Attempt& attempt) {
    change<T>(attempt, 32, textOf<T>("0123456789abcdefg"),
              [](auto& string) { string += textOf<T>("abcdefg").c_str(); });
}

template <class T>
void appendCounted(Attempt& attempt) {
    const auto text = textOf<T>("abcdefgh");
    change<T>(attempt, 32, textOf<T>("0123456789abcdef"), [&](auto& string) { string.append(text.c_str(), 6); });
}

template <class T>
void appendPartOfItself(Attempt& attempt) {
    change<T>(attempt, 32, textOf<T>("012345678923456789"), [](auto& string) { string.append(string.c_str() + 2); });
}

template <class T>
void appendItself(Attempt& attempt) {
    change<T>(attempt, 32, textOf<T>("01234567890123456789"), [](auto& string) { string += string; });
}

template <class T>
void appendUnit(Attempt& attempt) {
    BaseString<T> string(longText<T>(15).c_str());
    const Before<T> before(string);
    attempt.perform([&] { string += static_cast<T>('!'); });
    attempt.expectMemoryException({{32, kUnit<T>}});
    if (attempt.completed()) {
        EXPECT_EQ(string.view(), longText<T>(15) + static_cast<T>('!'));
    } else {
        before.expectUnchanged(string);
    }
}

template <class T>
void reserveKeeping(Attempt& attempt) {
    change<T>(attempt, 128, textOf<T>("0123456789"), [](auto& string) { string.reserve(100, false); });
}

template <class T>
void reserveDiscarding(Attempt& attempt) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const Before<T> before(string);
    attempt.perform([&] { string.reserve(100, true); });
    attempt.expectMemoryException({{128, kUnit<T>}});
    if (attempt.completed()) {
        EXPECT_EQ(string.capacity(), 128u);
    } else {
        before.expectUnchanged(string);
    }
}

/// Formats into `string`, and expects `text` as the result. After a failure the string must be empty.
template <class T, class... Arguments>
void formatInto(Attempt& attempt, BaseString<T>& string, unsigned int wanted, const std::basic_string<T>& text,
                const char* fmt, Arguments... arguments) {
    const auto format = textOf<T>(fmt);
    attempt.perform([&] { string.format(format.c_str(), arguments...); });
    attempt.expectMemoryException({{wanted, kUnit<T>}});
    EXPECT_EQ(string.view(), attempt.completed() ? text : std::basic_string<T>());
}

template <class T>
void formatIntoEmptyString(Attempt& attempt) {
    BaseString<T> string;
    const auto text = longText<T>(50);
    formatInto(attempt, string, 64, text + textOf<T>("-42"), "%s-%d", text.c_str(), 42);
}

template <class T>
void formatGrows(Attempt& attempt) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const auto text = longText<T>(200);
    formatInto(attempt, string, 256, text, "%s", text.c_str());
}

template <class T>
void formatFillsTheBuffer(Attempt& attempt) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const auto text = longText<T>(16);
    formatInto(attempt, string, 32, text, "%s", text.c_str());
}

template <class T>
void formatOfItself(Attempt& attempt) {
    const auto text = longText<T>(30);
    BaseString<T> string(text.c_str());
    const Before<T> before(string);
    const auto format = textOf<T>("%s|%s");
    attempt.perform([&] { string.format(format.c_str(), string.c_str(), string.c_str() + 28); });
    attempt.expectMemoryException({{64, kUnit<T>}});
    if (attempt.completed()) {
        EXPECT_EQ(string.view(), text + textOf<T>("|") + text.substr(28));
    } else {
        before.expectUnchanged(string);
    }
}

void formatOfUnconvertibleUnit(Attempt& attempt) {
    BaseString<char> string("0123456789");
    // The "C" locale of the runtime cannot convert this unit to a byte.
    attempt.perform([&] { string.format("%ls", L"\x20AC"); });
    const std::string reason = std::strerror(EILSEQ);
    attempt.expectThrown(typeid(vorel::Exception).name(), {L"Unable to format: %ls (" + test::widened(reason) + L")"});
    EXPECT_TRUE(string.empty());
}

/// The operations. All except the first exist for both character types.
std::vector<Operation> operations() {
    std::vector<Operation> all = {{"Format_OfUnconvertibleUnit", formatOfUnconvertibleUnit}};
    const auto add = [&all](const std::string& name, void (*narrow)(Attempt&), void (*wide)(Attempt&)) {
        all.push_back({name + "_Narrow", narrow});
        all.push_back({name + "_Wide", wide});
    };
    add("Construct_FromText", fromText<char>, fromText<wchar_t>);
    add("Construct_FromCountedText", fromCountedText<char>, fromCountedText<wchar_t>);
    add("Construct_Copy", copied<char>, copied<wchar_t>);
    add("Assign_Text", assignText<char>, assignText<wchar_t>);
    add("Assign_String", assignString<char>, assignString<wchar_t>);
    add("Append_Text", appendText<char>, appendText<wchar_t>);
    add("Append_CountedText", appendCounted<char>, appendCounted<wchar_t>);
    add("Append_PartOfItself", appendPartOfItself<char>, appendPartOfItself<wchar_t>);
    add("Append_Itself", appendItself<char>, appendItself<wchar_t>);
    add("Append_Unit", appendUnit<char>, appendUnit<wchar_t>);
    add("Reserve_KeepingTheText", reserveKeeping<char>, reserveKeeping<wchar_t>);
    add("Reserve_DiscardingTheText", reserveDiscarding<char>, reserveDiscarding<wchar_t>);
    add("Format_IntoEmptyString", formatIntoEmptyString<char>, formatIntoEmptyString<wchar_t>);
    add("Format_Grows", formatGrows<char>, formatGrows<wchar_t>);
    add("Format_LeavesNoSpaceForTheTerminator", formatFillsTheBuffer<char>, formatFillsTheBuffer<wchar_t>);
    add("Format_OfItself", formatOfItself<char>, formatOfItself<wchar_t>);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Strings, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace

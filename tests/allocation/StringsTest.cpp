// Strings under a failing heap: the string is as it was, and its buffer the same.

#include <cstring>
#include <optional>
#include <typeinfo>

#include "allocation/Walker.h"
#include "vorel/core/BaseString.h"

namespace {

using vorel::BaseString;

template <class T>
constexpr unsigned int kUnit = sizeof(T);

/// What of a string has to be the same after a failure.
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

/// Performs `step` on a string that holds "0123456789" in a buffer of 16 units, and expects `after` in it, or the
/// string as it was together with the exception for `wanted` units.
template <class T, class Step>
void change(Trial& trial, unsigned int wanted, const std::basic_string<T>& after, Step&& step) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const Before<T> before(string);
    trial.perform([&] { step(string); });
    trial.expectMemoryException({{wanted, kUnit<T>}});
    if (trial.completed()) {
        EXPECT_EQ(string.view(), after);
    } else {
        before.expectUnchanged(string);
    }
}

/// Makes a string, and expects `text` in it.
template <class T, class Make>
void make(Trial& trial, unsigned int wanted, const std::basic_string<T>& text, Make&& make) {
    std::optional<BaseString<T>> string;
    trial.perform([&] { make(string); });
    trial.expectMemoryException({{wanted, kUnit<T>}});
    ASSERT_EQ(string.has_value(), trial.completed());
    if (string) {
        EXPECT_EQ(string->view(), text);
    }
}

template <class T>
void fromText(Trial& trial) {
    const auto text = longText<T>(40);
    make<T>(trial, 64, text, [&](auto& string) { string.emplace(text.c_str()); });
}

template <class T>
void fromCountedText(Trial& trial) {
    const auto text = longText<T>(5);
    make<T>(trial, 16, text, [&](auto& string) { string.emplace(text.c_str(), 5); });
}

template <class T>
void copied(Trial& trial) {
    const auto text = longText<T>(300);
    const BaseString<T> original(text.c_str());
    make<T>(trial, 512, text, [&](auto& string) { string.emplace(original); });
}

template <class T>
void assignText(Trial& trial) {
    const auto text = longText<T>(100);
    change<T>(trial, 128, text, [&](auto& string) { string = text.c_str(); });
}

template <class T>
void assignString(Trial& trial) {
    const auto text = longText<T>(100);
    const BaseString<T> other(text.c_str());
    change<T>(trial, 128, text, [&](auto& string) { string = other; });
}

template <class T>
void appendText(Trial& trial) {
    change<T>(trial, 32, textOf<T>("0123456789abcdefg"), [](auto& string) { string += textOf<T>("abcdefg").c_str(); });
}

template <class T>
void appendCounted(Trial& trial) {
    const auto text = textOf<T>("abcdefgh");
    change<T>(trial, 32, textOf<T>("0123456789abcdef"), [&](auto& string) { string.append(text.c_str(), 6); });
}

template <class T>
void appendPartOfItself(Trial& trial) {
    change<T>(trial, 32, textOf<T>("012345678923456789"), [](auto& string) { string.append(string.c_str() + 2); });
}

template <class T>
void appendItself(Trial& trial) {
    change<T>(trial, 32, textOf<T>("01234567890123456789"), [](auto& string) { string += string; });
}

template <class T>
void appendUnit(Trial& trial) {
    BaseString<T> string(longText<T>(15).c_str());
    const Before<T> before(string);
    trial.perform([&] { string += static_cast<T>('!'); });
    trial.expectMemoryException({{32, kUnit<T>}});
    if (trial.completed()) {
        EXPECT_EQ(string.view(), longText<T>(15) + static_cast<T>('!'));
    } else {
        before.expectUnchanged(string);
    }
}

template <class T>
void reserveKeeping(Trial& trial) {
    change<T>(trial, 128, textOf<T>("0123456789"), [](auto& string) { string.reserve(100, false); });
}

template <class T>
void reserveDiscarding(Trial& trial) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const Before<T> before(string);
    trial.perform([&] { string.reserve(100, true); });
    trial.expectMemoryException({{128, kUnit<T>}});
    if (trial.completed()) {
        EXPECT_EQ(string.capacity(), 128u);
    } else {
        before.expectUnchanged(string);
    }
}

/// Formats into `string`, and expects `text`; after a failure the string is empty.
template <class T, class... Arguments>
void formatInto(Trial& trial, BaseString<T>& string, unsigned int wanted, const std::basic_string<T>& text,
                const char* fmt, Arguments... arguments) {
    const auto format = textOf<T>(fmt);
    trial.perform([&] { string.format(format.c_str(), arguments...); });
    trial.expectMemoryException({{wanted, kUnit<T>}});
    EXPECT_EQ(string.view(), trial.completed() ? text : std::basic_string<T>());
}

template <class T>
void formatIntoNothing(Trial& trial) {
    BaseString<T> string;
    const auto text = longText<T>(50);
    formatInto(trial, string, 64, text + textOf<T>("-42"), "%s-%d", text.c_str(), 42);
}

template <class T>
void formatGrows(Trial& trial) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const auto text = longText<T>(200);
    formatInto(trial, string, 256, text, "%s", text.c_str());
}

template <class T>
void formatFillsTheBuffer(Trial& trial) {
    BaseString<T> string(textOf<T>("0123456789").c_str());
    const auto text = longText<T>(16);
    formatInto(trial, string, 32, text, "%s", text.c_str());
}

template <class T>
void formatOfItself(Trial& trial) {
    const auto text = longText<T>(30);
    BaseString<T> string(text.c_str());
    const Before<T> before(string);
    const auto format = textOf<T>("%s|%s");
    trial.perform([&] { string.format(format.c_str(), string.c_str(), string.c_str() + 28); });
    trial.expectMemoryException({{64, kUnit<T>}});
    if (trial.completed()) {
        EXPECT_EQ(string.view(), text + textOf<T>("|") + text.substr(28));
    } else {
        before.expectUnchanged(string);
    }
}

void formatThatCannotBeRendered(Trial& trial) {
    BaseString<char> string("0123456789");
    // A unit that the runtime's plain locale cannot write as a byte.
    trial.perform([&] { string.format("%ls", L"\x20AC"); });
    const std::string reason = std::strerror(EILSEQ);
    trial.expectThrown(typeid(vorel::Exception).name(),
                       {L"Unable to format: %ls (" + std::wstring(reason.begin(), reason.end()) + L")"});
    EXPECT_TRUE(string.empty());
}

/// Each operation for both character types.
std::vector<Operation> operations() {
    std::vector<Operation> all = {{"Format_ThatCannotBeRendered", formatThatCannotBeRendered}};
    const auto add = [&all](const std::string& name, void (*narrow)(Trial&), void (*wide)(Trial&)) {
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
    add("Reserve_Keeping", reserveKeeping<char>, reserveKeeping<wchar_t>);
    add("Reserve_Discarding", reserveDiscarding<char>, reserveDiscarding<wchar_t>);
    add("Format_IntoNothing", formatIntoNothing<char>, formatIntoNothing<wchar_t>);
    add("Format_Grows", formatGrows<char>, formatGrows<wchar_t>);
    add("Format_FillsTheBuffer", formatFillsTheBuffer<char>, formatFillsTheBuffer<wchar_t>);
    add("Format_OfItself", formatOfItself<char>, formatOfItself<wchar_t>);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Strings, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace

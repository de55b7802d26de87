#include "vorellog/MessageForm.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/RandomText.h"

namespace {

std::string formOf(std::string_view message) {
    std::string form = "before ";
    vorellog::appendForm(form, message);
    EXPECT_TRUE(form.starts_with("before "));
    return form.substr(7);
}

TEST(MessageFormTest, VariablePartsAreReplaced) {
    struct Case {
        const char* message;
        const char* form;
        const char* why;
    };
    const Case cases[] = {
        {"", "", "empty message"},
        {"no number", "no number", "plain text"},
        {"Operation 7 of 12 overran", "Operation # of # overran", "numbers"},
        {"7", "#", "only a number"},
        {"took -7 ms, +8 ms", "took # ms, # ms", "signs"},
        {"a-7", "a-#", "a hyphen in a word is not a sign"},
        {"took 7ms", "took #ms", "unit without a space"},
        {"3.14 1,000,000 1.2.3", "# # #", "fraction, thousands, version"},
        {"at 10.0.3.7:443.", "at #:#.", "address and port; the last period ends the sentence"},
        {"at 12:30:05", "at #:#:#", "time"},
        {"user u42", "user u#", "digits at the end of a word"},
        {"ConvertUTF8toString: failed", "ConvertUTF8toString: failed",
         "one run of digits between letters is part of a name"},
        {"id k3j9x", "id k#j#x", "several runs of digits in a word"},
        {"id 4d3e, a7c9, DEADBEEF1", "id #, #, #", "hexadecimal words with a digit"},
        {"id a7c", "id a7c", "too short for a hexadecimal id"},
        {"took 1.25e10 s", "took #e# s", "the exponent after a fraction is a separate word"},
        {"1.2345abc6", "##", "a hexadecimal word directly after a number"},
        {"8,1234f5", "#f#", "a word directly after a number"},
        {R"(1.2345abc6\d e)", "<path> e", "a path that begins with a number and a hexadecimal word"},
        {"feed beef", "feed beef", "words of hexadecimal letters"},
        {"error 0x80070005, 0X1", "error #, #", "hexadecimal numbers with a 0x prefix"},
        {"id {3f2504e0-4f89-11d3-9a0c-0305e82cabcd}", "id {#}", "GUID"},
        {"id deadbeef-1f89-aaaa-bbbb-cccccccccccc", "id #", "GUID whose first group has no digit"},
        {"id deadbeef-aaaa-aaaa-bbbb-cccccccccc0c.", "id #.", "GUID with one digit"},
        {"id 5 deadbeef-aaaa-aaaa-b7bb-cccccccccccc", "id # #", "number and GUID"},
        {"id deadbeef-1f89-aaaa-bbbb-ccccccccccc", "id deadbeef-#-aaaa-bbbb-ccccccccccc",
         "GUID without its last character"},
        {"id 3f2504e0-4f89-11d3-9a0c-0305e82cabcdabc1 not found", "id ## not found", "a word directly after a GUID"},
        {"3f2504e0-4f89-11d3-9a0c-0305e82cabcdef2504e0-4f89-11d3-9a0c-0305e82cabcd", "##", "two GUIDs"},
        {R"(File "a 7.txt" not found)", R"(File "..." not found)", "quoted text"},
        {R"("a" and "b")", R"("..." and "...")", "two quoted texts"},
        {R"(open "a b"\x now)", R"(open "..."<path> now)", "a path begins after a quoted text"},
        {"x='a b'/c", "x='...'<path>", "an absolute path begins after a quoted text"},
        {R"(C:\a"b"\c)", R"(<path>"..."<path>)", "a quoted text between two paths"},
        {"a \" b 7", "a \" b #", "a quote that is not closed"},
        {"can't open 'x y'", "can't open '...'", "apostrophes and single quotes"},
        {"the 'don't' case", "the '...' case", "an apostrophe in a word does not close a quoted text"},
        {"open C:\\Data\\7.txt: denied", "open <path>: denied", "path on a drive"},
        {"open C:/Data/7.txt.", "open <path>.", "path on a drive, with slashes"},
        {R"(open \\server\share\a)", "open <path>", "network path"},
        {"dir7\\a, rest", "<path>, rest", "relative path that contains a digit"},
        {"(C:\\a)=C:\\b", "(<path>)=<path>", "a closing bracket ends a path, and a path may follow an equals sign"},
        {"get https://host/a?b=7 now", "get <path> now", "URL"},
        {"get /orders/7 now", "get <path> now", "absolute path with slashes"},
        {"and/or 7/8", "and/or #/#", "a slash within a word"},
        {"a \\ b / c", "a \\ b / c", "a single backslash and a single slash"},
        {"ends in \\", "ends in \\", "a backslash at the end"},
        {"caf\xC3\xA9 7", "caf\xC3\xA9 #", "non-ASCII characters"},
        {"a 7\nb 8", "a #\nb #", "several lines"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(formOf(c.message), c.form) << c.why;
    }
}

TEST(MessageFormTest, LongMessagesAreShortened) {
    const std::string exact(vorellog::kMaxFormInput, 'x');
    EXPECT_EQ(formOf(exact), exact);
    EXPECT_EQ(formOf(exact + 'x'), exact + "...");
    // A character that the limit would split is omitted.
    EXPECT_EQ(formOf(exact.substr(2) + "\xE2\x82\xAC"), exact.substr(2) + "...");
    EXPECT_EQ(formOf(exact.substr(1) + "\xE2\x82\xAC"), exact.substr(1) + "...");
    EXPECT_EQ(formOf(std::string(vorellog::kMaxFormInput + 9, '\x80')).substr(0, 3), "\x80\x80\x80");
}

std::string randomMessage(test::RandomText& random) {
    constexpr std::string_view kPieces[] = {
        "3f2504e0-4f89-11d3-9a0c-0305e82cabcd", "deadbeef-aaaa-aaaa-bbbb-cccccccccc2c", "0x", "C:", "://", "\xC3\xA9"};
    constexpr std::string_view kAlphabets[] = {"123456789", "0123456789", "abcdef", "gxzE",    ".,",
                                               "-+:",       "\"'",        "\\/",    " =?!()\n"};
    std::string message;
    for (std::size_t count = random.below(12); count != 0; --count) {
        if (random.oneIn(8)) {
            message += kPieces[random.below(std::size(kPieces))];
        } else {
            message += random.from(kAlphabets[random.below(std::size(kAlphabets))], 1 + random.below(5));
        }
    }
    return message;
}

std::string withEqualDigits(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '1' && c <= '9'; }, '7');
    return text;
}

TEST(MessageFormTest, FormsOfRandomMessages) {
    constexpr std::uint64_t kSeed = 20261116;
    constexpr int kMessages = 100000;
    const std::string before = "before ";
    test::RandomText random(kSeed);
    for (int count = 0; count != kMessages; ++count) {
        const std::string message = randomMessage(random);
        std::string form;
        std::string appended = before;
        ASSERT_NO_THROW(vorellog::appendForm(form, message)) << message;
        ASSERT_NO_THROW(vorellog::appendForm(appended, message)) << message;
        ASSERT_EQ(appended, before + form) << message;
        ASSERT_EQ(form.find('\0'), std::string::npos) << message;
        // The values of the digits do not matter, except that "0x" begins a hexadecimal number.
        ASSERT_EQ(formOf(withEqualDigits(message)), withEqualDigits(form)) << message;
    }
}

}  // namespace

// The diagnostic channels with a failing heap. Each call of an active channel logs at least one line. The last line is
// complete, or truncated and marked. If a conversion failed, the line has a text about this failure, or no text, in
// place of the converted text.

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "allocation/Walker.h"
#include "vorel/exceptions/Exception.h"

namespace {

using vorel::Exception;

constexpr std::size_t kLong = 10000;
constexpr std::size_t kTruncatedLength = 7999;  // in units; the internal buffer also has space for a terminator

const std::string kNarrow = longText<char>(kLong);
const std::wstring kWide = longText<wchar_t>(kLong);

/// The expected line of a channel.
struct Line {
    std::string prefix;      // without the colon
    std::string decoration;  // text before the message
    /// Whether the message, the target or the prefix is converted between narrow and wide text, which can fail.
    bool hasConversion;
};

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string complete;
    for (const std::string_view part : parts) {
        complete += part;
    }
    return complete;
}

/// The lines that are allowed if an allocation failed.
std::vector<std::string> linesUnderFailure(const Line& line) {
    static const std::string kNoMemory = "Out of memory for text conversion";
    static const std::string kNoMemoryForPrefix = "Out of memory in text conversion";
    std::vector<std::string> decorations = {line.decoration};
    std::vector<std::string> messages = {kNarrow};
    std::vector<std::string> prefixes = {line.prefix};
    if (line.hasConversion) {
        decorations.insert(decorations.end(), {kNoMemory + ": ", ": "});
        messages.insert(messages.end(), {kNoMemory, ""});
        prefixes.insert(prefixes.end(), {kNoMemoryForPrefix, ""});
    }
    std::vector<std::string> lines;
    for (const std::string& prefix : prefixes) {
        for (const std::string& decoration : decorations) {
            for (const std::string& message : messages) {
                const std::string complete = joined({decoration, message});
                lines.push_back(joined({prefix, ": ", complete}));
                // Either the message or its decorated form was truncated.
                const std::string truncated = joined({decoration, message.substr(0, kTruncatedLength)});
                for (const std::string& text : {truncated, complete.substr(0, kTruncatedLength)}) {
                    lines.push_back(joined({prefix, " Truncated: ", text}));
                }
            }
        }
    }
    return lines;
}

template <class Call>
void expectLine(Attempt& attempt, const Line& line, Call&& call) {
    attempt.perform(call);
    attempt.expectCompleted();
    const heap::Unwatched unwatched;
    ASSERT_FALSE(attempt.logged().empty());
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(attempt.logged(), std::vector<std::string>{line.prefix + ": " + line.decoration + kNarrow});
        return;
    }
    const std::vector<std::string> lines = linesUnderFailure(line);
    EXPECT_TRUE(std::find(lines.begin(), lines.end(), attempt.logged().back()) != lines.end())
        << attempt.logged().back().substr(0, 100) << "…, " << attempt.logged().back().size() << " bytes";
}

/// Activates a debug target while the object exists.
template <class T>
class ActiveTarget {
public:
    explicit ActiveTarget(const T* name) : m_name(name) { Exception::setDebugTarget(name, true); }
    ~ActiveTarget() { Exception::setDebugTarget(m_name, false); }

    ActiveTarget(const ActiveTarget&) = delete;
    ActiveTarget& operator=(const ActiveTarget&) = delete;

private:
    const T* m_name;
};

void warnNarrow(Attempt& attempt) {
    expectLine(attempt, {"WARN", "", true}, [] { Exception::warn("%s", kNarrow.c_str()); });
}

void warnWide(Attempt& attempt) {
    expectLine(attempt, {"WARN", "", false}, [] { Exception::warn(L"%ls", kWide.c_str()); });
}

void swigwarnNarrow(Attempt& attempt) {
    expectLine(attempt, {"WARN", "", true}, [] { Exception::swigwarn("%s", kNarrow.c_str()); });
}

void swigwarnWide(Attempt& attempt) {
    expectLine(attempt, {"WARN", "", false}, [] { Exception::swigwarn(L"%ls", kWide.c_str()); });
}

void warnOfClass(Attempt& attempt) {
    expectLine(attempt, {"WARN", "Parser::run: ", false},
               [] { Exception::warnClass(L"Parser", L"run", L"%ls", kWide.c_str()); });
}

void debugNarrow(Attempt& attempt) {
    const ActiveTarget target("Parser");
    expectLine(attempt, {"DEBUG", "Parser: ", true}, [] { Exception::debug("Parser", "%s", kNarrow.c_str()); });
}

void debugWide(Attempt& attempt) {
    const ActiveTarget target(L"Parser");
    expectLine(attempt, {"DEBUG", "Parser: ", false}, [] { Exception::debug(L"Parser", L"%ls", kWide.c_str()); });
}

template <class T>
void vDebug(const T* target, const T* format, ...) {
    va_list args;
    va_start(args, format);
    Exception::vDebug(target, format, args);
    va_end(args);
}

void vDebugNarrow(Attempt& attempt) {
    const ActiveTarget target("Parser");
    expectLine(attempt, {"DEBUG", "Parser: ", true}, [] { vDebug("Parser", "%s", kNarrow.c_str()); });
}

void vDebugWide(Attempt& attempt) {
    const ActiveTarget target(L"Parser");
    expectLine(attempt, {"DEBUG", "Parser: ", false}, [] { vDebug(L"Parser", L"%ls", kWide.c_str()); });
}

void debugOfClass(Attempt& attempt) {
    const ActiveTarget target(L"Parser");
    attempt.perform([] { Exception::debugClass(L"C", L"m", L"Parser", L"%ls", kWide.c_str()); });
    attempt.expectCompleted();
    const heap::Unwatched unwatched;
    ASSERT_EQ(attempt.logged().size(), 1u);
    const std::string complete = "C::m: Parser: " + kNarrow;
    const std::string& line = attempt.logged().front();
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(line, "DEBUG: " + complete);
        return;
    }
    const bool marked = line.starts_with("DEBUG Truncated: ");
    const std::string text = line.substr(marked ? 17 : 7);
    EXPECT_TRUE(complete.starts_with(text) && text.size() >= kTruncatedLength) << text.size();
    EXPECT_TRUE(marked || text == complete)
        << "a line that is not marked must be complete, because the log itself never truncates a line";
}

void logNarrow(Attempt& attempt) {
    expectLine(attempt, {"Import", "", true}, [] { Exception::log(nullptr, -1, "Import", "%s", kNarrow.c_str()); });
}

void logWide(Attempt& attempt) {
    expectLine(attempt, {"Import", "", true}, [] { Exception::log(nullptr, -1, L"Import", L"%ls", kWide.c_str()); });
}

void logOfClass(Attempt& attempt) {
    expectLine(attempt, {"Import", "Parser::run: ", true},
               [] { Exception::logClass(nullptr, -1, L"Import", L"Parser", L"run", L"%ls", kWide.c_str()); });
}

/// Calls without effect, and calls for inactive targets, do not allocate memory.
void silentOperations(Attempt& attempt) {
    const ActiveTarget target("Parser");
    attempt.perform([] {
        Exception::trace("%s", kNarrow.c_str());
        Exception::trace(L"%ls", kWide.c_str());
        Exception::traceClass(L"Parser", L"run", L"%ls", kWide.c_str());
        Exception::traceCallStack(stderr);
        Exception::debug("inactive target", "%s", kNarrow.c_str());
        Exception::debugClass(L"Parser", L"run", L"inactive target", L"%ls", kWide.c_str());
    });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
    EXPECT_EQ(attempt.logged().size(), 0u);
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"Warn_Narrow", warnNarrow},     {"Warn_Wide", warnWide},
        {"WarnClass", warnOfClass},      {"Debug_Narrow", debugNarrow},
        {"Debug_Wide", debugWide},       {"DebugClass", debugOfClass},
        {"Log_Narrow", logNarrow},       {"Log_Wide", logWide},
        {"LogClass", logOfClass},        {"SwigWarn_Narrow", swigwarnNarrow},
        {"SwigWarn_Wide", swigwarnWide}, {"VDebug_Narrow", vDebugNarrow},
        {"VDebug_Wide", vDebugWide},     {"CallsThatLogNothing", silentOperations},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Channels, FailingHeap, underBothFailures(operations()), failingHeapName);

struct TruncatedLine {
    const char* name;
    void (*call)();
    std::string text;
};

/// A message that does not fit into the internal buffer is rendered into a heap block, which is the first allocation of
/// every channel. If only this allocation fails, the message is truncated, and the line is marked "Truncated".
TEST(ChannelText, IsTruncatedAndMarkedWhenOnlyItsBlockCannotBeAllocated) {
    const ActiveTarget narrowTarget("T");
    const ActiveTarget wideTarget(L"T");
    const std::string truncated = kNarrow.substr(0, kTruncatedLength);
    const TruncatedLine lines[] = {
        {"warn, narrow", [] { Exception::warn("%s", kNarrow.c_str()); }, "WARN Truncated: " + truncated},
        {"warn, wide", [] { Exception::warn(L"%ls", kWide.c_str()); }, "WARN Truncated: " + truncated},
        {"swigwarn, wide", [] { Exception::swigwarn(L"%ls", kWide.c_str()); }, "WARN Truncated: " + truncated},
        {"warnClass", [] { Exception::warnClass(L"C", L"m", L"%ls", kWide.c_str()); },
         "WARN Truncated: C::m: " + truncated},
        {"debug, narrow", [] { Exception::debug("T", "%s", kNarrow.c_str()); }, "DEBUG Truncated: T: " + truncated},
        {"debug, wide", [] { Exception::debug(L"T", L"%ls", kWide.c_str()); }, "DEBUG Truncated: T: " + truncated},
        {"debugClass", [] { Exception::debugClass(L"C", L"m", L"T", L"%ls", kWide.c_str()); },
         "DEBUG Truncated: C::m: T: " + truncated},
        {"log, narrow", [] { Exception::log(nullptr, -1, "P", "%s", kNarrow.c_str()); }, "P Truncated: " + truncated},
        {"log, wide", [] { Exception::log(nullptr, -1, L"P", L"%ls", kWide.c_str()); }, "P Truncated: " + truncated},
        {"logClass", [] { Exception::logClass(nullptr, -1, L"P", L"C", L"m", L"%ls", kWide.c_str()); },
         "P Truncated: C::m: " + truncated},
    };
    test::TemporaryLog log;
    for (const TruncatedLine& line : lines) {
        heap::arm(1, heap::Failure::Once);
        line.call();
        heap::disarm();
        EXPECT_EQ(log.takeMessages(), std::vector<std::string>{line.text}) << line.name;
    }
}

TEST(ChannelText, DecoratedTextIsTruncatedWhenOnlyItsBlockCannotBeAllocated) {
    test::TemporaryLog log;
    heap::arm(2, heap::Failure::Once);
    Exception::warnClass(L"C", L"m", L"%ls", kWide.c_str());
    heap::disarm();
    EXPECT_EQ(log.takeMessages(),
              std::vector<std::string>{"WARN Truncated: " + ("C::m: " + kNarrow).substr(0, kTruncatedLength)});
}

TEST(ChannelText, SaysThatANarrowMessageCannotBeConverted) {
    test::TemporaryLog log;
    heap::arm(1, heap::Failure::Once);
    Exception::warn("%s", "a short message");
    heap::disarm();
    EXPECT_EQ(log.takeMessages(), std::vector<std::string>{"WARN: Out of memory for text conversion"});
}

}  // namespace

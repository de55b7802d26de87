// The diagnostic channels under a failing heap: each call leaves a line, whole, or cut and marked as such.

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
constexpr std::size_t kCut = 7999;  // what the buffer of a message holds

const std::string kNarrow = longText<char>(kLong);
const std::wstring kWide = longText<wchar_t>(kLong);

/// How a channel's line reads.
struct Line {
    std::string prefix;      // without the colon
    std::string decoration;  // in front of the message
    bool narrowTexts;        // some text had to be made wide first, or narrow
};

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string whole;
    for (const std::string_view part : parts) {
        whole += part;
    }
    return whole;
}

/// The lines that may stand where memory was refused at one place or another.
std::vector<std::string> linesUnderFailure(const Line& line) {
    static const std::string kNoMemory = "Out of memory for text conversion";
    static const std::string kNoMemoryForPrefix = "Out of memory in text conversion";
    std::vector<std::string> decorations = {line.decoration};
    std::vector<std::string> messages = {kNarrow};
    std::vector<std::string> prefixes = {line.prefix};
    if (line.narrowTexts) {
        decorations.insert(decorations.end(), {kNoMemory + ": ", ": "});
        messages.insert(messages.end(), {kNoMemory, ""});
        prefixes.insert(prefixes.end(), {kNoMemoryForPrefix, ""});
    }
    std::vector<std::string> lines;
    for (const std::string& prefix : prefixes) {
        for (const std::string& decoration : decorations) {
            for (const std::string& message : messages) {
                const std::string whole = joined({decoration, message});
                lines.push_back(joined({prefix, ": ", whole}));
                // The message was cut, or its decorated form.
                const std::string cut = joined({decoration, message.substr(0, kCut)});
                for (const std::string& text : {cut, whole.substr(0, kCut)}) {
                    lines.push_back(joined({prefix, " Truncated: ", text}));
                }
            }
        }
    }
    return lines;
}

template <class Call>
void expectLine(Trial& trial, const Line& line, Call&& call) {
    trial.perform(call);
    trial.expectCompleted();
    const heap::Unwatched unwatched;
    ASSERT_FALSE(trial.logged().empty());
    if (!trial.refused()) {
        EXPECT_EQ(trial.logged(), std::vector<std::string>{line.prefix + ": " + line.decoration + kNarrow});
        return;
    }
    const std::vector<std::string> lines = linesUnderFailure(line);
    EXPECT_TRUE(std::find(lines.begin(), lines.end(), trial.logged().back()) != lines.end())
        << trial.logged().back().substr(0, 100) << "…, " << trial.logged().back().size() << " bytes";
}

/// A debug target that is switched on for a while.
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

void warnNarrow(Trial& trial) {
    expectLine(trial, {"WARN", "", true}, [] { Exception::warn("%s", kNarrow.c_str()); });
}

void warnWide(Trial& trial) {
    expectLine(trial, {"WARN", "", false}, [] { Exception::warn(L"%ls", kWide.c_str()); });
}

void swigwarnNarrow(Trial& trial) {
    expectLine(trial, {"WARN", "", true}, [] { Exception::swigwarn("%s", kNarrow.c_str()); });
}

void swigwarnWide(Trial& trial) {
    expectLine(trial, {"WARN", "", false}, [] { Exception::swigwarn(L"%ls", kWide.c_str()); });
}

void warnOfClass(Trial& trial) {
    expectLine(trial, {"WARN", "Parser::run: ", false},
               [] { Exception::warnClass(L"Parser", L"run", L"%ls", kWide.c_str()); });
}

void debugNarrow(Trial& trial) {
    const ActiveTarget target("Parser");
    expectLine(trial, {"DEBUG", "Parser: ", true}, [] { Exception::debug("Parser", "%s", kNarrow.c_str()); });
}

void debugWide(Trial& trial) {
    const ActiveTarget target(L"Parser");
    expectLine(trial, {"DEBUG", "Parser: ", false}, [] { Exception::debug(L"Parser", L"%ls", kWide.c_str()); });
}

template <class T>
void vDebug(const T* target, const T* format, ...) {
    va_list args;
    va_start(args, format);
    Exception::vDebug(target, format, args);
    va_end(args);
}

void vDebugNarrow(Trial& trial) {
    const ActiveTarget target("Parser");
    expectLine(trial, {"DEBUG", "Parser: ", true}, [] { vDebug("Parser", "%s", kNarrow.c_str()); });
}

void vDebugWide(Trial& trial) {
    const ActiveTarget target(L"Parser");
    expectLine(trial, {"DEBUG", "Parser: ", false}, [] { vDebug(L"Parser", L"%ls", kWide.c_str()); });
}

void debugOfClass(Trial& trial) {
    const ActiveTarget target(L"Parser");
    trial.perform([] { Exception::debugClass(L"C", L"m", L"Parser", L"%ls", kWide.c_str()); });
    trial.expectCompleted();
    const heap::Unwatched unwatched;
    ASSERT_EQ(trial.logged().size(), 1u);
    const std::string whole = "C::m: Parser: " + kNarrow;
    const std::string& line = trial.logged().front();
    if (!trial.refused()) {
        EXPECT_EQ(line, "DEBUG: " + whole);
        return;
    }
    const bool marked = line.starts_with("DEBUG Truncated: ");
    const std::string text = line.substr(marked ? 17 : 7);
    EXPECT_TRUE(whole.starts_with(text) && text.size() >= kCut) << text.size();
    EXPECT_TRUE(marked || text == whole) << "the log writes long lines without memory, too";
}

void logNarrow(Trial& trial) {
    expectLine(trial, {"Import", "", true}, [] { Exception::log(nullptr, -1, "Import", "%s", kNarrow.c_str()); });
}

void logWide(Trial& trial) {
    expectLine(trial, {"Import", "", true}, [] { Exception::log(nullptr, -1, L"Import", L"%ls", kWide.c_str()); });
}

void logOfClass(Trial& trial) {
    expectLine(trial, {"Import", "Parser::run: ", true},
               [] { Exception::logClass(nullptr, -1, L"Import", L"Parser", L"run", L"%ls", kWide.c_str()); });
}

/// What does nothing, and what asks whether a target is active, asks for no memory.
void silentOperations(Trial& trial) {
    const ActiveTarget target("Parser");
    trial.perform([] {
        Exception::trace("%s", kNarrow.c_str());
        Exception::trace(L"%ls", kWide.c_str());
        Exception::traceClass(L"Parser", L"run", L"%ls", kWide.c_str());
        Exception::traceCallStack(stderr);
        Exception::debug("another target", "%s", kNarrow.c_str());
        Exception::debugClass(L"Parser", L"run", L"another target", L"%ls", kWide.c_str());
    });
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
    EXPECT_EQ(trial.logged().size(), 0u);
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"Warn_Narrow", warnNarrow},         {"Warn_Wide", warnWide},         {"WarnClass", warnOfClass},
        {"Debug_Narrow", debugNarrow},       {"Debug_Wide", debugWide},       {"DebugClass", debugOfClass},
        {"Log_Narrow", logNarrow},           {"Log_Wide", logWide},           {"LogClass", logOfClass},
        {"SwigWarn_Narrow", swigwarnNarrow}, {"SwigWarn_Wide", swigwarnWide}, {"VDebug_Narrow", vDebugNarrow},
        {"VDebug_Wide", vDebugWide},         {"Silent", silentOperations},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Channels, FailingHeap, underBothFailures(operations()), failingHeapName);

/// Every channel asks for the block of its message first: refused alone, it cuts the message and changes the prefix.
struct CutLine {
    const char* why;
    void (*call)();
    std::string text;
};

TEST(ChannelText, IsCutAndMarkedWhenItsBlockAloneIsRefused) {
    const ActiveTarget narrowTarget("T");
    const ActiveTarget wideTarget(L"T");
    const std::string cut = kNarrow.substr(0, kCut);
    const CutLine lines[] = {
        {"warn, narrow", [] { Exception::warn("%s", kNarrow.c_str()); }, "WARN Truncated: " + cut},
        {"warn", [] { Exception::warn(L"%ls", kWide.c_str()); }, "WARN Truncated: " + cut},
        {"swigwarn", [] { Exception::swigwarn(L"%ls", kWide.c_str()); }, "WARN Truncated: " + cut},
        {"warnClass", [] { Exception::warnClass(L"C", L"m", L"%ls", kWide.c_str()); }, "WARN Truncated: C::m: " + cut},
        {"debug, narrow", [] { Exception::debug("T", "%s", kNarrow.c_str()); }, "DEBUG Truncated: T: " + cut},
        {"debug", [] { Exception::debug(L"T", L"%ls", kWide.c_str()); }, "DEBUG Truncated: T: " + cut},
        {"debugClass", [] { Exception::debugClass(L"C", L"m", L"T", L"%ls", kWide.c_str()); },
         "DEBUG Truncated: C::m: T: " + cut},
        {"log, narrow", [] { Exception::log(nullptr, -1, "P", "%s", kNarrow.c_str()); }, "P Truncated: " + cut},
        {"log", [] { Exception::log(nullptr, -1, L"P", L"%ls", kWide.c_str()); }, "P Truncated: " + cut},
        {"logClass", [] { Exception::logClass(nullptr, -1, L"P", L"C", L"m", L"%ls", kWide.c_str()); },
         "P Truncated: C::m: " + cut},
    };
    test::TemporaryLog log;
    for (const CutLine& line : lines) {
        heap::arm(1, heap::Failure::Once);
        line.call();
        heap::disarm();
        EXPECT_EQ(log.takeMessages(), std::vector<std::string>{line.text}) << line.why;
    }
}

TEST(ChannelText, IsCutAsAWholeWhenItsDecoratedBlockIsRefused) {
    test::TemporaryLog log;
    heap::arm(2, heap::Failure::Once);
    Exception::warnClass(L"C", L"m", L"%ls", kWide.c_str());
    heap::disarm();
    EXPECT_EQ(log.takeMessages(), std::vector<std::string>{"WARN Truncated: " + ("C::m: " + kNarrow).substr(0, kCut)});
}

TEST(ChannelText, SaysSoWhenANarrowMessageCannotBeMadeWide) {
    test::TemporaryLog log;
    heap::arm(1, heap::Failure::Once);
    Exception::warn("%s", "a short message");
    heap::disarm();
    EXPECT_EQ(log.takeMessages(), std::vector<std::string>{"WARN: Out of memory for text conversion"});
}

}  // namespace

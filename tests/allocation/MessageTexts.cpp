#include "allocation/MessageTexts.h"

#include "support/WideText.h"

void expectMessage(const Attempt& attempt, const vorel::Exception& e, unsigned int index, const std::wstring& text) {
    const heap::Unwatched unwatched;
    if (!attempt.allocationFailed()) {
        ASSERT_GT(e.getMessageTotal(), index);
        EXPECT_EQ(e.getErrorMessage(index), text);
        return;
    }
    const std::wstring found = e.getErrorMessage(index);
    EXPECT_TRUE(found.empty() || found == text || found == text.substr(0, kTruncatedMessage) ||
                found == kNoMemoryForText)
        << index;
}

void expectLastLine(const Attempt& attempt, const std::string& prefix, const std::string& text) {
    const heap::Unwatched unwatched;
    ASSERT_FALSE(attempt.logged().empty());
    const std::string& line = attempt.logged().back();
    const std::string complete = prefix + ": " + text;
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(line, complete);
        return;
    }
    const std::string truncated = prefix + " Truncated: " + text.substr(0, kTruncatedMessage);
    const std::string noMemory = prefix + ": " + test::narrowed(kNoMemoryForText);
    EXPECT_TRUE(line == complete || line == noMemory || line == prefix + ": " ||
                (text.size() > kTruncatedMessage && (line == truncated || line == prefix + " Truncated: ")))
        << line.substr(0, 100);
}

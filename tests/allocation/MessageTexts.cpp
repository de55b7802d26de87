#include "allocation/MessageTexts.h"

void expectMessage(const Trial& trial, const vorel::Exception& e, unsigned int index, const std::wstring& text) {
    const heap::Unwatched unwatched;
    if (!trial.refused()) {
        ASSERT_GT(e.getMessageTotal(), index);
        EXPECT_EQ(e.getErrorMessage(index), text);
        return;
    }
    const std::wstring found = e.getErrorMessage(index);
    EXPECT_TRUE(found.empty() || found == text || found == text.substr(0, kCutMessage) || found == kNoMemoryForText)
        << index;
}

void expectLastLine(const Trial& trial, const std::string& prefix, const std::string& text) {
    const heap::Unwatched unwatched;
    ASSERT_FALSE(trial.logged().empty());
    const std::string& line = trial.logged().back();
    const std::string whole = prefix + ": " + text;
    if (!trial.refused()) {
        EXPECT_EQ(line, whole);
        return;
    }
    const std::string cut = prefix + " Truncated: " + text.substr(0, kCutMessage);
    const std::string noMemory = prefix + ": " + narrowed(kNoMemoryForText);
    EXPECT_TRUE(line == whole || line == noMemory || line == prefix + ": " ||
                (text.size() > kCutMessage && (line == cut || line == prefix + " Truncated: ")))
        << line.substr(0, 100);
}

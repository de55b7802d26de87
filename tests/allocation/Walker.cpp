#include "allocation/Walker.h"

#include <algorithm>
#include <exception>
#include <new>
#include <ostream>
#include <typeinfo>

#include "support/Expect.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

constexpr unsigned int kMostRequests = 1000;  // no operation here makes so many

std::wstring memoryMessage(Trial::Request request) {
    return L"No more memory is available: " + std::to_wstring(request.count) + L" objects of size " +
           std::to_wstring(request.size) + L" requested";
}

}  // namespace

std::string narrowed(const std::wstring& text) {
    std::string result;
    std::transform(text.begin(), text.end(), std::back_inserter(result),
                   [](wchar_t unit) { return static_cast<char>(unit); });
    return result;
}

void Trial::keepException(const vorel::Exception& thrown) {
    const heap::Unwatched unwatched;
    m_kind = typeid(thrown).name();
    m_messages = test::messagesOf(thrown);
}

void Trial::keepException(const std::exception& thrown) {
    const heap::Unwatched unwatched;
    m_kind = typeid(thrown).name();
}

void Trial::keepTheRest() {
    m_requests = heap::requests();
    m_refusals = heap::refusals();
    const heap::Unwatched unwatched;
    m_logged = m_log.takeMessages();
}

void Trial::expectCompleted() const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, "") << testing::PrintToString(m_messages);
}

void Trial::expectLogged(const Messages& messages) const {
    std::vector<std::string> lines;
    for (const std::wstring& message : messages) {
        lines.push_back("Vorel Error: " + narrowed(message));
    }
    EXPECT_EQ(m_logged, lines);
}

void Trial::expectException(const std::string& kind, const Messages& messages) const {
    const heap::Unwatched unwatched;
    if (!refused()) {
        EXPECT_EQ(m_kind, "") << testing::PrintToString(m_messages);
        return;
    }
    EXPECT_EQ(m_kind, kind);
    EXPECT_EQ(m_messages, staysWithoutMemory() ? Messages() : messages);
    expectLogged(messages);
}

void Trial::expectMemoryException(const std::vector<Request>& requests, const Messages& records) const {
    const heap::Unwatched unwatched;
    // Which of the requests was refused shows in the log, in both ways of failing.
    for (const Request& request : requests) {
        Messages messages = {memoryMessage(request)};
        messages.insert(messages.end(), records.begin(), records.end());
        const bool last = &request == &requests.back();
        if (last || (!m_logged.empty() && m_logged.front() == "Vorel Error: " + narrowed(messages.front()))) {
            expectException(typeid(vorel::MemoryException).name(), messages);
            return;
        }
    }
}

void Trial::expectMemoryOrDone() const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, refused() ? typeid(vorel::MemoryException).name() : "") << testing::PrintToString(m_messages);
}

void Trial::expectBadAlloc() const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, refused() ? typeid(std::bad_alloc).name() : "");
    EXPECT_EQ(m_logged, std::vector<std::string>());
}

void Trial::expectThrown(const std::string& kind, const Messages& messages) const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, kind);
    expectLogged(messages);
    expectThrownTexts(messages);
}

void Trial::expectThrownTexts(const Messages& messages) const {
    const heap::Unwatched unwatched;
    if (!refused()) {
        EXPECT_EQ(m_messages, messages);
        return;
    }
    // Those that are there stand in their order.
    auto expected = messages.begin();
    for (const std::wstring& message : m_messages) {
        if (!message.empty()) {
            expected = std::find(expected, messages.end(), message);
            EXPECT_NE(expected, messages.end()) << testing::PrintToString(message);
        }
    }
}

namespace heap {

static void PrintTo(Failure failure, std::ostream* out) {
    *out << (failure == Failure::Once ? "one refusal" : "refusals from then on");
}

}  // namespace heap

std::string failingHeapName(const testing::TestParamInfo<OperationUnderFailure>& info) {
    const auto& [operation, failure] = info.param;
    return operation.name + (failure == heap::Failure::Once ? "_Once" : "_FromThenOn");
}

TEST_P(FailingHeap, LeavesTheDocumentedFailureAndNoBlock) {
    const auto& [operation, failure] = GetParam();
    test::TemporaryLog log;
    {
        // What is made once in the life of a program is made now.
        Trial untroubled(kMostRequests, failure, log);
        operation.run(untroubled);
        ASSERT_FALSE(untroubled.refused());
    }
    for (unsigned int nth = 1; nth < kMostRequests; ++nth) {
        SCOPED_TRACE(testing::Message() << "request " << nth << " refused");
        Trial trial(nth, failure, log);
        heap::watch();
        operation.run(trial);
        heap::stopWatching();
        EXPECT_EQ(heap::heldBlocks(), 0u) << "blocks that nobody gave back";
        if (!trial.refused()) {
            return;
        }
        if (HasFailure()) {
            return;
        }
    }
    FAIL() << "the operation never came through";
}

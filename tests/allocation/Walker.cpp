#include "allocation/Walker.h"

#include <algorithm>
#include <exception>
#include <new>
#include <ostream>
#include <typeinfo>

#include "support/Expect.h"
#include "support/WideText.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

constexpr unsigned int kMaxRequests = 1000;  // more requests than any operation makes

std::wstring memoryMessage(Attempt::Request request) {
    return L"No more memory is available: " + std::to_wstring(request.count) + L" objects of size " +
           std::to_wstring(request.size) + L" requested";
}

}  // namespace

void Attempt::keepException(const vorel::Exception& thrown) {
    const heap::Unwatched unwatched;
    m_kind = typeid(thrown).name();
    m_messages = test::messagesOf(thrown);
}

void Attempt::keepException(const std::exception& thrown) {
    const heap::Unwatched unwatched;
    m_kind = typeid(thrown).name();
}

void Attempt::keepResults() {
    m_requests = heap::requests();
    m_failedRequests = heap::failedRequests();
    const heap::Unwatched unwatched;
    m_logged = m_log.takeMessages();
}

void Attempt::expectCompleted() const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, "") << testing::PrintToString(m_messages);
}

void Attempt::expectLogged(const Messages& messages) const {
    std::vector<std::string> lines;
    for (const std::wstring& message : messages) {
        lines.push_back("Vorel Error: " + test::narrowed(message));
    }
    EXPECT_EQ(m_logged, lines);
}

void Attempt::expectException(const std::string& kind, const Messages& messages) const {
    const heap::Unwatched unwatched;
    if (!allocationFailed()) {
        EXPECT_EQ(m_kind, "") << testing::PrintToString(m_messages);
        return;
    }
    EXPECT_EQ(m_kind, kind);
    EXPECT_EQ(m_messages, memoryStaysExhausted() ? Messages() : messages);
    expectLogged(messages);
}

void Attempt::expectMemoryException(const std::vector<Request>& requests, const Messages& records) const {
    const heap::Unwatched unwatched;
    // The first line of the log shows which request failed, even if the exception has no messages.
    for (const Request& request : requests) {
        Messages messages = {memoryMessage(request)};
        messages.insert(messages.end(), records.begin(), records.end());
        const bool last = &request == &requests.back();
        if (last || (!m_logged.empty() && m_logged.front() == "Vorel Error: " + test::narrowed(messages.front()))) {
            expectException(typeid(vorel::MemoryException).name(), messages);
            return;
        }
    }
}

void Attempt::expectCompletedOrMemoryException() const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, allocationFailed() ? typeid(vorel::MemoryException).name() : "")
        << testing::PrintToString(m_messages);
}

void Attempt::expectBadAlloc() const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, allocationFailed() ? typeid(std::bad_alloc).name() : "");
    EXPECT_EQ(m_logged, std::vector<std::string>());
}

void Attempt::expectThrown(const std::string& kind, const Messages& messages) const {
    const heap::Unwatched unwatched;
    EXPECT_EQ(m_kind, kind);
    expectLogged(messages);
    expectThrownTexts(messages);
}

void Attempt::expectThrownTexts(const Messages& messages) const {
    const heap::Unwatched unwatched;
    if (!allocationFailed()) {
        EXPECT_EQ(m_messages, messages);
        return;
    }
    // Messages may be missing or empty. The remaining messages must have the expected order.
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
    *out << (failure == Failure::Once ? "one failure" : "failures from then on");
}

}  // namespace heap

std::string failingHeapName(const testing::TestParamInfo<OperationUnderFailure>& info) {
    const auto& [operation, failure] = info.param;
    return operation.name + (failure == heap::Failure::Once ? "_Once" : "_FromThenOn");
}

TEST_P(FailingHeap, FailsAsDocumentedAndLeaksNothing) {
    const auto& [operation, failure] = GetParam();
    test::TemporaryLog log;
    {
        // The library creates some data at its first use and keeps it. The operation runs once before blocks are
        // counted, so that this data is not reported as a leak of a later run.
        Attempt warmUp(kMaxRequests, failure, log);
        operation.run(warmUp);
        ASSERT_FALSE(warmUp.allocationFailed());
    }
    for (unsigned int nth = 1; nth < kMaxRequests; ++nth) {
        SCOPED_TRACE(testing::Message() << "request " << nth << " fails");
        Attempt attempt(nth, failure, log);
        heap::watch();
        operation.run(attempt);
        heap::stopWatching();
        EXPECT_EQ(heap::heldBlocks(), 0u) << "leaked blocks";
        if (!attempt.allocationFailed()) {
            return;
        }
        if (HasFailure()) {
            return;
        }
    }
    FAIL() << "the operation never completed without a failed request";
}

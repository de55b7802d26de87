/// \file
/// Runs every operation of the library on a failing heap. An operation is a function that prepares its objects,
/// performs one step while the heap may fail, and checks the results. The walker, the test in Walker.cpp, first runs
/// the operation without a failure. Then it runs the operation repeatedly: in the n-th of these runs, the n-th request
/// for memory fails. With `Failure::FromThenOn`, all later requests of the run also fail. The walker stops after a run
/// in which no request failed, or in which a check failed. It reports the blocks that one of these runs leaks.
///
///     void appendGrows(Attempt& attempt) {
///         vorel::Array<int> array;
///         attempt.perform([&] { array.append(7); });
///         attempt.expectMemoryException({{5, 4}});
///         EXPECT_EQ(array.size(), attempt.completed() ? 1u : 0u);
///     }
///     INSTANTIATE_TEST_SUITE_P(Arrays, FailingHeap, underBothFailures({{"AppendGrows", appendGrows}}),
///     failingHeapName);
#pragma once

#include <exception>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "heap/CountingHeap.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

/// One run of an operation, and its results.
class Attempt {
public:
    /// The request that the text of a MemoryException names: a number of elements, and the size of an element in bytes.
    struct Request {
        unsigned int count;
        unsigned int size;
    };
    using Messages = std::vector<std::wstring>;

    Attempt(unsigned int nth, heap::Failure failure, test::TemporaryLog& log)
        : m_nth(nth), m_failure(failure), m_log(log) {}

    /// Runs `step` while the heap may fail, and stores its results and its exception. An exception of a class that is
    /// derived neither from `vorel::Exception` nor from `std::exception` is rethrown.
    template <class Step>
    void perform(Step&& step) {
        m_log.takeMessages();
        heap::arm(m_nth, m_failure);
        try {
            std::forward<Step>(step)();
            heap::disarm();
        } catch (const vorel::Exception& e) {
            heap::disarm();
            keepException(e);
        } catch (const std::exception& e) {
            heap::disarm();
            keepException(e);
        } catch (...) {
            heap::disarm();
            throw;
        }
        keepResults();
    }

    [[nodiscard]] bool completed() const { return m_kind.empty(); }
    [[nodiscard]] bool allocationFailed() const { return m_failedRequests != 0; }

    /// The number of requests of the step, successful or not.
    [[nodiscard]] unsigned int requests() const { return m_requests; }

    /// The name of the class of the thrown object, as `typeid` returns it, or an empty text if the step completed.
    [[nodiscard]] const std::string& thrown() const { return m_kind; }

    /// Whether all requests after the first failure also failed, so that no text could be stored.
    [[nodiscard]] bool memoryStaysExhausted() const {
        return allocationFailed() && m_failure == heap::Failure::FromThenOn;
    }

    /// The lines that the step logged. Each line consists of its prefix and its message.
    [[nodiscard]] const std::vector<std::string>& logged() const { return m_logged; }

    /// Expects that the step throws nothing, even if a request failed.
    void expectCompleted() const;

    /// Expects that the step completes if no request failed. Otherwise expects a `MemoryException` for one of
    /// `requests`. The messages of the exception must be the message for this request, followed by `records`. The log
    /// must contain the same messages. If all requests after the failed request also fail, the exception must have no
    /// messages, but the log must still contain them.
    void expectMemoryException(const std::vector<Request>& requests, const Messages& records = {}) const;

    /// Expects that the step completes if no request failed. Otherwise expects a `MemoryException` with any messages.
    void expectCompletedOrMemoryException() const;

    /// Like `expectMemoryException`, but expects an exception of the class `kind` with `messages`.
    void expectException(const std::string& kind, const Messages& messages) const;

    /// Expects that the step completes if no request failed, and throws `std::bad_alloc` otherwise. It must log
    /// nothing.
    void expectBadAlloc() const;

    /// Expects that the step throws an object of the class `kind` with `messages`, whether or not a request failed, and
    /// that the log contains exactly `messages`. If a request failed, messages of the object may be missing or empty.
    void expectThrown(const std::string& kind, const Messages& messages) const;

    /// Expects `messages` in the thrown object. If a request failed, messages of the object may be missing or empty.
    void expectThrownTexts(const Messages& messages) const;

private:
    void keepException(const vorel::Exception& thrown);
    void keepException(const std::exception& thrown);
    void keepResults();
    void expectLogged(const Messages& messages) const;

    unsigned int m_nth;
    heap::Failure m_failure;
    test::TemporaryLog& m_log;
    unsigned int m_requests = 0;
    unsigned int m_failedRequests = 0;
    std::string m_kind;  // class of the thrown object
    Messages m_messages;
    std::vector<std::string> m_logged;
};

struct Operation {
    std::string name;
    std::function<void(Attempt&)> run;

    friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
};

using OperationUnderFailure = std::tuple<Operation, heap::Failure>;

class FailingHeap : public testing::TestWithParam<OperationUnderFailure> {};

inline auto underBothFailures(const std::vector<Operation>& operations) {
    return testing::Combine(testing::ValuesIn(operations),
                            testing::Values(heap::Failure::Once, heap::Failure::FromThenOn));
}

std::string failingHeapName(const testing::TestParamInfo<OperationUnderFailure>& info);

/// `text` in the character type `T`.
template <class T>
std::basic_string<T> textOf(const char* text) {
    return {text, text + std::char_traits<char>::length(text)};
}

/// A text of `count` ASCII letters. Adjacent letters differ.
template <class T>
std::basic_string<T> longText(std::size_t count) {
    std::basic_string<T> text(count, T{});
    for (std::size_t unit = 0; unit < count; ++unit) {
        text[unit] = static_cast<T>('a' + unit % 23);
    }
    return text;
}

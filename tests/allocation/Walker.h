/// \file
/// Every operation of the library under a failing heap. An operation is a function that prepares its objects, performs
/// one step while the heap may fail, and says what has to be true afterwards. The walker runs it with the first, the
/// second, the third … request refused, until none was, and finds blocks that nobody gave back.
///
///     void appendGrows(Trial& trial) {
///         vorel::Array<int> array;
///         trial.perform([&] { array.append(7); });
///         trial.expectMemoryException({{5, 4}});
///         EXPECT_EQ(array.size(), trial.completed() ? 1u : 0u);
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

/// One run of an operation, and what came out of it.
class Trial {
public:
    /// A request that a MemoryException may name: elements, and bytes of an element.
    struct Request {
        unsigned int count;
        unsigned int size;
    };
    using Messages = std::vector<std::wstring>;

    Trial(unsigned int nth, heap::Failure failure, test::TemporaryLog& log)
        : m_nth(nth), m_failure(failure), m_log(log) {}

    /// Runs `step` while the heap may fail, and keeps what it throws.
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
        keepTheRest();
    }

    [[nodiscard]] bool completed() const { return m_kind.empty(); }
    [[nodiscard]] bool refused() const { return m_refusals != 0; }

    /// Requests that the step made, granted or not.
    [[nodiscard]] unsigned int requests() const { return m_requests; }

    /// The name of the class of what was thrown; empty when the step completed.
    [[nodiscard]] const std::string& thrown() const { return m_kind; }

    /// Whether no memory was to be had from the failure on, so that no text found a place either.
    [[nodiscard]] bool staysWithoutMemory() const { return refused() && m_failure == heap::Failure::FromThenOn; }

    /// The lines that the step logged, prefix and message.
    [[nodiscard]] const std::vector<std::string>& logged() const { return m_logged; }

    /// Nothing may leave the step, whatever was refused.
    void expectCompleted() const;

    /// A refusal has to leave the step as `MemoryException` for one of `requests`, followed by `records`, all of them
    /// logged; without a refusal it completes. Where no memory is to be had afterwards, the exception has no messages.
    void expectMemoryException(const std::vector<Request>& requests, const Messages& records = {}) const;

    /// The same, whatever the request was for, and whatever the records.
    void expectMemoryOrDone() const;

    /// A refusal has to leave the step as an exception of another class and text.
    void expectException(const std::string& kind, const Messages& messages) const;

    /// A refusal has to leave the step as the standard allocation failure.
    void expectBadAlloc() const;

    /// The step throws in any case: an object of `kind`, whose messages lack texts at most where memory was refused,
    /// and whose log lines are whole.
    void expectThrown(const std::string& kind, const Messages& messages) const;

    /// What was thrown has these messages; where memory was refused, some may be missing or empty.
    void expectThrownTexts(const Messages& messages) const;

private:
    void keepException(const vorel::Exception& thrown);
    void keepException(const std::exception& thrown);
    void keepTheRest();
    void expectLogged(const Messages& messages) const;

    unsigned int m_nth;
    heap::Failure m_failure;
    test::TemporaryLog& m_log;
    unsigned int m_requests = 0;
    unsigned int m_refusals = 0;
    std::string m_kind;  // of what was thrown
    Messages m_messages;
    std::vector<std::string> m_logged;
};

struct Operation {
    std::string name;
    std::function<void(Trial&)> run;

    friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
};

using OperationUnderFailure = std::tuple<Operation, heap::Failure>;

class FailingHeap : public testing::TestWithParam<OperationUnderFailure> {};

inline auto underBothFailures(const std::vector<Operation>& operations) {
    return testing::Combine(testing::ValuesIn(operations),
                            testing::Values(heap::Failure::Once, heap::Failure::FromThenOn));
}

std::string failingHeapName(const testing::TestParamInfo<OperationUnderFailure>& info);

/// `text` in the character type of a template of operations.
template <class T>
std::basic_string<T> textOf(const char* text) {
    return {text, text + std::char_traits<char>::length(text)};
}

/// `count` units of ASCII, no two neighbours alike.
template <class T>
std::basic_string<T> longText(std::size_t count) {
    std::basic_string<T> text(count, T{});
    for (std::size_t unit = 0; unit < count; ++unit) {
        text[unit] = static_cast<T>('a' + unit % 23);
    }
    return text;
}

/// ASCII only.
std::string narrowed(const std::wstring& text);

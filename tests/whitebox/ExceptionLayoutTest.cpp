/// \file
/// The layout of an exception: the order of its fields, and the order of the functions in its virtual table. Programs
/// built against other versions of the library depend on the layout.

#include "vorel/exceptions/Exception.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace test {

#ifndef __clang__  // clang does not have this warning
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-template-friend"
#endif

/// Like PrivateMember.h, but for members with private types.
template <class Tag, auto Member>
struct RevealTyped {
    friend auto reveal(Tag) { return Member; }
};

#define VOREL_REVEAL(Tag, Member) \
    struct Tag {                  \
        friend auto reveal(Tag);  \
    };                            \
    template struct RevealTyped<Tag, &vorel::Exception::Member>

VOREL_REVEAL(Stack, m_stack);
VOREL_REVEAL(DelayedLogging, m_delayedLogging);
VOREL_REVEAL(TracedState, m_hasTracedProtocolStateInfo);
VOREL_REVEAL(CharBlock, m_charBlock);
VOREL_REVEAL(WideBlock, m_wideBlock);

#ifndef __clang__
#pragma GCC diagnostic pop
#endif

}  // namespace test

namespace {

using vorel::Exception;

/// The distance of a field from the start of the object.
template <class Field>
std::ptrdiff_t offsetOf(const Exception& e, Field field) {
    return reinterpret_cast<const char*>(std::addressof(e.*field)) - reinterpret_cast<const char*>(&e);
}

// An exception consists of the pointer to the virtual table, three pointers of the message stack, two flags and two
// strings.
TEST(ExceptionLayout, FieldsAreAtFixedOffsets) {
    const Exception e(L"message");
    EXPECT_EQ(offsetOf(e, reveal(test::Stack())), 8);
    EXPECT_EQ(offsetOf(e, reveal(test::DelayedLogging())), 32);
    EXPECT_EQ(offsetOf(e, reveal(test::TracedState())), 33);
    EXPECT_EQ(offsetOf(e, reveal(test::CharBlock())), 40);
    EXPECT_EQ(offsetOf(e, reveal(test::WideBlock())), 56);
}

// The debugger views read the messages by this layout.
TEST(ExceptionLayout, MessageStackBeginsWithTheBoundsOfItsEntries) {
    Exception e(L"message");
    e.appendMessage(L"record");
    const auto& stack = e.*reveal(test::Stack());
    const void* bounds[2];
    std::memcpy(bounds, static_cast<const void*>(&stack), sizeof bounds);
    EXPECT_EQ(bounds[0], &stack[0]);
    EXPECT_EQ(bounds[1], &stack[1] + 1);
}

// Messages move only when the storage is full, because the storage then doubles.
TEST(ExceptionLayout, MessageStackDoublesItsStorageWhenItIsFull) {
    Exception e;
    const auto& stack = e.*reveal(test::Stack());
    std::vector<std::size_t> moved;
    for (std::size_t count = 1; count <= 20; ++count) {
        const void* const before = stack.begin();
        e.appendMessage(L"message %d", static_cast<int>(count));
        if (stack.begin() != before) {
            moved.push_back(count);
        }
    }
    EXPECT_EQ(moved, (std::vector<std::size_t>{1, 2, 3, 5, 9, 17}));
    EXPECT_EQ(stack.size(), 20u);
    EXPECT_EQ(stack[19].message.view(), L"message 20");
    EXPECT_EQ(stack[0].message.view(), L"message 1");
}

TEST(ExceptionLayout, MessagePrecedesTheLocationInAnEntryOfTheMessageStack) {
    Exception e(L"message");
    e.setLocation(0, L"location");
    const auto& entry = (e.*reveal(test::Stack()))[0];
    EXPECT_EQ(static_cast<const void*>(&entry), &entry.message);
    EXPECT_EQ(reinterpret_cast<const char*>(&entry.location) - reinterpret_cast<const char*>(&entry), 16);
    EXPECT_EQ(entry.message.view(), L"message");
    EXPECT_EQ(entry.location.view(), L"location");
}

/// Adds a virtual function after those of `Exception`.
class Further : public Exception {
public:
    virtual void further() {}
};

/// The index of a virtual function in the virtual table. In this ABI, a pointer to a virtual member function contains
/// the function's offset in the table, in bytes, plus one.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

// The destructor has two slots: one destroys the object, the other also frees it.
TEST(ExceptionLayout, DestructorPrecedesRethrowInTheVirtualTable) {
    EXPECT_EQ(slotOf(&Exception::rethrow), 2);
    EXPECT_EQ(slotOf(&Further::further), 3);
}

}  // namespace

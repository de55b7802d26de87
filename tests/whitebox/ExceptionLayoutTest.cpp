/// \file
/// The layout of an exception, which programs that were built against other versions of the library share: the order of
/// its virtual table and of its fields.

#include "vorel/exceptions/Exception.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace test {

#ifndef __clang__  // which knows no such warning
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-template-friend"
#endif

/// `PrivateMember.h` for members whose types are private, too.
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

/// Expects that the objects lie one after the other.
void expectInOrder(const std::vector<const void*>& places) {
    EXPECT_THAT(places, ::testing::WhenSortedBy(std::less<>(), ::testing::ElementsAreArray(places)));
}

TEST(ExceptionLayout, FieldsAreInTheirOrder) {
    const Exception e(L"message");
    const auto place = [&e](auto member) { return static_cast<const void*>(std::addressof(e.*member)); };
    expectInOrder({&e, place(reveal(test::Stack())), place(reveal(test::DelayedLogging())),
                   place(reveal(test::TracedState())), place(reveal(test::CharBlock())),
                   place(reveal(test::WideBlock()))});
}

TEST(ExceptionLayout, AnEntryOfTheStackHasTheMessageBeforeTheLocation) {
    Exception e(L"message");
    e.setLocation(0, L"location");
    const auto& entry = (e.*reveal(test::Stack())).at(0);
    expectInOrder({&entry, &entry.location});
    EXPECT_EQ(static_cast<const void*>(&entry), &entry.message);
    EXPECT_EQ(entry.message.view(), L"message");
    EXPECT_EQ(entry.location.view(), L"location");
}

/// The next virtual operation after those of `Exception`.
class Further : public Exception {
public:
    virtual void further() {}
};

/// Where a virtual operation is in the table of its class. A pointer to a member is this position in bytes, and one.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

// The destructor has two places: it ends an object, or ends and frees it.
TEST(ExceptionLayout, TheVirtualTableHasTheDestructorAndThenRethrow) {
    EXPECT_EQ(slotOf(&Exception::rethrow), 2);
    EXPECT_EQ(slotOf(&Further::further), 3);
}

}  // namespace

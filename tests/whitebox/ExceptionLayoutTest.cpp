/// \file
/// The layout of an exception: the order of its fields and of its virtual table. Programs built against other versions
/// of the library depend on it.

#include "vorel/exceptions/Exception.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace test {

#ifndef __clang__  // does not have this warning
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

/// Expects ascending addresses.
void expectInOrder(const std::vector<const void*>& addresses) {
    EXPECT_THAT(addresses, ::testing::WhenSortedBy(std::less<>(), ::testing::ElementsAreArray(addresses)));
}

TEST(ExceptionLayout, FieldsAreInOrder) {
    const Exception e(L"message");
    const auto addressOf = [&e](auto member) { return static_cast<const void*>(std::addressof(e.*member)); };
    expectInOrder({&e, addressOf(reveal(test::Stack())), addressOf(reveal(test::DelayedLogging())),
                   addressOf(reveal(test::TracedState())), addressOf(reveal(test::CharBlock())),
                   addressOf(reveal(test::WideBlock()))});
}

TEST(ExceptionLayout, StackEntryHasTheMessageBeforeTheLocation) {
    Exception e(L"message");
    e.setLocation(0, L"location");
    const auto& entry = (e.*reveal(test::Stack())).at(0);
    expectInOrder({&entry, &entry.location});
    EXPECT_EQ(static_cast<const void*>(&entry), &entry.message);
    EXPECT_EQ(entry.message.view(), L"message");
    EXPECT_EQ(entry.location.view(), L"location");
}

/// Adds a virtual function after those of `Exception`.
class Further : public Exception {
public:
    virtual void further() {}
};

/// The slot of a virtual function. In this ABI, the pointer to a member is the offset in bytes plus one.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

// The destructor has two slots: one destroys the object, the other also frees it.
TEST(ExceptionLayout, VirtualTableHasTheDestructorBeforeRethrow) {
    EXPECT_EQ(slotOf(&Exception::rethrow), 2);
    EXPECT_EQ(slotOf(&Further::further), 3);
}

}  // namespace

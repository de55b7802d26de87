#include "vorel/core/PointerStack.h"

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using vorel::PointerStack;

TEST(PointerStack, Pop_ReturnsTheNewestFirst) {
    int items[3] = {};
    PointerStack<int> stack;
    EXPECT_TRUE(stack.empty());
    for (int& item : items) {
        stack.push(&item);
    }
    EXPECT_EQ(stack.size(), 3u);
    EXPECT_EQ(stack.pop(), &items[2]);
    EXPECT_EQ(stack.pop(), &items[1]);
    stack.push(&items[2]);
    EXPECT_EQ(stack.pop(), &items[2]);
    EXPECT_EQ(stack.pop(), &items[0]);
    EXPECT_TRUE(stack.empty());
}

TEST(PointerStack, Null_IsAValidItem) {
    PointerStack<int> stack;
    stack.push(nullptr);
    EXPECT_FALSE(stack.empty());
    EXPECT_EQ(stack.pop(), nullptr);
    EXPECT_TRUE(stack.empty());
}

TEST(PointerStack, Pop_OfAnEmptyStackThrows) {
    PointerStack<int> stack;
    expectThrows<vorel::Exception>([&] { stack.pop(); }, {L"Stack is empty"});
    int item = 0;
    stack.push(&item);
    stack.pop();
    expectThrows<vorel::Exception>([&] { stack.pop(); }, {L"Stack is empty"});
}

TEST(PointerStack, Index_CountsFromTheOldestAndIsChecked) {
    int items[3] = {};
    PointerStack<int> stack;
    expectThrows<vorel::InvalidIndexException>([&] { stack[0]; },
                                               {L"An invalid index value (0) has been detected; there are zero items"});
    stack.push(&items[0]);
    expectThrows<vorel::InvalidIndexException>(
        [&] { stack[1]; }, {L"An invalid index value (1) has been detected; only legal value is 0"});
    stack.push(&items[1]);
    stack.push(&items[2]);
    EXPECT_EQ(stack[0], &items[0]);
    EXPECT_EQ(stack[2], &items[2]);
    expectThrows<vorel::InvalidIndexException>(
        [&] { stack[3]; }, {L"An invalid index value (3) has been detected; legal values are between 0 and 2"});
}

}  // namespace

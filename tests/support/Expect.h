/// \file
/// Expectations about exceptions: the exact class and every message on the stack.
///
///     test::expectThrows<vorel::Exception>([&] { vorel::util::gmtime(&time, nullptr); },
///                                          {L"pGMTime is null", L"vorel::util::gmtime: Vorel exception rethrown"});
#pragma once

#include <string>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include <vorel/exceptions/Exception.h>

namespace test {

/// The messages of `e`, oldest first.
inline std::vector<std::wstring> messagesOf(const vorel::Exception& e) {
    std::vector<std::wstring> messages;
    for (unsigned int index = 0; index < e.getMessageTotal(); ++index) {
        messages.emplace_back(e.getErrorMessage(index));
    }
    return messages;
}

/// The locations of the messages of `e`, in the same order.
inline std::vector<std::wstring> locationsOf(vorel::Exception& e) {
    std::vector<std::wstring> messages;
    std::vector<std::wstring> locations;
    e.dumpStack(messages, locations, false);
    return locations;
}

/// Expects that `action` throws an object of exactly the class `X`, not of a derived class, with these messages.
template <class X, class Action>
void expectThrows(Action&& action, const std::vector<std::wstring>& messages) {
    try {
        action();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vorel::Exception& e) {
        EXPECT_STREQ(typeid(e).name(), typeid(X).name());
        EXPECT_EQ(messagesOf(e), messages);
    } catch (...) {
        ADD_FAILURE() << "an object was thrown that is not an Exception";
    }
}

}  // namespace test

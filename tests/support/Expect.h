/// \file
/// Expecting failures: the class of the exception and the whole stack of its messages.
///
///     test::expectThrow<vorel::MemoryException>([&] { array.reserve(n); },
///                                               {L"No more memory is available: 5 objects of size 4 requested"});
#pragma once

#include <string>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include "vorel/exceptions/ExceptionFamily.h"

namespace test {

using Messages = std::vector<std::wstring>;

/// The messages of an exception, oldest first.
inline Messages messagesOf(const vorel::Exception& exception) {
    Messages result;
    for (unsigned int index = 0; index < exception.getMessageTotal(); ++index) {
        result.emplace_back(exception.getErrorMessage(index));
    }
    return result;
}

/// Expects that `body` throws an exception of exactly the class `Kind`, with exactly these messages.
template <class Kind, class Body>
void expectThrow(Body&& body, const Messages& messages) {
    try {
        body();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vorel::Exception& thrown) {
        EXPECT_EQ(typeid(thrown), typeid(Kind)) << typeid(thrown).name();
        EXPECT_EQ(messagesOf(thrown), messages);
    } catch (...) {
        ADD_FAILURE() << "something else was thrown";
    }
}

}  // namespace test

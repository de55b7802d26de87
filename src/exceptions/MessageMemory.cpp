/// \file
/// The memory of the messages of an exception. ExceptionMessages.cpp adds and reads the messages. The memory comes from
/// the library's `operator new`, even if a program's code creates the exception. If the memory is too small, it is
/// replaced by memory for at least twice as many messages as the exception has.

#include <algorithm>
#include <memory>
#include <new>

#include "vorel/exceptions/Exception.h"

namespace vorel {

Exception::MessageStack::~MessageStack() {
    resize(0);
    ::operator delete(m_begin);
}

bool Exception::MessageStack::resize(std::size_t count) noexcept {
    if (count > static_cast<std::size_t>(m_capacityEnd - m_begin) && !grow(std::max(count, 2 * size()))) {
        return false;
    }
    StackEntry* const end = m_begin + count;
    if (end < m_end) {
        std::destroy(end, m_end);
    } else {
        std::uninitialized_value_construct(m_end, end);
    }
    m_end = end;
    return true;
}

bool Exception::MessageStack::grow(std::size_t capacity) noexcept {
    auto* const grown = static_cast<StackEntry*>(::operator new(capacity * sizeof(StackEntry), std::nothrow));
    if (!grown) {
        return false;
    }
    StackEntry* const grownEnd = std::uninitialized_move(m_begin, m_end, grown);
    std::destroy(m_begin, m_end);
    ::operator delete(m_begin);
    m_begin = grown;
    m_end = grownEnd;
    m_capacityEnd = grown + capacity;
    return true;
}

}  // namespace vorel

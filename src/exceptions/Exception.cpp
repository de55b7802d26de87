#include "vorel/exceptions/Exception.h"

#include "core/StringAccess.h"
#include "vorel/core/Protocol.h"

namespace vorel {

namespace {

/// The copy is empty if its text cannot be allocated.
void copyText(BaseString<wchar_t>& target, const BaseString<wchar_t>& source) noexcept {
    if (!detail::StringAccess<wchar_t>::tryAssign(target, source.c_str(), source.length())) {
        target.clear();
    }
}

}  // namespace

Exception::Exception() noexcept = default;

Exception::Exception(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

Exception::Exception(const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

Exception::Exception(const Exception& other) noexcept {
    AssignFrom(other);
}

Exception& Exception::operator=(const Exception& other) noexcept {
    AssignFrom(other);
    return *this;
}

Exception::~Exception() noexcept(false) {
    detail::runDestructor(L"Exception", [this] {
        if (m_delayedLogging) {
            mirrorAllMessages();
        }
        CleanAll();
    });
}

void Exception::rethrow() {
    throw Exception(*this);
}

void Exception::AssignFrom(const Exception& source) noexcept {
    if (this != &source) {
        // If memory runs out, the copy has fewer messages, or some of its texts are empty, but the copy keeps its
        // class. The copy never has more messages than the source, because shrinking cannot fail.
        m_stack.resize(source.m_stack.size());
        for (std::size_t entry = 0; entry < m_stack.size(); ++entry) {
            copyText(m_stack[entry].message, source.m_stack[entry].message);
            copyText(m_stack[entry].location, source.m_stack[entry].location);
        }
    }
    m_hasTracedProtocolStateInfo = source.m_hasTracedProtocolStateInfo;
    m_charBlock.clear();
    m_wideBlock.clear();
}

}  // namespace vorel

#include "vorel/exceptions/Exception.h"

#include <new>
#include <utility>

#include "algorithms/Utf8Streams.h"
#include "core/StringAccess.h"
#include "vorel/core/Protocol.h"

namespace vorel {

namespace {

const wchar_t* textOf(const BaseString<wchar_t>& string) noexcept {
    return string.view().data();
}

/// The copy is empty when its text cannot be allocated.
void copyText(BaseString<wchar_t>& target, const BaseString<wchar_t>& source) noexcept {
    if (!detail::StringAccess<wchar_t>::tryAssign(target, source.c_str(), source.length())) {
        target.clear();
    }
}

void convertToUtf8(const BaseString<wchar_t>& source, BaseString<char>& target) {
    target.clear();
    algorithms::Utf8Writer<algorithms::Surrogates::Paired, wchar_t> writer(textOf(source), -1);
    while (!writer.atEnd()) {
        char block[256];
        const std::size_t bytes = writer.write(reinterpret_cast<unsigned char*>(block), sizeof block, sizeof block);
        target.append(block, static_cast<unsigned int>(bytes));
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
        try {
            m_stack.resize(source.m_stack.size());
        } catch (...) {
            // Without memory the copy has fewer messages, but keeps its class. It never has more messages than the
            // source, because shrinking cannot fail.
        }
        for (std::size_t entry = 0; entry < m_stack.size(); ++entry) {
            copyText(m_stack[entry].message, source.m_stack[entry].message);
            copyText(m_stack[entry].location, source.m_stack[entry].location);
        }
    }
    m_hasTracedProtocolStateInfo = source.m_hasTracedProtocolStateInfo;
    m_charBlock.clear();
    m_wideBlock.clear();
}

void Exception::CleanAll() noexcept {
    m_stack.clear();
}

void Exception::clear() noexcept {
    CleanAll();
}

const wchar_t* Exception::what() const noexcept {
    return m_stack.empty() ? nullptr : textOf(m_stack.front().message);
}

const wchar_t* Exception::getErrorMessage(unsigned int index) const noexcept {
    return index < m_stack.size() ? textOf(m_stack[index].message) : L"";
}

unsigned int Exception::getMessageTotal() const noexcept {
    return static_cast<unsigned int>(m_stack.size());
}

// The separator may point into the block of an earlier call, so that block is replaced last.
const wchar_t* Exception::getErrorMessageBlock(const wchar_t* separator) const {
    return detail::runRethrowing(L"Exception", L"getErrorMessageBlock", [&] {
        BaseString<wchar_t> block;
        for (const StackEntry& entry : m_stack) {
            if (&entry != &m_stack.front()) {
                block += separator;
            }
            block += entry.message;
        }
        m_wideBlock = std::move(block);
        return textOf(m_wideBlock);
    });
}

const char* Exception::getCharErrorMessageBlock(const char* separator) const noexcept {
    BaseString<char> block;
    try {
        BaseString<char> message;
        for (const StackEntry& entry : m_stack) {
            if (&entry != &m_stack.front()) {
                block += separator;
            }
            convertToUtf8(entry.message, message);
            block += message;
        }
    } catch (...) {
        // Without memory the block has only the messages appended so far.
    }
    m_charBlock = std::move(block);
    return m_charBlock.view().data();
}

void Exception::dumpStack(std::vector<std::wstring>& messages, std::vector<std::wstring>& locations, bool clearAfter) {
    detail::runRethrowing(L"Exception", L"dumpStack", [&] {
        std::vector<std::wstring> copiedMessages;
        std::vector<std::wstring> copiedLocations;
        try {
            for (const StackEntry& entry : m_stack) {
                copiedMessages.emplace_back(entry.message.view());
                copiedLocations.emplace_back(entry.location.view());
            }
        } catch (const std::bad_alloc&) {
            detail::throwMemory(getMessageTotal(), sizeof(std::wstring));
        }
        messages.swap(copiedMessages);
        locations.swap(copiedLocations);
    });
    if (clearAfter) {
        CleanAll();
    }
}

void Exception::mirrorAllMessages() const noexcept {
    for (const StackEntry& entry : m_stack) {
        MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, "Vorel Error: ", textOf(entry.message), true);
    }
}

}  // namespace vorel

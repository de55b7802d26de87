/// \file
/// The message stack of an exception: adds, reads, logs and removes messages. Adding never throws, because an exception
/// may be created directly after a failed allocation. If memory runs out, the exception has less text.

#include <new>
#include <utility>

#include <windows.h>

#include "algorithms/Utf8Streams.h"
#include "core/Format.h"
#include "core/StringAccess.h"
#include "exceptions/LocaleText.h"
#include "platform/SystemMessage.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

namespace {

using baseutil::MessageText;
using detail::StringAccess;

const wchar_t* orUnformattable(const wchar_t* text) noexcept {
    return text ? text : baseutil::kUnformattable;
}

/// Adds an empty entry and returns its message. Returns `spare` if the entry cannot be allocated.
template <class Stack>
BaseString<wchar_t>& push(Stack& stack, BaseString<wchar_t>& spare) noexcept {
    return stack.resize(stack.size() + 1) ? stack[stack.size() - 1].message : spare;
}

/// Appends an entry with `text`. If memory runs out, the entry has no text or is missing.
template <class Stack>
void push(Stack& stack, const wchar_t* text) noexcept {
    if (stack.resize(stack.size() + 1)) {
        StringAccess<wchar_t>::tryAssign(stack[stack.size() - 1].message, text);
    }
}

const wchar_t* textOf(const BaseString<wchar_t>& string) noexcept {
    return string.view().data();
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

void Exception::SetMessageOnStack(const wchar_t* fmt, va_list args) noexcept {
    const MessageText<wchar_t> message(fmt, args);
    const wchar_t* const text = orUnformattable(message.text());
    push(m_stack, text);
    if (!m_delayedLogging) {
        MirrorErrorMessage(ErrorLogLocation, CurrentLogSize,
                           message.truncated() ? "Vorel Error Truncated: " : "Vorel Error: ", text, true);
    }
}

void Exception::SetMessageOnStack(const char* fmt, va_list args) noexcept {
    const MessageText<char> message(fmt, args);
    BaseString<wchar_t> spare;
    BaseString<wchar_t>& stored = push(m_stack, spare);
    const wchar_t* text = baseutil::kUnformattable;
    if (message.text()) {
        detail::mbs2wcs(message.text(), stored);  // directly into the entry
        text = textOf(stored);
    } else {
        StringAccess<wchar_t>::tryAssign(stored, text);
    }
    if (!m_delayedLogging) {
        MirrorErrorMessage(ErrorLogLocation, CurrentLogSize,
                           message.truncated() ? "Vorel Error Truncated: " : "Vorel Error: ", text, true);
    }
}

void Exception::UpdateMessageOnStack(unsigned int index, const wchar_t* fmt, va_list args) noexcept {
    if (index < m_stack.size()) {
        const MessageText<wchar_t> message(fmt, args);
        StringAccess<wchar_t>::tryAssign(m_stack[index].message, orUnformattable(message.text()));
    }
}

void Exception::appendMessage(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

void Exception::appendMessage(const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

void Exception::setErrorMessage(unsigned int index, const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    UpdateMessageOnStack(index, fmt, args);
    va_end(args);
}

void Exception::setLocation(unsigned int index, const wchar_t* location) noexcept {
    if (index < m_stack.size()) {
        StringAccess<wchar_t>::tryAssign(m_stack[index].location, location);
    }
}

void Exception::defineLocation(const wchar_t* location) noexcept {
    setLocation(getMessageTotal() - 1, location);
}

void Exception::defineLocation(const char* location) noexcept {
    BaseString<wchar_t> converted;
    detail::mbs2wcs(location, converted);
    defineLocation(converted.c_str());
}

void Exception::addHRESULTErrorToStack(int hr) noexcept {
    static constexpr char kPrefix[] = "AddHRESULTErrorToStack: ";
    const auto mirror = [](const char* prefix, const wchar_t* message) {
        MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, prefix, message, true);
    };
    if (hr != 0 && hr != static_cast<int>(E_FAIL)) {
        const platform::SystemMessage system(hr);
        if (system.text()) {
            MessageText<wchar_t> message;
            message.renderf(L"HRESULT: %X - %ls", static_cast<unsigned int>(hr), system.text());
            push(m_stack, orUnformattable(message.text()));
            if (!m_delayedLogging) {
                mirror(message.truncated() ? "AddHRESULTErrorToStack Truncated: " : kPrefix,
                       orUnformattable(message.text()));
            }
        } else {
            mirror(kPrefix, L"HR not found");  // even if logging is delayed
        }
    }
    if (!m_delayedLogging) {
        mirror(kPrefix, L"");
    }
}

const wchar_t* Exception::what() const noexcept {
    return m_stack.size() == 0 ? nullptr : textOf(m_stack[0].message);
}

const wchar_t* Exception::getErrorMessage(unsigned int index) const noexcept {
    return index < m_stack.size() ? textOf(m_stack[index].message) : L"";
}

unsigned int Exception::getMessageTotal() const noexcept {
    return static_cast<unsigned int>(m_stack.size());
}

// The separator may point into the block that an earlier call returned. So this block is replaced only at the end.
const wchar_t* Exception::getErrorMessageBlock(const wchar_t* separator) const {
    return detail::runRethrowing(L"Exception", L"getErrorMessageBlock", [&] {
        BaseString<wchar_t> block;
        for (const StackEntry& entry : m_stack) {
            if (&entry != m_stack.begin()) {
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
            if (&entry != m_stack.begin()) {
                block += separator;
            }
            convertToUtf8(entry.message, message);
            block += message;
        }
    } catch (...) {
        // If memory runs out, the block has only the messages and separators appended so far.
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

void Exception::CleanAll() noexcept {
    m_stack.resize(0);
}

void Exception::clear() noexcept {
    CleanAll();
}

void Exception::mirrorAllMessages() const noexcept {
    for (const StackEntry& entry : m_stack) {
        MirrorErrorMessage(ErrorLogLocation, CurrentLogSize, "Vorel Error: ", entry.message.view().data(), true);
    }
}

}  // namespace vorel

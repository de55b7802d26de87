#include "flat/LastError.h"

#include <windows.h>

#include <algorithm>
#include <new>

#include "algorithms/Utf16.h"
#include "flat/Output.h"
#include "flat/Utf8Units.h"
#include "vorel/flat/LastError.h"

namespace vorel::flat {

namespace {

/// The last failure of a thread whose own `Failure` cannot be allocated. All threads share this object, and none writes
/// to it.
constinit Failure s_withoutMemory = [] {
    constexpr std::wstring_view kNoMemory = L"No more memory is available";
    Failure failure;
    failure.status = VOREL_ERROR_OUT_OF_MEMORY;
    failure.length = kNoMemory.size();
    std::copy(kNoMemory.begin(), kNoMemory.end(), failure.text);
    return failure;
}();

void CALLBACK release(void* failure) {
    if (failure && failure != &s_withoutMemory) {
        HeapFree(GetProcessHeap(), 0, failure);
    }
}

/// The longest prefix of `message` that fits into a `Failure` and does not split a surrogate pair.
std::wstring_view truncated(std::wstring_view message) noexcept {
    if (message.size() <= Failure::kMaxUnits) {
        return message;
    }
    message = message.substr(0, Failure::kMaxUnits);
    if (algorithms::isHighSurrogate(message.back())) {
        message.remove_suffix(1);
    }
    return message;
}

const Failure* lastFailure() noexcept {
    const LastErrors* const errors = lastErrors.get();
    return errors ? errors->last() : nullptr;
}

std::wstring_view lastMessage() noexcept {
    const Failure* const failure = lastFailure();
    return failure ? failure->message() : std::wstring_view();
}

/// Copies a message to the caller's buffer. Does not record a failure of the copy, because that record would replace
/// the failure that the caller asks for.
template <class Unit, class Source>
vorel_status copyToOutput(std::basic_string_view<Source> message, Unit* output, std::size_t capacity,
                          std::size_t* length) noexcept {
    return isOutput(output, capacity, length)
               ? copyUnits<Terminator::Zero>(std::span(message.data(), message.size()), output, capacity, length)
               : VOREL_ERROR_INVALID_ARGUMENT;
}

}  // namespace

LastErrors::LastErrors() noexcept : m_slot(FlsAlloc(&release)) {}

LastErrors::~LastErrors() {
    if (m_slot != FLS_OUT_OF_INDEXES) {
        FlsFree(m_slot);
    }
}

const Failure* LastErrors::last() const noexcept {
    return m_slot != FLS_OUT_OF_INDEXES ? static_cast<const Failure*>(FlsGetValue(m_slot)) : nullptr;
}

void LastErrors::remember(vorel_status status, std::wstring_view message) const noexcept {
    if (m_slot == FLS_OUT_OF_INDEXES) {
        return;
    }
    auto* failure = static_cast<Failure*>(FlsGetValue(m_slot));
    if (!failure || failure == &s_withoutMemory) {
        void* const block = HeapAlloc(GetProcessHeap(), 0, sizeof(Failure));
        failure = block ? new (block) Failure : &s_withoutMemory;
        if (!FlsSetValue(m_slot, failure)) {
            release(failure);
            return;
        }
        if (!block) {
            return;
        }
    }
    const std::wstring_view kept = truncated(message);
    std::copy(kept.begin(), kept.end(), failure->text);
    failure->length = kept.size();
    failure->status = status;
}

vorel_status fail(vorel_status status, std::wstring_view message) noexcept {
    if (const LastErrors* const errors = lastErrors.get()) {
        errors->remember(status, message);
    }
    return status;
}

}  // namespace vorel::flat

using vorel::flat::Failure;

vorel_status vorel_last_error_status(void) {
    const Failure* const failure = vorel::flat::lastFailure();
    return failure ? failure->status : VOREL_OK;
}

vorel_status vorel_last_error_message(vorel_char16* message, size_t capacity, size_t* length) {
    return vorel::flat::copyToOutput(vorel::flat::lastMessage(), message, capacity, length);
}

vorel_status vorel_last_error_message_utf8(char* message, size_t capacity, size_t* length) {
    const std::wstring_view units = vorel::flat::lastMessage();
    char bytes[vorel::flat::utf8Capacity(Failure::kMaxUnits)];
    // The encoder may read one unit past the end, so the text is copied and terminated.
    wchar_t terminated[Failure::kMaxUnits + 1];
    *std::copy(units.begin(), units.end(), terminated) = 0;
    const std::size_t size = vorel::flat::toUtf8({terminated, units.size()}, bytes);
    return vorel::flat::copyToOutput(std::string_view(bytes, size), message, capacity, length);
}

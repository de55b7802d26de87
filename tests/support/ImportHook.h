/// \file
/// A function object in the place of a function that this program imports: it sees every call that the library's
/// static form makes, and decides what becomes of it.
///
///     extern "C" decltype(&::Sleep) importedSleep __asm__("__imp_Sleep");
///     std::vector<DWORD> sleeps;
///     const test::ImportHook<importedSleep> hook([&](DWORD ms) { sleeps.push_back(ms); });
///
/// One hook for an import at a time. The calls come from one thread.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

#include <windows.h>

#include "support/ImportPatch.h"

namespace test {

template <auto& Slot>
class ImportHook;

template <class Result, class... Arguments, Result (*&Slot)(Arguments...)>
class ImportHook<Slot> {
public:
    using Body = std::function<Result(Arguments...)>;

    explicit ImportHook(Body body) : m_patch(Slot, &ImportHook::call) {
        if (m_patch.original() == &ImportHook::call) {
            throw std::logic_error("the import is hooked already");
        }
        s_body = std::move(body);
    }
    ~ImportHook() { s_body = nullptr; }

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    /// Calls the function itself.
    // NOLINTNEXTLINE(modernize-use-nodiscard): not every function has a result
    Result original(Arguments... arguments) const { return m_patch.original()(arguments...); }

private:
    static Result WINAPI call(Arguments... arguments) { return s_body(arguments...); }

    static inline Body s_body;
    ImportPatch<Result(Arguments...)> m_patch;
};

/// What a refused call leaves as the last error: a code that nothing else in a test gives.
inline constexpr DWORD kRefusal = ERROR_DISK_FULL;

template <class Function>
struct Refusal;

template <class Result, class... Arguments>
struct Refusal<Result(Arguments...)> {
    static Result WINAPI call(Arguments...) {
        SetLastError(kRefusal);
        return Result{};
    }
};

/// Lets every call of an import fail, until the result is gone: null or false, with `kRefusal`.
template <class Function>
[[nodiscard]] std::shared_ptr<void> refuse(Function*& slot) {
    return std::make_shared<ImportPatch<Function>>(slot, &Refusal<Function>::call);
}

}  // namespace test

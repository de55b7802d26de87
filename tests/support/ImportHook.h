/// \file
/// Replaces a function that this program imports by a function object. It receives every call of the static library and
/// decides the result.
///
///     extern "C" decltype(&::Sleep) importedSleep __asm__("__imp_Sleep");
///     std::vector<DWORD> sleeps;
///     const test::ImportHook<importedSleep> hook([&](DWORD ms) { sleeps.push_back(ms); });
///
/// Only one hook may exist for an import at a time, and only one thread may call it.
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
            throw std::logic_error("the import is already hooked");
        }
        s_body = std::move(body);
    }
    ~ImportHook() { s_body = nullptr; }

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    /// Calls the original function.
    // NOLINTNEXTLINE(modernize-use-nodiscard): not every function has a result
    Result original(Arguments... arguments) const { return m_patch.original()(arguments...); }

private:
    static Result WINAPI call(Arguments... arguments) { return s_body(arguments...); }

    static inline Body s_body;
    ImportPatch<Result(Arguments...)> m_patch;
};

/// The last error after a call that fails on purpose. Nothing else in a test sets this code.
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

/// Makes every call of an import return null or false and set `kRefusal`, until the result is destroyed.
template <class Function>
[[nodiscard]] std::shared_ptr<void> refuse(Function*& slot) {
    return std::make_shared<ImportPatch<Function>>(slot, &Refusal<Function>::call);
}

}  // namespace test

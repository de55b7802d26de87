/// \file
/// The owner of a handle of the system: closes it at its end, on whatever path that comes. It stands below everything
/// that opens kernel objects, and the public classes hold one.
#pragma once

#include <utility>

#include "vorel/Export.h"

namespace vorel::detail {

class KernelHandle {
public:
    KernelHandle() noexcept = default;

    /// Takes over `handle`; null owns nothing.
    explicit KernelHandle(void* handle) noexcept : m_handle(handle) {}

    KernelHandle(const KernelHandle&) = delete;
    KernelHandle& operator=(const KernelHandle&) = delete;
    KernelHandle(KernelHandle&& other) noexcept : m_handle(other.release()) {}
    KernelHandle& operator=(KernelHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~KernelHandle() { close(); }

    [[nodiscard]] void* get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != nullptr; }

    /// Gives the handle away, without closing it.
    [[nodiscard]] void* release() noexcept { return std::exchange(m_handle, nullptr); }

    /// Closes the handle, if there is one, and owns nothing from then on. False when the system refuses, which is the
    /// only case in which the thread's last error changes. Not `noexcept`: a tool that replaces the system's call may
    /// throw, and the destructors of the locks report that instead of ending the process.
    VOREL_API bool close();

private:
    void* m_handle = nullptr;
};

}  // namespace vorel::detail

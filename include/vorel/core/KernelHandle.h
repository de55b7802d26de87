/// \file
/// The owner of a kernel handle: its destructor closes the handle. This header is public because public classes have
/// members of this type.
#pragma once

#include <utility>

#include "vorel/Export.h"

namespace vorel::detail {

class KernelHandle {
public:
    KernelHandle() noexcept = default;

    /// Takes over `handle`. If `handle` is null, the object owns nothing.
    explicit KernelHandle(void* handle) noexcept : m_handle(handle) {}

    KernelHandle(const KernelHandle&) = delete;
    KernelHandle& operator=(const KernelHandle&) = delete;
    KernelHandle(KernelHandle&& other) noexcept : m_handle(other.release()) {}

    /// Exchanges the handles. The destructor of `other` then closes the handle that this object owned.
    KernelHandle& operator=(KernelHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~KernelHandle() { close(); }

    [[nodiscard]] void* get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != nullptr; }

    /// Returns the handle without closing it; the object owns nothing afterwards.
    [[nodiscard]] void* release() noexcept { return std::exchange(m_handle, nullptr); }

    /// Closes the handle, if there is one; the object owns nothing afterwards. Returns false if the system cannot close
    /// it; only then does the thread's last error change. Not `noexcept`, because a tool that replaces the system call
    /// may throw. The destructors of the locks report such an exception instead of ending the process.
    VOREL_API bool close();

private:
    void* m_handle = nullptr;
};

}  // namespace vorel::detail

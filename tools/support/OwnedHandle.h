/// \file
/// A handle of the system that is closed at the end of its owner.
#pragma once

#include <utility>

#include <windows.h>

namespace tools {

class OwnedHandle {
public:
    OwnedHandle() noexcept = default;

    /// Takes over `handle`; INVALID_HANDLE_VALUE and null own nothing.
    explicit OwnedHandle(HANDLE handle) noexcept : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}

    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    OwnedHandle(OwnedHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    OwnedHandle& operator=(OwnedHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~OwnedHandle() { close(); }

    [[nodiscard]] HANDLE get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != nullptr; }

    /// Owns nothing from then on. False when the system reports a failure, with the thread's last error.
    bool close() noexcept { return !m_handle || CloseHandle(std::exchange(m_handle, nullptr)); }

private:
    HANDLE m_handle = nullptr;
};

}  // namespace tools

/// \file
/// Owns a handle of the system. The destructor closes the handle.
#pragma once

#include <utility>

#include <windows.h>

namespace tools {

class OwnedHandle {
public:
    OwnedHandle() noexcept = default;

    /// Takes ownership of `handle`. INVALID_HANDLE_VALUE and null mean that nothing is owned.
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

    /// Closes the handle, if there is one. Returns false if the system reports a failure. The last error of the thread
    /// is then the code of the failure. In both cases, the object owns nothing afterwards.
    bool close() noexcept { return !m_handle || CloseHandle(std::exchange(m_handle, nullptr)); }

private:
    HANDLE m_handle = nullptr;
};

}  // namespace tools

/// \file
/// Owns a handle of the system and closes it on destruction.
#pragma once

#include <utility>

#include <windows.h>

namespace test {

class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Handle() { close(); }

    [[nodiscard]] HANDLE get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }

    void close() {
        if (m_handle) {
            CloseHandle(std::exchange(m_handle, nullptr));
        }
    }

private:
    HANDLE m_handle = nullptr;
};

}  // namespace test

#pragma once

#include <windows.h>

#include <utility>

namespace lumiset::platform {

/// An open handle that is closed with the object. Null and INVALID_HANDLE_VALUE both stand for none.
class Handle {
public:
    explicit Handle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        close();
        m_handle = std::exchange(other.m_handle, nullptr);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }

    explicit operator bool() const { return m_handle != nullptr; }
    [[nodiscard]] HANDLE get() const { return m_handle; }
    void close() {
        if (m_handle != nullptr) {
            CloseHandle(m_handle);
            m_handle = nullptr;
        }
    }

private:
    HANDLE m_handle;
};

}  // namespace lumiset::platform

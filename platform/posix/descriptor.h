#pragma once

#include <unistd.h>

#include <utility>

namespace lumiset::platform {

/// An open file that is closed with the object.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        close();
        m_number = std::exchange(other.m_number, -1);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    explicit operator bool() const { return m_number >= 0; }
    [[nodiscard]] int get() const { return m_number; }
    /// False when what was written did not arrive.
    bool close() {
        const int number = m_number;
        m_number = -1;
        return number < 0 || ::close(number) == 0;
    }

private:
    int m_number;
};

}  // namespace lumiset::platform

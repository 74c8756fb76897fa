#pragma once

#include <cstddef>
#include <cstdint>

namespace lumiset::platform {

/// Zeroed memory between two pages that nobody may touch: a read or write beyond it ends the process.
class GuardedMemory {
public:
    /// The bytes end right before the page behind them, or begin right behind the page before them. Throws
    /// `std::bad_alloc`.
    GuardedMemory(std::size_t bytes, bool atEnd);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    [[nodiscard]] std::uint8_t* data() const { return m_data; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    /// From now on a write ends the process, or no longer.
    void setReadOnly(bool readOnly);

private:
    std::uint8_t* m_pages = nullptr;  ///< the usable ones, a guard on either side
    std::size_t m_pageBytes = 0;
    std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
};

}  // namespace lumiset::platform

#pragma once

#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

/// A block of scratch memory, handed out in pieces that start at multiples of 64 bytes. Declare the pieces with
/// `add`, then `allocate`, then `take` them in the same order.
class ScratchBlock {
public:
    explicit ScratchBlock(MemoryAllocator& allocator) : m_allocator(allocator) {}
    ~ScratchBlock() { m_allocator.FreeBytes(m_block); }
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    template <class T>
    void add(std::int64_t count) {
        m_size += roundUp(count * static_cast<std::int64_t>(sizeof(T)));
    }
    [[nodiscard]] bool allocate() {
        return m_size <= INT32_MAX - kAlignment &&
               m_allocator.AllocBytes(&m_block, static_cast<std::uint32_t>(m_size + kAlignment));
    }
    /// What `MemoryAllocator::Reserve` needs for a block of one piece.
    static std::int64_t reserveFor(std::int64_t bytes) {
        return MemoryAllocator::ReserveForBytes(roundUp(bytes) + kAlignment);
    }
    template <class T>
    [[nodiscard]] T* take(std::int64_t count) {
        const auto start = reinterpret_cast<std::uintptr_t>(m_block);
        const auto skip = (kAlignment - static_cast<std::int64_t>(start % kAlignment)) % kAlignment;
        auto* piece = reinterpret_cast<T*>(static_cast<std::uint8_t*>(m_block) + skip + m_taken);
        m_taken += roundUp(count * static_cast<std::int64_t>(sizeof(T)));
        return piece;
    }

private:
    static constexpr std::int64_t kAlignment = 64;
    static constexpr std::int64_t roundUp(std::int64_t bytes) {
        return (bytes + kAlignment - 1) / kAlignment * kAlignment;
    }

    MemoryAllocator& m_allocator;
    void* m_block = nullptr;
    std::int64_t m_size = 0;
    std::int64_t m_taken = 0;
};

}  // namespace lumiset

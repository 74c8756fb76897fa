#pragma once

#include <cstdint>

#include "host/host_interfaces.h"

namespace lumiset {

/// What one render call gets from its host: scratch memory, from the host where it offers `IHostAllocator`, else from
/// the module's aligned heap; and threads, where it offers `IHostParallel`. Made on the stack at the top of a call;
/// blocks must not outlive it.
class MemoryAllocator {
public:
    static constexpr std::int32_t kAlignment = 32;

    /// Without a host: the module's own heap.
    MemoryAllocator() = default;
    /// Asks `host` (may be null) for its interfaces and holds them until destruction.
    explicit MemoryAllocator(IEffectHost* host) noexcept;
    ~MemoryAllocator();
    MemoryAllocator(const MemoryAllocator&) = delete;
    MemoryAllocator& operator=(const MemoryAllocator&) = delete;

    /// Stores a block of `size` bytes aligned to 32 bytes; false (and null) when there is none.
    [[nodiscard]] bool AllocBytes(void** out, std::uint32_t size) noexcept;
    void FreeBytes(void* block) noexcept;

    /// Stores a block for `height` rows of `width` pixels and its bytes from row to row. The module's own
    /// blocks take 1, 2, 3, 4 or 16 bytes a pixel and have rows of a multiple of 32 bytes. The contents are
    /// undefined. False (and null) for a null pointer, a size below 1, or when there is no memory.
    [[nodiscard]] bool AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel,
                                  std::int32_t* strideOut) noexcept;
    void FreeImage(void* block) noexcept;

    /// Has memory for `size` bytes of later blocks now, so that a renderer which writes into its destination early
    /// cannot fail half way. Blocks are taken from it one behind the other; what it does not hold is asked for as
    /// without it. At most once. False when there is no memory.
    [[nodiscard]] bool Reserve(std::int64_t size) noexcept;
    /// What `Reserve` needs for a block of bytes, and for an image.
    static std::int64_t ReserveForBytes(std::int64_t size);
    static std::int64_t ReserveForImage(std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel);

    /// The host's threads, null without; for `runTasks` (bands.h).
    [[nodiscard]] IHostParallel* Threads() const { return m_threads; }
    /// How many these are; 1 without.
    [[nodiscard]] std::uint32_t ThreadCount() const { return m_threadCount; }

private:
    /// Bytes in use, and where the last block of them begins. A block that is freed before a later one is held until
    /// the end of the call.
    struct ReserveUse {
        std::int64_t used;
        std::int64_t last;
    };

    [[nodiscard]] void* takeReserved(std::int64_t size) noexcept;
    [[nodiscard]] bool giveBackReserved(void* block) noexcept;

    IHostAllocator* m_host = nullptr;
    IHostParallel* m_threads = nullptr;
    std::uint32_t m_threadCount = 1;
    std::uint8_t* m_reserve = nullptr;
    std::int64_t m_reserveSize = 0;
    ReserveUse m_reserveUse{0, 0};
};

}  // namespace lumiset

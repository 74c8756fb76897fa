#pragma once

#include <cstdint>

#include "host/host_interfaces.h"

namespace lumiset {

/// Scratch memory of one render call: from the host where it offers `IHostAllocator`, else from the module's
/// aligned heap. Made on the stack at the top of a call; blocks must not outlive it.
class MemoryAllocator {
public:
    static constexpr std::int32_t kAlignment = 32;

    /// Without a host: the module's own heap.
    MemoryAllocator() = default;
    /// Asks `host` (may be null) for `IHostAllocator` and holds it until destruction.
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

private:
    IHostAllocator* m_host = nullptr;
};

}  // namespace lumiset

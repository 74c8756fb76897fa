#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <vector>

#include "host/host_interfaces.h"
#include "host/reference_count.h"
#include "hostkit/com_ptr.h"

namespace lumiset::hostkit {

/// Scratch memory for the module that keeps freed blocks for the next frame: frames of one size ask for the
/// same blocks again and again, and fresh pages from the system cost more than many an effect. Blocks are
/// aligned to 64 bytes. Any number of threads may use it at once.
class PoolAllocator final : public Counted<IHostAllocator> {
public:
    /// Keeps at most `keptBytes` of freed blocks.
    static ComPtr<IHostAllocator> create(std::size_t keptBytes = std::size_t{1} << 30);

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    void LUMISET_CALL AllocBytes(void** out, std::uint32_t size) noexcept override;
    void LUMISET_CALL FreeBytes(void* block) noexcept override;
    std::uint8_t LUMISET_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                         std::int32_t bytesPerPixel, std::int32_t* strideOut) noexcept override;
    void LUMISET_CALL FreeImage(void* block) noexcept override;

private:
    explicit PoolAllocator(std::size_t keptBytes) : m_limit(keptBytes) {}
    ~PoolAllocator();
    void lastReleased() noexcept override { delete this; }
    [[nodiscard]] void* take(std::size_t size) noexcept;
    void giveBack(void* block) noexcept;

    std::mutex m_mutex;
    std::map<std::size_t, std::vector<void*>> m_free;  // by size
    std::size_t m_kept = 0;
    std::size_t m_limit;
};

}  // namespace lumiset::hostkit

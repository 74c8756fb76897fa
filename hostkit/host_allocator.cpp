#include "hostkit/host_allocator.h"

#include <new>

namespace lumiset::hostkit {
namespace {

constexpr std::size_t kAlignment = 64;

/// Stands in the 64 bytes before each block.
struct Header {
    std::size_t size;
};
static_assert(sizeof(Header) <= kAlignment);

std::uint8_t* startOf(void* block) {
    return static_cast<std::uint8_t*>(block) - kAlignment;
}

void release(void* block) {
    ::operator delete (startOf(block), std::align_val_t{kAlignment});
}

}  // namespace

ComPtr<IHostAllocator> PoolAllocator::create(std::size_t keptBytes) {
    return ComPtr<IHostAllocator>::adopt(new PoolAllocator(keptBytes));
}

PoolAllocator::~PoolAllocator() {
    for (const auto& [size, blocks] : m_free) {
        for (void* block : blocks) {
            release(block);
        }
    }
}

Result PoolAllocator::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IHostAllocator>(this, iid, out, kResultFail);
}

void PoolAllocator::AllocBytes(void** out, std::uint32_t size) noexcept {
    if (out != nullptr) {
        *out = take(size);
    }
}

void PoolAllocator::FreeBytes(void* block) noexcept {
    giveBack(block);
}

std::uint8_t PoolAllocator::AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel,
                                       std::int32_t* strideOut) noexcept {
    if (out == nullptr || strideOut == nullptr) {
        return 0;
    }
    *out = nullptr;
    if (width < 1 || height < 1 || bytesPerPixel < 1 || bytesPerPixel > 16) {
        return 0;
    }
    const std::int64_t stride = (std::int64_t{width} * bytesPerPixel + 63) / 64 * 64;
    if (stride > INT32_MAX || stride * height > PTRDIFF_MAX / 2) {
        return 0;
    }
    *out = take(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
    *strideOut = static_cast<std::int32_t>(stride);
    return *out != nullptr ? 1 : 0;
}

void PoolAllocator::FreeImage(void* block) noexcept {
    giveBack(block);
}

void* PoolAllocator::take(std::size_t size) noexcept {
    {
        const std::lock_guard lock(m_mutex);
        const auto blocks = m_free.find(size);
        if (blocks != m_free.end() && !blocks->second.empty()) {
            void* block = blocks->second.back();
            blocks->second.pop_back();
            m_kept -= size;
            return block;
        }
    }
    void* start = ::operator new (kAlignment + size, std::align_val_t{kAlignment}, std::nothrow);
    if (start == nullptr) {
        return nullptr;
    }
    new (start) Header{size};
    return static_cast<std::uint8_t*>(start) + kAlignment;
}

void PoolAllocator::giveBack(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    const std::size_t size = reinterpret_cast<const Header*>(startOf(block))->size;
    try {
        const std::lock_guard lock(m_mutex);
        if (m_kept + size <= m_limit) {
            m_free[size].push_back(block);
            m_kept += size;
            return;
        }
    } catch (const std::bad_alloc&) {
        // No room to remember the block: it goes back to the system.
    }
    release(block);
}

}  // namespace lumiset::hostkit

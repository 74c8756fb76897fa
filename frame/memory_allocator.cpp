#include "frame/memory_allocator.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace lumiset {
namespace {

void* allocateAligned(std::size_t size) {
    return ::operator new (size, std::align_val_t{MemoryAllocator::kAlignment}, std::nothrow);
}

void freeAligned(void* block) {
    ::operator delete (block, std::align_val_t{MemoryAllocator::kAlignment});
}

bool isAcceptedPixelSize(std::int32_t bytesPerPixel) {
    return (bytesPerPixel >= 1 && bytesPerPixel <= 4) || bytesPerPixel == 16;
}

}  // namespace

MemoryAllocator::MemoryAllocator(IEffectHost* host) noexcept {
    void* found = nullptr;
    if (host != nullptr && host->QueryInterface(IHostAllocator::kId, &found) == kResultOk) {
        m_host = static_cast<IHostAllocator*>(found);
    }
}

MemoryAllocator::~MemoryAllocator() {
    if (m_host != nullptr) {
        m_host->Release();
    }
}

bool MemoryAllocator::AllocBytes(void** out, std::uint32_t size) noexcept {
    if (out == nullptr) {
        return false;
    }
    *out = nullptr;
    if (m_host != nullptr) {
        m_host->AllocBytes(out, size);
    } else {
        *out = allocateAligned(size);
    }
    return *out != nullptr;
}

void MemoryAllocator::FreeBytes(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    if (m_host != nullptr) {
        m_host->FreeBytes(block);
    } else {
        freeAligned(block);
    }
}

bool MemoryAllocator::AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel,
                                 std::int32_t* strideOut) noexcept {
    if (out == nullptr || strideOut == nullptr || width <= 0 || height <= 0 || bytesPerPixel <= 0) {
        return false;
    }
    *out = nullptr;
    *strideOut = 0;
    if (m_host != nullptr) {
        if (m_host->AllocImage(out, width, height, bytesPerPixel, strideOut) == 0) {
            *out = nullptr;
        }
        return *out != nullptr;
    }
    if (!isAcceptedPixelSize(bytesPerPixel)) {
        return false;
    }
    const std::int64_t row = std::int64_t{width} * bytesPerPixel;
    const std::int64_t stride = (row + kAlignment - 1) / kAlignment * kAlignment;
    if (stride > std::numeric_limits<std::int32_t>::max() ||
        stride * height > std::numeric_limits<std::ptrdiff_t>::max()) {
        return false;
    }
    *out = allocateAligned(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
    if (*out == nullptr) {
        return false;
    }
    *strideOut = static_cast<std::int32_t>(stride);
    return true;
}

void MemoryAllocator::FreeImage(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    if (m_host != nullptr) {
        m_host->FreeImage(block);
    } else {
        freeAligned(block);
    }
}

}  // namespace lumiset

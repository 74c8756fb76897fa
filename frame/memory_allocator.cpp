#include "frame/memory_allocator.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <utility>

namespace lumiset {
namespace {

void* allocateAligned(std::size_t size) {
    return ::operator new (size, std::align_val_t{MemoryAllocator::kAlignment}, std::nothrow);
}

void freeAligned(void* block) {
    ::operator delete (block, std::align_val_t{MemoryAllocator::kAlignment});
}

constexpr std::int64_t roundUp(std::int64_t bytes) {
    return (bytes + MemoryAllocator::kAlignment - 1) / MemoryAllocator::kAlignment * MemoryAllocator::kAlignment;
}

/// In front of every block of the reserve, with the use of the reserve before it; keeps the blocks aligned.
constexpr std::int64_t kBlockHeader = MemoryAllocator::kAlignment;

template <class Interface>
Interface* queryHost(IEffectHost* host) {
    void* found = nullptr;
    return host != nullptr && host->QueryInterface(Interface::kId, &found) == kResultOk ? static_cast<Interface*>(found)
                                                                                        : nullptr;
}

bool isAcceptedPixelSize(std::int32_t bytesPerPixel) {
    return (bytesPerPixel >= 1 && bytesPerPixel <= 4) || bytesPerPixel == 16;
}

}  // namespace

MemoryAllocator::MemoryAllocator(IEffectHost* host) noexcept
    : m_host(queryHost<IHostAllocator>(host)), m_threads(queryHost<IHostParallel>(host)) {
    if (m_threads == nullptr) {
        return;
    }
    m_threadCount = std::max(m_threads->GetThreadCount(), 1U);
    if (m_threadCount == 1) {
        m_threads->Release();
        m_threads = nullptr;
    }
}

MemoryAllocator::~MemoryAllocator() {
    if (m_reserve != nullptr) {
        void* reserve = std::exchange(m_reserve, nullptr);
        FreeImage(reserve);
    }
    if (m_threads != nullptr) {
        m_threads->Release();
    }
    if (m_host != nullptr) {
        m_host->Release();
    }
}

bool MemoryAllocator::Reserve(std::int64_t size) noexcept {
    constexpr std::int64_t kRow = 64 * 1024;  // as an image it may be larger than a block
    void* block = nullptr;
    std::int32_t stride = 0;
    const std::int64_t rows = size / kRow + 1;
    if (rows > std::numeric_limits<std::int32_t>::max() ||
        !AllocImage(&block, kRow, static_cast<std::int32_t>(rows), 1, &stride)) {
        return false;
    }
    m_reserve = static_cast<std::uint8_t*>(block);
    m_reserveSize = std::int64_t{stride} * rows;
    return true;
}

std::int64_t MemoryAllocator::ReserveForBytes(std::int64_t size) {
    return kBlockHeader + roundUp(size);
}

std::int64_t MemoryAllocator::ReserveForImage(std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel) {
    return ReserveForBytes(roundUp(std::int64_t{width} * bytesPerPixel) * height);
}

void* MemoryAllocator::takeReserved(std::int64_t size) noexcept {
    const std::int64_t needed = ReserveForBytes(size);
    if (m_reserve == nullptr || needed > m_reserveSize - m_reserveUse.used) {
        return nullptr;
    }
    std::uint8_t* start = m_reserve + m_reserveUse.used;
    std::memcpy(start, &m_reserveUse, sizeof m_reserveUse);
    m_reserveUse = {m_reserveUse.used + needed, m_reserveUse.used};
    return start + kBlockHeader;
}

bool MemoryAllocator::giveBackReserved(void* block) noexcept {
    const std::less<const void*> before;
    if (m_reserve == nullptr || before(block, m_reserve) || !before(block, m_reserve + m_reserveSize)) {
        return false;
    }
    std::uint8_t* start = static_cast<std::uint8_t*>(block) - kBlockHeader;
    if (start == m_reserve + m_reserveUse.last) {
        std::memcpy(&m_reserveUse, start, sizeof m_reserveUse);
    }
    return true;
}

bool MemoryAllocator::AllocBytes(void** out, std::uint32_t size) noexcept {
    if (out == nullptr) {
        return false;
    }
    *out = takeReserved(size);
    if (*out != nullptr) {
        return true;
    }
    if (m_host != nullptr) {
        m_host->AllocBytes(out, size);
    } else {
        *out = allocateAligned(size);
    }
    return *out != nullptr;
}

void MemoryAllocator::FreeBytes(void* block) noexcept {
    if (block == nullptr || giveBackReserved(block)) {
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
    const std::int64_t stride = roundUp(std::int64_t{width} * bytesPerPixel);
    if (stride <= std::numeric_limits<std::int32_t>::max() / height) {
        *out = takeReserved(stride * height);
    }
    if (*out != nullptr) {
        *strideOut = static_cast<std::int32_t>(stride);
        return true;
    }
    if (m_host != nullptr) {
        if (m_host->AllocImage(out, width, height, bytesPerPixel, strideOut) == 0) {
            *out = nullptr;
        }
        return *out != nullptr;
    }
    if (!isAcceptedPixelSize(bytesPerPixel)) {
        return false;
    }
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
    if (block == nullptr || giveBackReserved(block)) {
        return;
    }
    if (m_host != nullptr) {
        m_host->FreeImage(block);
    } else {
        freeAligned(block);
    }
}

}  // namespace lumiset

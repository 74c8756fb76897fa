#include "frame/primitives/memory.h"

#include <limits>

#include "frame/memory_allocator.h"

namespace lumiset {
namespace {

template <class T>
T* allocRows(std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel, std::int32_t* strideOut) {
    if (strideOut == nullptr) {
        return nullptr;
    }
    *strideOut = 0;
    void* block = nullptr;
    return MemoryAllocator().AllocImage(&block, width, height, bytesPerPixel, strideOut) ? static_cast<T*>(block)
                                                                                         : nullptr;
}

}  // namespace

std::uint8_t* ImgAllocRows8C1(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept {
    return allocRows<std::uint8_t>(width, height, 1, strideOut);
}
std::uint8_t* ImgAllocRows8C2(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept {
    return allocRows<std::uint8_t>(width, height, 2, strideOut);
}
std::uint8_t* ImgAllocRows8C3(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept {
    return allocRows<std::uint8_t>(width, height, 3, strideOut);
}
std::uint8_t* ImgAllocRows8C4(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept {
    return allocRows<std::uint8_t>(width, height, 4, strideOut);
}
float* ImgAllocRowsFC4(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept {
    return allocRows<float>(width, height, 16, strideOut);
}

void* ImgAlloc(std::size_t byteCount) noexcept {
    void* block = nullptr;
    if (byteCount == 0 || byteCount > std::numeric_limits<std::uint32_t>::max() ||
        !MemoryAllocator().AllocBytes(&block, static_cast<std::uint32_t>(byteCount))) {
        return nullptr;
    }
    return block;
}

void ImgFree(void* block) noexcept {
    MemoryAllocator().FreeBytes(block);
}

}  // namespace lumiset

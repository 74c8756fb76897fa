#pragma once

#include <cstddef>
#include <cstdint>

namespace lumiset {

/// Blocks of rows of 1, 2, 3, 4 (bytes) or 16 (four floats) bytes a pixel: the block starts at a multiple of 32
/// bytes and so does every row. Stores the bytes from row to row. The contents are undefined. Null, with a
/// stride of 0, for a size below 1 or when there is no memory; null for a null `strideOut`.
[[nodiscard]] std::uint8_t* ImgAllocRows8C1(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept;
[[nodiscard]] std::uint8_t* ImgAllocRows8C2(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept;
[[nodiscard]] std::uint8_t* ImgAllocRows8C3(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept;
[[nodiscard]] std::uint8_t* ImgAllocRows8C4(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept;
[[nodiscard]] float* ImgAllocRowsFC4(std::int32_t width, std::int32_t height, std::int32_t* strideOut) noexcept;

/// A block aligned to 32 bytes, or null for 0 bytes or when there is no memory.
[[nodiscard]] void* ImgAlloc(std::size_t byteCount) noexcept;

/// Frees a block of any of the above; null does nothing.
void ImgFree(void* block) noexcept;

}  // namespace lumiset

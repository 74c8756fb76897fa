#pragma once

#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

struct RepeatedGaussJob {
    std::uint8_t* plane;  ///< one channel, filtered in place
    std::int32_t stride;  ///< bytes
    std::int32_t width;
    std::int32_t height;
    std::int32_t passes;  ///< 0 or more
    bool isFloat;
};

/// The result of filtering a plane so many times by the 3 x 3 binomial kernel of `ImgGauss8` or `ImgGaussF`, bytes
/// rounded after every pass. The outermost ring of samples is read and stays. Bytes are exact; floats differ from
/// plain repetition by less than 1e-9 a pass, and what is not a number counts as 0 from the first pass on. False,
/// before anything is written, when there is no memory.
[[nodiscard]] bool repeatedGauss(const RepeatedGaussJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset

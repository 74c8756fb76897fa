#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "frame/memory_allocator.h"

namespace lumiset {

struct RepeatedGaussJob {
    std::uint8_t* plane;  ///< one channel, filtered in place
    std::int32_t stride;  ///< bytes
    std::int32_t width;
    std::int32_t height;
    std::int32_t passes;  ///< 0 or more
    bool isFloat;
    bool filtered = false;  ///< answered: false when there was no memory, and the plane is as it was
};
inline constexpr std::size_t kMostGaussJobs = 2;

/// The result of filtering each plane so many times by the 3 x 3 binomial kernel of `ImgGauss8` or `ImgGaussF`, bytes
/// rounded after every pass. The outermost ring of samples is read and stays. Bytes are exact; floats differ from
/// plain repetition by less than 1e-9 a pass, and what is not a number counts as 0 from the first pass on. The planes,
/// at most `kMostGaussJobs`, have one size, stride and type and as many passes.
void repeatedGauss(std::span<RepeatedGaussJob> jobs, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset

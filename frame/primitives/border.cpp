#include "frame/primitives/border.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "frame/primitives/check.h"

namespace lumiset {
namespace {

template <class Pixel>
void fillPixels(std::uint8_t* at, std::int32_t count, const std::uint8_t* pixel) {
    Pixel value;
    std::memcpy(&value, pixel, sizeof value);
    for (std::int32_t i = 0; i < count; ++i) {
        std::memcpy(at + static_cast<std::size_t>(i) * sizeof value, &value, sizeof value);
    }
}

struct FourFloats {
    float samples[4];
};

template <class Pixel, class Sample>
ImgStatus replicateBorder(const Sample* src, std::int32_t srcStep, ImgSize srcSize, Sample* dst, std::int32_t dstStep,
                          std::int32_t left, std::int32_t top, ImgSize dstSize) {
    constexpr std::int32_t kBytes = sizeof(Pixel);
    const Plane<const std::uint8_t> in{reinterpret_cast<const std::uint8_t*>(src), srcStep};
    const Plane<std::uint8_t> out{reinterpret_cast<std::uint8_t*>(dst), dstStep};
    if (const ImgStatus status = checkPlanes(srcSize, {{src, srcStep, kBytes}, arrayArgument(dst)}); status != kImgOk) {
        return status;
    }
    if (const ImgStatus status = checkPlanes(dstSize, {{dst, dstStep, kBytes}}); status != kImgOk) {
        return status;
    }
    if (left < 0 || top < 0 || std::int64_t{left} + srcSize.width > dstSize.width ||
        std::int64_t{top} + srcSize.height > dstSize.height) {
        return kImgBadSize;
    }
    const auto bytes = [](std::int32_t pixels) { return static_cast<std::size_t>(pixels) * sizeof(Pixel); };
    const std::int32_t right = dstSize.width - left - srcSize.width;
    for (std::int32_t y = 0; y < srcSize.height; ++y) {
        const std::uint8_t* from = in.row(y);
        std::uint8_t* row = out.row(top + y);
        std::uint8_t* middle = row + bytes(left);
        if (middle != from) {
            std::memcpy(middle, from, bytes(srcSize.width));
        }
        fillPixels<Pixel>(row, left, middle);
        std::uint8_t* end = middle + bytes(srcSize.width);
        fillPixels<Pixel>(end, right, end - kBytes);
    }
    const std::int32_t lastRow = top + srcSize.height - 1;
    for (std::int32_t y = 0; y < top; ++y) {
        std::memcpy(out.row(y), out.row(top), bytes(dstSize.width));
    }
    for (std::int32_t y = lastRow + 1; y < dstSize.height; ++y) {
        std::memcpy(out.row(y), out.row(lastRow), bytes(dstSize.width));
    }
    return kImgOk;
}

}  // namespace

ImgStatus ImgReplicateBorder8C1(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept {
    return replicateBorder<std::uint8_t>(src, srcStep, srcSize, dst, dstStep, left, top, dstSize);
}

ImgStatus ImgReplicateBorder8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept {
    return replicateBorder<std::uint32_t>(src, srcStep, srcSize, dst, dstStep, left, top, dstSize);
}

ImgStatus ImgReplicateBorderFC1(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept {
    return replicateBorder<float>(src, srcStep, srcSize, dst, dstStep, left, top, dstSize);
}

ImgStatus ImgReplicateBorderFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, float* dst,
                                std::int32_t dstStep, std::int32_t left, std::int32_t top, ImgSize dstSize) noexcept {
    return replicateBorder<FourFloats>(src, srcStep, srcSize, dst, dstStep, left, top, dstSize);
}

}  // namespace lumiset

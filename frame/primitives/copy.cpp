#include "frame/primitives/copy.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/copy.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

template <Touch kTouch, class T>
void moveSamples(Plane<const T> src, Plane<T> dst, ImgSize size) {
    mapPlane<kTouch>(
        size, dst, [](auto v) HWY_ATTR { return v; }, src);
}

/// Moves the bytes of each block of 16: four pixels of bytes or one of floats.
void reorderBytes(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const std::uint8_t (&from)[16],
                  ImgSize size) {
    const hn::ScalableTag<std::uint8_t> d;
    const auto indices = hn::LoadDup128(d, from);
    mapPlane<Touch::kAllFour>(
        size, dst, [&](auto v) HWY_ATTR { return hn::TableLookupBytes(v, indices); }, src);
}

}  // namespace

void copy8A4(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    moveSamples<Touch::kFirstThree>(src, dst, size);
}
void copyFA4(Plane<const float> src, Plane<float> dst, ImgSize size) {
    moveSamples<Touch::kFirstThree>(src, dst, size);
}
void copyChannel8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    moveSamples<Touch::kFirst>(src, dst, size);
}
void copyChannelF(Plane<const float> src, Plane<float> dst, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const float* from = src.row(y);
        float* to = dst.row(y);
        for (std::int32_t x = 0; x < size.width; ++x) {
            to[4 * static_cast<std::ptrdiff_t>(x)] = from[4 * static_cast<std::ptrdiff_t>(x)];
        }
    }
}

void extractChannel8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    // Longer vectors lose to the cache line that every load from an advanced pointer then straddles.
    foldPlane<Touch::kFirst>(
        size, dst, src, [](auto pixels) HWY_ATTR { return pixels; }, hn::CappedTag<std::uint8_t, 32>());
}
void extractChannelF(Plane<const float> src, Plane<float> dst, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const float* from = src.row(y);
        float* to = dst.row(y);
        for (std::int32_t x = 0; x < size.width; ++x) {
            to[x] = from[4 * static_cast<std::ptrdiff_t>(x)];
        }
    }
}

void insertChannel8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, ImgSize size) {
    const auto last = static_cast<std::size_t>(size.width) - 1;
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* from = src.row(y);
        std::uint8_t* to = dst.row(y);
#pragma GCC ivdep
        for (std::size_t x = 0; x < last; ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, to + 4 * x, sizeof pixel);
            pixel = (pixel & 0xFFFFFF00U) | from[x];
            std::memcpy(to + 4 * x, &pixel, sizeof pixel);
        }
        to[4 * last] = from[last];
    }
}
void insertChannelF(Plane<const float> src, Plane<float> dst, ImgSize size) {
    for (std::int32_t y = 0; y < size.height; ++y) {
        const float* from = src.row(y);
        float* to = dst.row(y);
        for (std::int32_t x = 0; x < size.width; ++x) {
            to[4 * static_cast<std::ptrdiff_t>(x)] = from[x];
        }
    }
}

void reorder8(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const std::uint32_t* order, ImgSize size) {
    HWY_ALIGN std::uint8_t from[16];
    for (std::uint32_t i = 0; i < 16; ++i) {
        from[i] = static_cast<std::uint8_t>((i & ~3U) + order[i % 4]);
    }
    reorderBytes(src, dst, from, size);
}
void reorderF(Plane<const float> src, Plane<float> dst, const std::uint32_t* order, ImgSize size) {
    HWY_ALIGN std::uint8_t from[16];
    for (std::uint32_t i = 0; i < 16; ++i) {
        from[i] = static_cast<std::uint8_t>(4 * order[i / 4] + i % 4);
    }
    reorderBytes({reinterpret_cast<const std::uint8_t*>(src.data), src.step},
                 {reinterpret_cast<std::uint8_t*>(dst.data), dst.step}, from, {size.width * 4, size.height});
}

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {
namespace {

/// Whole rows of `rowBytes`.
void copyRows(const void* src, std::int32_t srcStep, void* dst, std::int32_t dstStep, std::int64_t rowBytes,
              std::int32_t height) {
    if (srcStep == rowBytes && dstStep == rowBytes) {
        std::memmove(dst, src, static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height));
        return;
    }
    const Plane<const std::uint8_t> from{static_cast<const std::uint8_t*>(src), srcStep};
    const Plane<std::uint8_t> to{static_cast<std::uint8_t*>(dst), dstStep};
    for (std::int32_t y = 0; y < height; ++y) {
        std::memmove(to.row(y), from.row(y), static_cast<std::size_t>(rowBytes));
    }
}

ImgStatus copyPixels(const void* src, std::int32_t srcStep, void* dst, std::int32_t dstStep, std::int32_t pixelBytes,
                     ImgSize size) {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, pixelBytes}, {dst, dstStep, pixelBytes}});
    if (status == kImgOk) {
        copyRows(src, srcStep, dst, dstStep, std::int64_t{size.width} * pixelBytes, size.height);
    }
    return status;
}

ImgStatus checkOrder(const std::uint32_t* order) {
    for (int i = 0; i < 4; ++i) {
        if (order[i] > 3) {
            return kImgBadRange;
        }
    }
    return kImgOk;
}

}  // namespace

ImgStatus ImgCopy8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept {
    return copyPixels(src, srcStep, dst, dstStep, 1, size);
}
ImgStatus ImgCopy8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept {
    return copyPixels(src, srcStep, dst, dstStep, 4, size);
}
ImgStatus ImgCopyFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept {
    return copyPixels(src, srcStep, dst, dstStep, 4, size);
}
ImgStatus ImgCopyFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept {
    return copyPixels(src, srcStep, dst, dstStep, 16, size);
}

HWY_EXPORT(copy8A4);
ImgStatus ImgCopy8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 4}, {dst, dstStep, 4}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(copy8A4)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(copyFA4);
ImgStatus ImgCopyFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 16}, {dst, dstStep, 16}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(copyFA4)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(copyChannel8);
ImgStatus ImgCopyChannel8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 4}, {dst, dstStep, 4}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(copyChannel8)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(copyChannelF);
ImgStatus ImgCopyChannelFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 16}, {dst, dstStep, 16}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(copyChannelF)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(extractChannel8);
ImgStatus ImgExtractChannel8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 4}, {dst, dstStep, 1}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(extractChannel8)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(extractChannelF);
ImgStatus ImgExtractChannelF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                             ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 16}, {dst, dstStep, 4}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(extractChannelF)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(insertChannel8);
ImgStatus ImgInsertChannel8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 1}, {dst, dstStep, 4}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(insertChannel8)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(insertChannelF);
ImgStatus ImgInsertChannelF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 4}, {dst, dstStep, 16}});
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(insertChannelF)({src, srcStep}, {dst, dstStep}, size);
    }
    return status;
}

HWY_EXPORT(reorder8);
ImgStatus ImgReorderChannels8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                                const std::uint32_t* order, ImgSize size) noexcept {
    ImgStatus status = checkPlanes(size, {{src, srcStep, 4}, {dst, dstStep, 4}, arrayArgument(order)});
    if (status == kImgOk) {
        status = checkOrder(order);
    }
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(reorder8)({src, srcStep}, {dst, dstStep}, order, size);
    }
    return status;
}
ImgStatus ImgSwapChannels8C4(std::uint8_t* plane, std::int32_t step, const std::uint32_t* order,
                             ImgSize size) noexcept {
    return ImgReorderChannels8C4(plane, step, plane, step, order, size);
}

HWY_EXPORT(reorderF);
ImgStatus ImgReorderChannelsFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                                const std::uint32_t* order, ImgSize size) noexcept {
    ImgStatus status = checkPlanes(size, {{src, srcStep, 16}, {dst, dstStep, 16}, arrayArgument(order)});
    if (status == kImgOk) {
        status = checkOrder(order);
    }
    if (status == kImgOk) {
        HWY_DYNAMIC_DISPATCH(reorderF)({src, srcStep}, {dst, dstStep}, order, size);
    }
    return status;
}
ImgStatus ImgSwapChannelsFC4(float* plane, std::int32_t step, const std::uint32_t* order, ImgSize size) noexcept {
    return ImgReorderChannelsFC4(plane, step, plane, step, order, size);
}

}  // namespace lumiset
#endif

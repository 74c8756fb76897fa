#include "frame/primitives/copy.h"

#include <algorithm>

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
    const hn::ScalableTag<std::uint32_t> d;
    const hn::Rebind<std::uint8_t, decltype(d)> dChannel;
    const std::size_t lanes = hn::Lanes(d);
    const auto others = hn::Set(d, 0xFFFFFF00U);
    const auto width = static_cast<std::size_t>(size.width);
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* from = src.row(y);
        std::uint8_t* to = dst.row(y);
        std::size_t x = 0;
        // The last pixel's other samples may lie behind the picture.
        for (; x + lanes < width; x += lanes) {
            fetchAhead(to + 4 * x, 4 * lanes);
            auto* words = reinterpret_cast<std::uint32_t*>(to + 4 * x);
            const auto kept = hn::And(hn::LoadU(d, words), others);
            hn::StoreU(hn::Or(kept, hn::PromoteTo(d, hn::LoadU(dChannel, from + x))), d, words);
        }
        for (; x < width; ++x) {
            to[4 * x] = from[x];
        }
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

template <std::int32_t kSamples, class T>
void copyRows(Plane<const T> src, Plane<T> dst, ImgSize size) {
    const std::size_t rowBytes = static_cast<std::size_t>(size.width) * kSamples * sizeof(T);
    if (static_cast<std::size_t>(src.step) == rowBytes && src.step == dst.step) {
        std::memmove(dst.data, src.data, rowBytes * static_cast<std::size_t>(size.height));
        return;
    }
    for (std::int32_t y = 0; y < size.height; ++y) {
        std::memmove(dst.row(y), src.row(y), rowBytes);
    }
}

template <std::int32_t kSamples, class T>
ImgStatus copyPixels(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, ImgSize size) {
    return runLoop(copyRows<kSamples, T>, size, pixels<kSamples>(src, srcStep), pixels<kSamples>(dst, dstStep));
}

ImgStatus checkOrder(const std::uint32_t* order) {
    return order != nullptr && std::all_of(order, order + 4, [](std::uint32_t index) { return index <= 3; })
               ? kImgOk
               : kImgBadRange;
}

}  // namespace

ImgStatus ImgCopy8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept {
    return copyPixels<1>(src, srcStep, dst, dstStep, size);
}
ImgStatus ImgCopy8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept {
    return copyPixels<4>(src, srcStep, dst, dstStep, size);
}
ImgStatus ImgCopyFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept {
    return copyPixels<1>(src, srcStep, dst, dstStep, size);
}
ImgStatus ImgCopyFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept {
    return copyPixels<4>(src, srcStep, dst, dstStep, size);
}

HWY_EXPORT(copy8A4);
ImgStatus ImgCopy8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(copy8A4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}

HWY_EXPORT(copyFA4);
ImgStatus ImgCopyFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(copyFA4), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}

HWY_EXPORT(copyChannel8);
ImgStatus ImgCopyChannel8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(copyChannel8), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}

HWY_EXPORT(copyChannelF);
ImgStatus ImgCopyChannelFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(copyChannelF), size, pixels<4>(src, srcStep), pixels<4>(dst, dstStep));
}

HWY_EXPORT(extractChannel8);
ImgStatus ImgExtractChannel8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(extractChannel8), size, pixels<4>(src, srcStep), pixels<1>(dst, dstStep));
}

HWY_EXPORT(extractChannelF);
ImgStatus ImgExtractChannelF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                             ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(extractChannelF), size, pixels<4>(src, srcStep), pixels<1>(dst, dstStep));
}

HWY_EXPORT(insertChannel8);
ImgStatus ImgInsertChannel8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(insertChannel8), size, pixels<1>(src, srcStep), pixels<4>(dst, dstStep));
}

HWY_EXPORT(insertChannelF);
ImgStatus ImgInsertChannelF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            ImgSize size) noexcept {
    return runLoop(HWY_DYNAMIC_DISPATCH(insertChannelF), size, pixels<1>(src, srcStep), pixels<4>(dst, dstStep));
}

HWY_EXPORT(reorder8);
ImgStatus ImgReorderChannels8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                                const std::uint32_t* order, ImgSize size) noexcept {
    return runLoop(checkOrder(order), HWY_DYNAMIC_DISPATCH(reorder8), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), order);
}
ImgStatus ImgSwapChannels8C4(std::uint8_t* plane, std::int32_t step, const std::uint32_t* order,
                             ImgSize size) noexcept {
    return ImgReorderChannels8C4(plane, step, plane, step, order, size);
}

HWY_EXPORT(reorderF);
ImgStatus ImgReorderChannelsFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                                const std::uint32_t* order, ImgSize size) noexcept {
    return runLoop(checkOrder(order), HWY_DYNAMIC_DISPATCH(reorderF), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), order);
}
ImgStatus ImgSwapChannelsFC4(float* plane, std::int32_t step, const std::uint32_t* order, ImgSize size) noexcept {
    return ImgReorderChannelsFC4(plane, step, plane, step, order, size);
}

}  // namespace lumiset
#endif

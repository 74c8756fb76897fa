#include "frame/operations/values.h"

#include <cmath>

#include "frame/image_primitives.h"
#include "frame/operations/operands.h"

namespace lumiset {
namespace {

/// 1 / 255, as single precision holds it.
constexpr float kLevel = 0.003921568859368563F;

bool isFloatColor(const Frame& frame) {
    return isColor(frame) && isFloat(frame);
}

float limitToOne(float v) {
    return std::min(std::max(0.0F, v), 1.0F);
}

std::uint8_t toLevel(float v) {
    return static_cast<std::uint8_t>(limitToOne(v) * 255.0F);
}

}  // namespace

bool FrameClampValues(Frame& frame, float low, float high) noexcept {
    if (!isSound(frame) || std::isnan(low) || std::isnan(high)) {
        return false;
    }
    const ImgSize size = inSamples(sizeOf(frame), frame);
    if (isFloat(frame)) {
        return ImgClampRangeFC1(floatsOf(frame), frame.Stride(), limitToOne(low), limitToOne(high), size) == kImgOk;
    }
    return ImgClampRange8C1(bytesOf(frame), frame.Stride(), toLevel(low), toLevel(high), size) == kImgOk;
}

bool FrameSetChannel(Frame& frame, std::int32_t channel, std::int32_t value) noexcept {
    if (!isColor(frame) || channel < 0 || channel > 3 || value < 0 || value > 255) {
        return false;
    }
    const auto position = static_cast<std::uint32_t>(channel);
    if (isFloat(frame)) {
        return ImgSetChannelFC4(floatsOf(frame, position), frame.Stride(), static_cast<float>(value) * kLevel,
                                sizeOf(frame)) == kImgOk;
    }
    return ImgSetChannel8C4(bytesOf(frame, position), frame.Stride(), static_cast<std::uint8_t>(value),
                            sizeOf(frame)) == kImgOk;
}

bool FrameFillColor(Frame& frame, std::uint32_t color) noexcept {
    if (!isSound(frame)) {
        return false;
    }
    // In memory order: B, G, R, A or the reverse; masks begin with the low byte.
    std::uint8_t bytes[4];
    float floats[4];
    for (std::uint32_t i = 0; i < 4; ++i) {
        const std::uint32_t position = AlphaIndex(frame.Format()) == 0 ? 3 - i : i;
        bytes[position] = static_cast<std::uint8_t>(color >> (8 * i));
        floats[position] = static_cast<float>(bytes[position]) / 255.0F;
    }
    const ImgSize size = sizeOf(frame);
    if (isFloat(frame)) {
        return (isMask(frame) ? ImgSetFC1(floatsOf(frame), frame.Stride(), floats[0], size)
                              : ImgSetFC4(floatsOf(frame), frame.Stride(), floats, size)) == kImgOk;
    }
    return (isMask(frame) ? ImgSet8C1(bytesOf(frame), frame.Stride(), bytes[0], size)
                          : ImgSet8C4(bytesOf(frame), frame.Stride(), bytes, size)) == kImgOk;
}

bool FrameMultiplyColor(const Frame& src, Frame& dst, const float color[4]) noexcept {
    if (color == nullptr || !sameSamples(src, dst)) {
        return false;
    }
    const std::uint32_t used = isMask(src) ? 1 : 4;
    std::uint8_t levels[4] = {};
    for (std::uint32_t i = 0; i < used; ++i) {
        if (!std::isfinite(color[i])) {
            return false;
        }
        levels[i] = toLevel(color[i]);
    }
    const ImgSize size = sizeOf(src, dst);
    if (isFloat(src)) {
        return (isMask(src) ? ImgScaleByColorFC1(floatsOf(src), src.Stride(), floatsOf(dst), dst.Stride(),
                                                 limitToOne(color[0]), size)
                            : ImgScaleByColorFC4(floatsOf(src), src.Stride(), floatsOf(dst), dst.Stride(), color,
                                                 size)) == kImgOk;
    }
    return (isMask(src)
                ? ImgScaleByColor8C1(bytesOf(src), src.Stride(), bytesOf(dst), dst.Stride(), levels[0], size)
                : ImgScaleByColor8C4(bytesOf(src), src.Stride(), bytesOf(dst), dst.Stride(), levels, size)) == kImgOk;
}

bool FrameInvert(const Frame& src, Frame& dst) noexcept {
    if (!sameSamples(src, dst)) {
        return false;
    }
    const ImgSize size = inSamples(sizeOf(src, dst), src);
    return (isFloat(src) ? ImgInvertFC1(floatsOf(src), src.Stride(), floatsOf(dst), dst.Stride(), size)
                         : ImgInvert8C1(bytesOf(src), src.Stride(), bytesOf(dst), dst.Stride(), size)) == kImgOk;
}

bool FrameInvertChannel(Frame& frame, std::int32_t channel) noexcept {
    if (!isSound(frame) || channel < 0 || channel > 3) {
        return false;
    }
    if (isMask(frame)) {
        return FrameInvert(frame, frame);
    }
    const auto position = static_cast<std::uint32_t>(channel);
    return (isFloat(frame) ? ImgInvertChannelFC4(floatsOf(frame, position), frame.Stride(), sizeOf(frame))
                           : ImgInvertChannel8C4(bytesOf(frame, position), frame.Stride(), sizeOf(frame))) == kImgOk;
}

bool FrameMinOf(const Frame& a, const Frame& b, Frame& dst) noexcept {
    if (!isMask(a) || !sameFormat(a, b) || !sameFormat(a, dst)) {
        return false;
    }
    const ImgSize both = sizeOf(a, b);
    const ImgSize size{std::min(both.width, dst.Width()), std::min(both.height, dst.Height())};
    if (isFloat(a)) {
        return ImgMinFC1(floatsOf(a), a.Stride(), floatsOf(b), b.Stride(), floatsOf(dst), dst.Stride(), size) == kImgOk;
    }
    return ImgMin8C1(bytesOf(a), a.Stride(), bytesOf(b), b.Stride(), bytesOf(dst), dst.Stride(), size) == kImgOk;
}

bool FrameSquareSamples(Frame& frame) noexcept {
    return isFloatColor(frame) &&
           ImgSquareFC1(floatsOf(frame), frame.Stride(), inSamples(sizeOf(frame), frame)) == kImgOk;
}

bool FrameSquareRootSamples(Frame& frame) noexcept {
    return isFloatColor(frame) &&
           ImgSquareRootFC1(floatsOf(frame), frame.Stride(), inSamples(sizeOf(frame), frame)) == kImgOk;
}

bool FrameLimitSamples(Frame& frame, const float limits[4]) noexcept {
    return isFloatColor(frame) && limits != nullptr &&
           std::none_of(limits, limits + 4, [](float limit) { return std::isnan(limit); }) &&
           ImgLimitFC4(floatsOf(frame), frame.Stride(), limits, sizeOf(frame)) == kImgOk;
}

bool FrameSwapChannels(Frame& frame, const std::uint32_t order[4]) noexcept {
    if (!isColor(frame)) {
        return false;
    }
    return (isFloat(frame) ? ImgSwapChannelsFC4(floatsOf(frame), frame.Stride(), order, sizeOf(frame))
                           : ImgSwapChannels8C4(bytesOf(frame), frame.Stride(), order, sizeOf(frame))) == kImgOk;
}

}  // namespace lumiset

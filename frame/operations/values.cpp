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
        return runPrimitive(frame, size, &ImgClampRangeFC1, planeOf(frame), limitToOne(low), limitToOne(high));
    }
    return runPrimitive(frame, size, &ImgClampRange8C1, planeOf(frame), toLevel(low), toLevel(high));
}

bool FrameSetChannel(Frame& frame, std::int32_t channel, std::int32_t value) noexcept {
    if (!isColor(frame) || channel < 0 || channel > 3 || value < 0 || value > 255) {
        return false;
    }
    if (isFloat(frame)) {
        return runPrimitive(frame, sizeOf(frame), &ImgSetChannelFC4, planeOf(frame, channel),
                            static_cast<float>(value) * kLevel);
    }
    return runPrimitive(frame, sizeOf(frame), &ImgSetChannel8C4, planeOf(frame, channel),
                        static_cast<std::uint8_t>(value));
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
    if (isMask(frame)) {
        return isFloat(frame) ? runPrimitive(frame, size, &ImgSetFC1, planeOf(frame), floats[0])
                              : runPrimitive(frame, size, &ImgSet8C1, planeOf(frame), bytes[0]);
    }
    return isFloat(frame) ? runPrimitive(frame, size, &ImgSetFC4, planeOf(frame), floats)
                          : runPrimitive(frame, size, &ImgSet8C4, planeOf(frame), bytes);
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
    const PlaneOperand from = planeOf(src);
    const PlaneOperand to = planeOf(dst);
    if (isMask(src)) {
        return isFloat(src) ? runPrimitive(dst, size, &ImgScaleByColorFC1, from, to, limitToOne(color[0]))
                            : runPrimitive(dst, size, &ImgScaleByColor8C1, from, to, levels[0]);
    }
    return isFloat(src) ? runPrimitive(dst, size, &ImgScaleByColorFC4, from, to, color)
                        : runPrimitive(dst, size, &ImgScaleByColor8C4, from, to, levels);
}

bool FrameInvert(const Frame& src, Frame& dst) noexcept {
    if (!sameSamples(src, dst)) {
        return false;
    }
    const ImgSize size = inSamples(sizeOf(src, dst), src);
    return runEither(dst, size, &ImgInvert8C1, &ImgInvertFC1, planeOf(src), planeOf(dst));
}

bool FrameInvertChannel(Frame& frame, std::int32_t channel) noexcept {
    if (!isSound(frame) || channel < 0 || channel > 3) {
        return false;
    }
    if (isMask(frame)) {
        return FrameInvert(frame, frame);
    }
    return runEither(frame, sizeOf(frame), &ImgInvertChannel8C4, &ImgInvertChannelFC4, planeOf(frame, channel));
}

bool FrameMinOf(const Frame& a, const Frame& b, Frame& dst) noexcept {
    if (!isMask(a) || !sameFormat(a, b) || !sameFormat(a, dst)) {
        return false;
    }
    const ImgSize both = sizeOf(a, b);
    const ImgSize size{std::min(both.width, dst.Width()), std::min(both.height, dst.Height())};
    return runEither(dst, size, &ImgMin8C1, &ImgMinFC1, planeOf(a), planeOf(b), planeOf(dst));
}

bool FrameSquareSamples(Frame& frame) noexcept {
    return isFloatColor(frame) && runPrimitive(frame, inSamples(sizeOf(frame), frame), &ImgSquareFC1, planeOf(frame));
}

bool FrameSquareRootSamples(Frame& frame) noexcept {
    return isFloatColor(frame) &&
           runPrimitive(frame, inSamples(sizeOf(frame), frame), &ImgSquareRootFC1, planeOf(frame));
}

bool FrameLimitSamples(Frame& frame, const float limits[4]) noexcept {
    return isFloatColor(frame) && limits != nullptr &&
           std::none_of(limits, limits + 4, [](float limit) { return std::isnan(limit); }) &&
           runPrimitive(frame, sizeOf(frame), &ImgLimitFC4, planeOf(frame), limits);
}

bool FrameSwapChannels(Frame& frame, const std::uint32_t order[4]) noexcept {
    return isColor(frame) &&
           runEither(frame, sizeOf(frame), &ImgSwapChannels8C4, &ImgSwapChannelsFC4, planeOf(frame), order);
}

}  // namespace lumiset

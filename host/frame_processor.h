#pragma once

#include <cstdint>

#include "host/records.h"

namespace lumiset {

/// Inclusive pixel rectangle.
struct PixelRect {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

/// Image operations on the host's own frames. The object has no state; several threads may share it. Unless
/// said otherwise an operation covers the rectangle that its frames have in common at their first stored
/// pixel. Every operation answers false for a null argument, a frame without data or a format that it does
/// not handle.
class IFrameProcessor : public IUnknown {
public:
    static constexpr Guid kId{0xB9D19C11, 0x28CC, 0x4C17, {0x80, 0xC6, 0x23, 0x5D, 0xAD, 0x31, 0x68, 0x4A}};

    /// Copies pixels as 8-bit four-channel rows; the format words are not read.
    virtual bool LUMISET_CALL CopyImage(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept = 0;
    /// Scales one 8-bit four-channel frame to the size of another. Mode 0 nearest, 1 linear, 2 cubic; any
    /// other value is linear.
    virtual bool LUMISET_CALL ResizeImage(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                          std::uint32_t mode) noexcept = 0;
    /// Reverses the samples of every pixel: B, G, R, A to A, R, G, B and back.
    virtual bool LUMISET_CALL SwapChannelOrder(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept = 0;
    /// Y, U, Y, V groups (limited range, BT.601) to B, G, R, A with one alpha value. Width at least 2.
    virtual bool LUMISET_CALL Yuv422ToBgra(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                           std::uint8_t alpha) noexcept = 0;
    /// The reverse of `Yuv422ToBgra`.
    virtual bool LUMISET_CALL BgraToYuv422(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept = 0;
    /// Sets one sample position, 0..3, of every pixel to `value` of 255.
    virtual bool LUMISET_CALL SetChannel(const VideoFrameDesc* frame, std::uint32_t channel,
                                         std::uint32_t value) noexcept = 0;
    /// Composites `top` over `bottom` into `dst`. Mind the order: the destination comes first.
    virtual bool LUMISET_CALL AlphaOver(const VideoFrameDesc* dst, const VideoFrameDesc* top,
                                        const VideoFrameDesc* bottom, bool premultiplied) noexcept = 0;
    /// In place: new sample i is old sample `order[i]`. False, with nothing changed, for an entry above 3.
    virtual bool LUMISET_CALL SwapChannels(const VideoFrameDesc* frame, const std::uint32_t* order) noexcept = 0;
    /// In place: colour times alpha.
    virtual bool LUMISET_CALL PremultiplyAlpha(const VideoFrameDesc* frame) noexcept = 0;
    /// Limited-range Y, Cb, Cr to colour; float A, R, G, B frames only.
    virtual bool LUMISET_CALL YuvToColor(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept = 0;
    /// Colour to limited-range Y, Cb, Cr; float A, R, G, B frames only.
    virtual bool LUMISET_CALL ColorToYuv(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept = 0;
    /// In place: turns the rows over.
    virtual bool LUMISET_CALL FlipVertical(const VideoFrameDesc* frame) noexcept = 0;
    /// Row i of `src` becomes row h - 1 - i of `dst`, h the smaller height.
    virtual bool LUMISET_CALL FlipVerticalCopy(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept = 0;
    /// Copies one sample position to another; either frame may be a one-channel mask.
    virtual bool LUMISET_CALL CopyChannel(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                          std::uint32_t srcChannel, std::uint32_t dstChannel) noexcept = 0;
    /// In place: inverts one sample position.
    virtual bool LUMISET_CALL InvertChannel(const VideoFrameDesc* frame, std::uint32_t channel) noexcept = 0;
    /// In place, float colour frames only: every sample becomes its square.
    virtual bool LUMISET_CALL SquareSamples(const VideoFrameDesc* frame) noexcept = 0;
    /// In place, float colour frames only: every sample becomes its square root. False when one is negative.
    virtual bool LUMISET_CALL SquareRootSamples(const VideoFrameDesc* frame) noexcept = 0;
    /// In place, float colour frames only: samples above their position's limit become that limit.
    virtual bool LUMISET_CALL LimitSamples(const VideoFrameDesc* frame, float limit0, float limit1, float limit2,
                                           float limit3) noexcept = 0;
    /// Deletes the object; `Release` calls it at count 0. Hosts do not.
    virtual void LUMISET_CALL DeleteThis() noexcept = 0;
    /// Scales a region of `src`, clipped to the size of `dst`, to the size of `dst`. Modes as `ResizeImage`.
    virtual bool LUMISET_CALL ResizeRegion(const VideoFrameDesc* src, const PixelRect* region,
                                           const VideoFrameDesc* dst, std::uint32_t mode) noexcept = 0;

protected:
    ~IFrameProcessor() = default;
};

}  // namespace lumiset

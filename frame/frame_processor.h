#pragma once

#include "host/frame_processor.h"
#include "host/reference_count.h"

namespace lumiset {

/// The host's image helper. Every operation checks its records (data, positive sizes, a stride that holds the row,
/// bytes per pixel that fit the format, floats at multiples of four bytes) and then calls one frame operation.
class FrameProcessor final : public Counted<IFrameProcessor> {
public:
    FrameProcessor() = default;
    FrameProcessor(const FrameProcessor&) = delete;
    FrameProcessor& operator=(const FrameProcessor&) = delete;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    bool LUMISET_CALL CopyImage(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept override;
    bool LUMISET_CALL ResizeImage(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                  std::uint32_t mode) noexcept override;
    bool LUMISET_CALL SwapChannelOrder(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept override;
    bool LUMISET_CALL Yuv422ToBgra(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                   std::uint8_t alpha) noexcept override;
    bool LUMISET_CALL BgraToYuv422(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept override;
    bool LUMISET_CALL SetChannel(const VideoFrameDesc* frame, std::uint32_t channel,
                                 std::uint32_t value) noexcept override;
    bool LUMISET_CALL AlphaOver(const VideoFrameDesc* dst, const VideoFrameDesc* top, const VideoFrameDesc* bottom,
                                bool premultiplied) noexcept override;
    bool LUMISET_CALL SwapChannels(const VideoFrameDesc* frame, const std::uint32_t* order) noexcept override;
    bool LUMISET_CALL PremultiplyAlpha(const VideoFrameDesc* frame) noexcept override;
    bool LUMISET_CALL YuvToColor(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept override;
    bool LUMISET_CALL ColorToYuv(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept override;
    bool LUMISET_CALL FlipVertical(const VideoFrameDesc* frame) noexcept override;
    bool LUMISET_CALL FlipVerticalCopy(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept override;
    bool LUMISET_CALL CopyChannel(const VideoFrameDesc* src, const VideoFrameDesc* dst, std::uint32_t srcChannel,
                                  std::uint32_t dstChannel) noexcept override;
    bool LUMISET_CALL InvertChannel(const VideoFrameDesc* frame, std::uint32_t channel) noexcept override;
    bool LUMISET_CALL SquareSamples(const VideoFrameDesc* frame) noexcept override;
    bool LUMISET_CALL SquareRootSamples(const VideoFrameDesc* frame) noexcept override;
    bool LUMISET_CALL LimitSamples(const VideoFrameDesc* frame, float limit0, float limit1, float limit2,
                                   float limit3) noexcept override;
    void LUMISET_CALL DeleteThis() noexcept override;
    bool LUMISET_CALL ResizeRegion(const VideoFrameDesc* src, const PixelRect* region, const VideoFrameDesc* dst,
                                   std::uint32_t mode) noexcept override;

private:
    ~FrameProcessor() = default;
    void lastReleased() noexcept override { DeleteThis(); }
};

/// A new object with one reference, or null when memory is exhausted.
IFrameProcessor* createFrameProcessor() noexcept;

}  // namespace lumiset

#include "frame/frame_processor.h"

#include <algorithm>
#include <new>

#include "frame/frame_operations.h"
#include "frame/operations/operands.h"
#include "frame/yuv422.h"
#include "host/frame_record.h"

namespace lumiset {
namespace {

/// A record as a frame, after the checks; `ok` tells whether it may be worked on.
class Operand : public Frame {
public:
    explicit Operand(const VideoFrameDesc* desc) : ok(isSound(desc) && WrapDesc(desc)) {}

    bool ok;
};

/// A record of rows of bytes, whatever its format says.
class ByteOperand : public Frame {
public:
    explicit ByteOperand(const VideoFrameDesc* desc) {
        ok = desc != nullptr && holdsRows(desc, desc->bytesPerPixel) && WrapDesc(desc);
    }

    bool ok;
};

std::int32_t resizeMode(std::uint32_t mode) {
    return mode <= 2 ? static_cast<std::int32_t>(mode) : kResizeLinear;
}

/// Channel numbers that do not fit become -1, which every operation refuses.
std::int32_t channelNumber(std::uint32_t channel) {
    return channel <= 3 ? static_cast<std::int32_t>(channel) : -1;
}

bool is8BitColor(const Frame& frame) {
    return isColor(frame) && !isFloat(frame);
}

/// What both directions of 4:2:2 ask of their frames.
bool canConvert422(const VideoFrameDesc* yuv, const VideoFrameDesc* bgra) {
    return holdsRows(yuv, 2) && yuv->stride > 0 && holdsRows(bgra, 4) && bgra->stride > 0 && bgra->bytesPerPixel == 4 &&
           bgra->format == kFormatBgra8;
}

}  // namespace

Result LUMISET_CALL FrameProcessor::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IFrameProcessor>(this, iid, out, kResultFail);
}

void LUMISET_CALL FrameProcessor::DeleteThis() noexcept {
    delete this;
}

bool LUMISET_CALL FrameProcessor::CopyImage(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept {
    if (!holdsRows(src, 4) || !holdsRows(dst, 4)) {
        return false;
    }
    Frame from;
    Frame to;
    from.Wrap(src->data, src->width, src->height, src->stride, src->bytesPerPixel, kFormatBgra8, false);
    to.Wrap(dst->data, dst->width, dst->height, dst->stride, dst->bytesPerPixel, kFormatBgra8, false);
    return FrameCopy(from, to);
}

bool LUMISET_CALL FrameProcessor::ResizeImage(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                              std::uint32_t mode) noexcept {
    const Operand from(src);
    Operand to(dst);
    return from.ok && to.ok && is8BitColor(from) && is8BitColor(to) && FrameResizeInto(from, to, resizeMode(mode));
}

bool LUMISET_CALL FrameProcessor::SwapChannelOrder(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept {
    const Operand from(src);
    Operand to(dst);
    return from.ok && to.ok && FrameSwapChannelOrder(from, to);
}

bool LUMISET_CALL FrameProcessor::Yuv422ToBgra(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                               std::uint8_t alpha) noexcept {
    if (!canConvert422(src, dst)) {
        return false;
    }
    const ImgSize size{std::min(src->width, dst->width), std::min(src->height, dst->height)};
    return ImgYuv422ToBgra(static_cast<const std::uint8_t*>(src->data), src->stride,
                           static_cast<std::uint8_t*>(dst->data), dst->stride, alpha, src->width > size.width,
                           size) == kImgOk;
}

bool LUMISET_CALL FrameProcessor::BgraToYuv422(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept {
    if (!canConvert422(dst, src)) {
        return false;
    }
    const ImgSize size{std::min(src->width, dst->width), std::min(src->height, dst->height)};
    return ImgBgraToYuv422(static_cast<const std::uint8_t*>(src->data), src->stride,
                           static_cast<std::uint8_t*>(dst->data), dst->stride, dst->width > size.width, size) == kImgOk;
}

bool LUMISET_CALL FrameProcessor::SetChannel(const VideoFrameDesc* frame, std::uint32_t channel,
                                             std::uint32_t value) noexcept {
    Operand target(frame);
    return target.ok && value <= 255 &&
           FrameSetChannel(target, channelNumber(channel), static_cast<std::int32_t>(value));
}

bool LUMISET_CALL FrameProcessor::AlphaOver(const VideoFrameDesc* dst, const VideoFrameDesc* top,
                                            const VideoFrameDesc* bottom, bool premultiplied) noexcept {
    Operand to(dst);
    const Operand upper(top);
    const Operand lower(bottom);
    return to.ok && upper.ok && lower.ok && FrameAlphaOver(upper, lower, to, premultiplied);
}

bool LUMISET_CALL FrameProcessor::SwapChannels(const VideoFrameDesc* frame, const std::uint32_t* order) noexcept {
    Operand target(frame);
    return target.ok && order != nullptr && FrameSwapChannels(target, order);
}

bool LUMISET_CALL FrameProcessor::PremultiplyAlpha(const VideoFrameDesc* frame) noexcept {
    Operand target(frame);
    return target.ok && FramePremultiplyAlpha(target, target);
}

bool LUMISET_CALL FrameProcessor::YuvToColor(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept {
    const Operand from(src);
    Operand to(dst);
    return from.ok && to.ok && FrameYuvToColor(from, to);
}

bool LUMISET_CALL FrameProcessor::ColorToYuv(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept {
    const Operand from(src);
    Operand to(dst);
    return from.ok && to.ok && FrameColorToYuv(from, to);
}

bool LUMISET_CALL FrameProcessor::FlipVertical(const VideoFrameDesc* frame) noexcept {
    ByteOperand target(frame);
    return target.ok && FrameFlipVertical(target);
}

bool LUMISET_CALL FrameProcessor::FlipVerticalCopy(const VideoFrameDesc* src, const VideoFrameDesc* dst) noexcept {
    const ByteOperand from(src);
    ByteOperand to(dst);
    return from.ok && to.ok && FrameFlipVerticalCopy(from, to);
}

bool LUMISET_CALL FrameProcessor::CopyChannel(const VideoFrameDesc* src, const VideoFrameDesc* dst,
                                              std::uint32_t srcChannel, std::uint32_t dstChannel) noexcept {
    const Operand from(src);
    Operand to(dst);
    return from.ok && to.ok && FrameCopyChannel(from, to, channelNumber(srcChannel), channelNumber(dstChannel));
}

bool LUMISET_CALL FrameProcessor::InvertChannel(const VideoFrameDesc* frame, std::uint32_t channel) noexcept {
    Operand target(frame);
    return target.ok && FrameInvertChannel(target, channelNumber(channel));
}

bool LUMISET_CALL FrameProcessor::SquareSamples(const VideoFrameDesc* frame) noexcept {
    Operand target(frame);
    return target.ok && FrameSquareSamples(target);
}

bool LUMISET_CALL FrameProcessor::SquareRootSamples(const VideoFrameDesc* frame) noexcept {
    Operand target(frame);
    return target.ok && FrameSquareRootSamples(target);
}

bool LUMISET_CALL FrameProcessor::LimitSamples(const VideoFrameDesc* frame, float limit0, float limit1, float limit2,
                                               float limit3) noexcept {
    Operand target(frame);
    const float limits[4] = {limit0, limit1, limit2, limit3};
    return target.ok && FrameLimitSamples(target, limits);
}

bool LUMISET_CALL FrameProcessor::ResizeRegion(const VideoFrameDesc* src, const PixelRect* region,
                                               const VideoFrameDesc* dst, std::uint32_t mode) noexcept {
    const Operand from(src);
    Operand to(dst);
    if (region == nullptr || !from.ok || !to.ok || !isColor(from) || !isColor(to) || region->left < 0 ||
        region->top < 0 || region->left >= from.Width() || region->top >= from.Height()) {
        return false;
    }
    const std::int64_t right =
        std::min<std::int64_t>(std::int64_t{region->right} + 1, std::int64_t{region->left} + to.Width());
    const std::int64_t bottom =
        std::min<std::int64_t>(std::int64_t{region->bottom} + 1, std::int64_t{region->top} + to.Height());
    if (right <= region->left || bottom <= region->top || right > from.Width() || bottom > from.Height()) {
        return false;
    }
    const FrameRect part{region->left, region->top, static_cast<std::int32_t>(right),
                         static_cast<std::int32_t>(bottom)};
    return FrameResizeRect(from, to, part, {0, 0, to.Width(), to.Height()}, resizeMode(mode), 0, 0, 0, 0);
}

IFrameProcessor* createFrameProcessor() noexcept {
    return new (std::nothrow) FrameProcessor;
}

}  // namespace lumiset

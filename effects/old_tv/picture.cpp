// All of it leaves a row's pixels in one row: each row of the result is made in one go, while it is in the nearest
// cache. The noise alone is made for the whole frame before.

#include "effects/old_tv/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

#include "effects/old_tv/steps.h"
#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"
#include "frame/image_primitives.h"
#include "frame/scratch_block.h"
#include "host/pixel_aspect_scale.h"

namespace lumiset {
namespace {

/// Grey noise is made in square pixels, so that wide pixels get wide grains; this is its size for a frame.
ImgSize squareNoiseSize(const RenderContext& context, bool isFloat) {
    constexpr float kLargest = 32767.0F;
    const float aspect = PixelAspectScale(context.info, true, false).aspect;
    if (std::fabs(aspect - 1.0F) < (isFloat ? 0.0001F : 0.001F)) {
        return {context.width, context.height};
    }
    const auto width = static_cast<float>(context.width);
    const auto height = static_cast<float>(context.height);
    return {static_cast<std::int32_t>(std::min(aspect < 1.0F ? width / aspect : width, kLargest)),
            static_cast<std::int32_t>(std::min(aspect < 1.0F ? height : height * aspect, kLargest))};
}

bool allocateNoise(Frame& noise, ImgSize size, std::int32_t format, MemoryAllocator& allocator) {
    return noise.Allocate(size.width, size.height, BytesPerChannel(format), &allocator, MaskFormat(format), false);
}

/// Black-and-white noise about a middle grey, in one part or in several for threads.
void fillWithStatic(Frame& noise, float time) {
    const ImgSize size{noise.Width(), noise.Height()};
    const MemoryAllocator* threads = bandsForThreads(noise.Resources(), size).count() > 1 ? noise.Resources() : nullptr;
    std::uint32_t seed = staticSeed(time);
    GaussParts parts(seed, size, threads != nullptr);
    runTasks(threads, parts.count(), [&](std::int32_t part) {
        parts.measure(part);
        const auto rowBefore = [&](std::int32_t i) {
            return static_cast<std::int32_t>(std::int64_t{size.height} * i / parts.count());
        };
        const std::int32_t first = rowBefore(part);
        const ImgSize rows{size.width, rowBefore(part + 1) - first};
        if (rows.height > 0 && isFloatFormat(noise.Format())) {
            ImgSetFC1(noise.row<float>(first), noise.Stride(), 0.5F, rows);
        } else if (rows.height > 0) {
            ImgSet8C1(noise.row<std::uint8_t>(first), noise.Stride(), 127, rows);
        }
    });
    runTasks(threads, parts.count(), [&](std::int32_t part) {
        if (isFloatFormat(noise.Format())) {
            parts.addF(part, noise.row<float>(0), noise.Stride(), 0.0F, 0.5F);
        } else {
            parts.add8C1(part, noise.Data(), noise.Stride(), 0.0F, 127.0F);
        }
    });
}

/// Where the rows of the picture are taken from and what they look like there. Computed once for a frame.
class RowPlan {
public:
    RowPlan(const OldTVSettings& settings, const OldTVEvents& events, ImgSize size)
        : m_settings(settings), m_roll(events.roll), m_height(size.height) {
        if (events.tear) {
            m_stripCount = tearStrips(*events.tear, settings.severity, size.width, size.height, m_strips);
        }
        if (events.hasTube) {
            m_band = findBand(settings, size.height, events.cycleTime);
        }
    }

    /// The row before it is torn and rolled; -1 for a black one.
    [[nodiscard]] std::int32_t sourceOf(std::int32_t y) const { return m_roll ? m_roll->rowAt(y, m_height) : y; }
    [[nodiscard]] RowLook lookOf(std::int32_t y) const {
        const std::int32_t from = sourceOf(y);
        const bool hasLines = m_settings.intensity > kOldTVOff;
        return {turnOf(from), hasLines ? scanLineFactor(m_settings, m_height, m_height - 1 - from) : 1.0F,
                m_band.gainAt(y, m_height)};
    }

private:
    /// Strips stand in order from the bottom up.
    [[nodiscard]] std::int32_t turnOf(std::int32_t y) const {
        const auto strips = std::span(m_strips).first(m_stripCount);
        const auto found = std::ranges::partition_point(strips, [&](const TearStrip& strip) { return strip.top > y; });
        return found == strips.end() ? 0 : found->offset;
    }

    const OldTVSettings& m_settings;
    std::optional<RollEvent> m_roll;
    std::int32_t m_height;
    BrightBand m_band{};
    std::size_t m_stripCount = 0;
    std::array<TearStrip, kTearSteps> m_strips{};
};

Bands pictureBands(const RenderContext& context) {
    constexpr std::int32_t kMostBands = 64;  // each has its scratch
    return bandsForThreads(&context.allocator, {context.width, context.height}, context.height / kMostBands);
}

/// Bytes that a band works in: one row, and what its ghost takes.
struct BandScratch {
    BandScratch(const RenderContext& context, std::int32_t format)
        : rowBytes((std::int64_t{context.width} * formatBytesPerPixel(format) + 63) / 64 * 64),
          floats(rowBytes / static_cast<std::int64_t>(sizeof(float)) + (ghostFloats(context.width) + 15) / 16 * 16) {}
    std::int64_t rowBytes;
    std::int64_t floats;
};

}  // namespace

bool drawPicture(const Frame& source, Frame& picture, const OldTVSettings& settings, const OldTVEvents& events,
                 const RenderContext& context) noexcept {
    const std::int32_t format = source.Format();
    const std::int32_t width = context.width;
    const bool hasStatic = settings.noise > kOldTVOff;
    const ImgSize size{width, context.height};
    const ImgSize square = squareNoiseSize(context, isFloatFormat(format));
    const bool isSquare = square.width == size.width && square.height == size.height;
    const Bands bands = pictureBands(context);
    const BandScratch scratch(context, format);
    ScratchBlock block(context.allocator);
    block.add<float>(bands.count() * scratch.floats);
    Frame noise;
    if (!block.allocate() || (hasStatic && !allocateNoise(noise, size, format, context.allocator))) {
        return false;
    }
    if (hasStatic && isSquare) {
        fillWithStatic(noise, events.time);
    } else if (hasStatic) {
        Frame squareNoise;
        if (!allocateNoise(squareNoise, square, format, context.allocator)) {
            return false;
        }
        fillWithStatic(squareNoise, events.time);
        if (!FrameResizeInto(squareNoise, noise, kResizeLinear)) {
            return false;
        }
    }
    float matrix[3][4];
    BuildColorMatrix(settings.contrast, settings.brightness, settings.saturation, settings.hue, settings.tintColor,
                     settings.tint, format, matrix, true);
    // The height, not the width, measures the ghost's distance: its look depends on it.
    const auto shift = static_cast<std::int32_t>(settings.ghosting * 0.5F * static_cast<float>(size.height)) % width;
    const auto opacity = static_cast<std::uint8_t>(settings.noise * 255.0F);
    const RowPlan plan(settings, events, size);
    auto* floats = block.take<float>(bands.count() * scratch.floats);
    runTasks(bands.count() > 1 ? &context.allocator : nullptr, bands.count(), [&](std::int32_t band) {
        float* own = floats + band * scratch.floats;
        float* luma = own + scratch.rowBytes / static_cast<std::int64_t>(sizeof(float));
        Frame line;
        line.Wrap(own, width, 1, static_cast<std::int32_t>(scratch.rowBytes), source.BytesPerPixel(), format, false);
        for (std::int32_t y = bands.first(band); y < bands.first(band) + bands.rowsOf(band); ++y) {
            const std::int32_t from = plan.sourceOf(y);
            FrameRows shown(picture, y, 1);
            if (from < 0) {
                FrameFillColor(shown, 0xFF000000U);
                continue;
            }
            FrameRows row(source, from, 1);
            FrameColorMatrix(row, line, matrix);
            addGhost(line, shift, luma);
            if (hasStatic) {
                FrameRows grey(noise, from, 1);
                addStatic(line, grey, opacity);
            }
            showRow(line, shown, plan.lookOf(y));
        }
    });
    return true;
}

std::int64_t pictureScratch(const OldTVSettings& settings, const RenderContext& context, std::int32_t format) {
    const std::int32_t sampleBytes = BytesPerChannel(format);
    const ImgSize size{context.width, context.height};
    std::int64_t bytes = ScratchBlock::reserveFor(pictureBands(context).count() * BandScratch(context, format).floats *
                                                  static_cast<std::int64_t>(sizeof(float)));
    if (settings.noise > kOldTVOff) {
        const ImgSize square = squareNoiseSize(context, isFloatFormat(format));
        bytes += MemoryAllocator::ReserveForImage(size.width, size.height, sampleBytes) +
                 MemoryAllocator::ReserveForImage(square.width, square.height, sampleBytes) +
                 ScratchBlock::reserveFor(FrameResizeScratch(square, size, 1, kResizeLinear, context.allocator));
    }
    return bytes;
}

}  // namespace lumiset

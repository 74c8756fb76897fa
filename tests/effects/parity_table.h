#pragma once

// How far an effect's OpenGL renderer may be from the processor's.

#include <array>
#include <vector>

#include "tests/support/effect_tester.h"

namespace lumiset::test {

/// The frame that a comparison renders.
struct ParityFrame {
    std::int32_t width;
    const FrameRenderInfo* info;
    [[nodiscard]] double aspect() const {
        return (info->flags & FrameRenderInfo::kHasPixelAspect) != 0 ? info->pixelAspect : 1.0;
    }
    [[nodiscard]] bool isField() const { return (info->flags & FrameRenderInfo::kHasField) != 0; }
};

struct ParityRow {
    std::uint32_t index;
    Tolerance bytes;        ///< levels, 8-bit frames
    Tolerance floats;       ///< levels of 255, float frames
    const char* exception;  ///< what the renderers do differently by intent, or empty
    /// Makes those parts equal by changing a preset's values for either renderer; may be null.
    void (*makeEqual)(ValueHost& processor, ValueHost& gpu, const ParityFrame& frame) = nullptr;
    std::int32_t leastWidth = 0;  ///< narrower frames are compared opaque: nothing makes them equal otherwise
};

/// Outline's OpenGL renderer softens by at least three pixels, and multiplies the soft width by the pixel aspect once
/// more. A Soften that gives both of them four pixels or more is free of the first, a smaller one for the OpenGL
/// renderer of the second. (Ellipses of the size that these small frames give are grown in one exact pass.)
inline void makeOutlineEqual(ValueHost& processor, ValueHost& gpu, const ParityFrame& frame) {
    constexpr std::uint32_t kSoften = 1;
    const double leastPixels = frame.isField() ? 8.5 : 4.25;
    const double aspect = frame.aspect();
    const double least = leastPixels * std::max(aspect, 1.0) / (0.1 * frame.width);
    const auto soften =
        static_cast<float>(std::min(std::max(least, double{processor.values[kSoften].slider}), std::min(aspect, 1.0)));
    processor.values[kSoften].slider = soften;
    gpu.values[kSoften].slider = static_cast<float>(soften / aspect);
}

/// Old TV's static is another picture in OpenGL.
inline void makeOldTVEqual(ValueHost& processor, ValueHost& gpu, const ParityFrame&) {
    constexpr std::uint32_t kNoise = 1;
    processor.values[kNoise].slider = 0.0F;
    gpu.values[kNoise].slider = 0.0F;
}

/// Effects whose renderers differ by intent.
inline constexpr auto kParityExceptions = std::to_array<ParityRow>({
    {2, {3.0, 40.0}, {0.5, 40.0}, "least softness; softness with wide pixels", makeOutlineEqual, 10},
    {5, {6.0, 40.0}, {1.0, 40.0}, "whole-number gains in 8 bits"},
    {6, {24.0, 40.0}, {24.0, 40.0}, "marks of a few pixels, filtered by samples of their strokes"},
    {7, {32.0, 42.0}, {32.0, 42.0}, "the static's picture; sparks beside a bent row", makeOldTVEqual},
});

/// A row for every effect.
inline std::vector<ParityRow> parityRows() {
    std::vector<ParityRow> rows;
    for (std::uint32_t index = 0; index < effectCount(); ++index) {
        rows.push_back({index, {3.0, 40.0}, {1.0, 40.0}, ""});
    }
    for (const ParityRow& exception : kParityExceptions) {
        rows.at(exception.index) = exception;
    }
    return rows;
}

}  // namespace lumiset::test

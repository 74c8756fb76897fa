#include "frame/operations/color.h"

#include "frame/image_primitives.h"
#include "frame/operations/copy.h"
#include "frame/operations/operands.h"

namespace lumiset {
namespace {

constexpr float kLumaBgr[3] = {0.114F, 0.587F, 0.299F};
constexpr float kLumaRgb[3] = {0.299F, 0.587F, 0.114F};

/// Position of the first colour sample.
std::int32_t firstColor(const Frame& frame) {
    return AlphaIndex(frame.Format()) == 0 ? 1 : 0;
}

ImgColorOrder colorOrder(const Frame& frame) {
    return AlphaIndex(frame.Format()) == 0 ? ImgColorOrder::kRgb : ImgColorOrder::kBgr;
}

/// Runs one of a pair of hue conversions and copies alpha.
bool convertHue(const Frame& src, Frame& dst, decltype(&ImgRgbToHsv8A4) bytes, decltype(&ImgRgbToHsvFA4) floats) {
    if (!isColor(src) || !sameFormat(src, dst)) {
        return false;
    }
    const std::int32_t first = firstColor(src);
    const bool done =
        runEither(dst, sizeOf(src, dst), bytes, floats, planeOf(src, first), planeOf(dst, first), colorOrder(src));
    const std::int32_t alpha = AlphaIndex(src.Format());
    return done && (src.Data() == dst.Data() || FrameCopyChannel(src, dst, alpha, alpha));
}

bool areFloatArgb(const Frame& src, const Frame& dst) {
    return isSound(src) && isSound(dst) && src.Format() == kFormatArgbFloat && dst.Format() == kFormatArgbFloat;
}

/// A three by four matrix in memory order, as the primitives take it.
struct ColorMatrix {
    float rows[3][4];
};

// Both conversions are chains of a matrix, a scale and an offset per channel; each is folded into one matrix.

constexpr ColorMatrix foldColorToYuv() {
    constexpr double twist[3][4] = {
        {0.299, 0.587, 0.114, 0}, {-0.168736, -0.331264, 0.5, 0.5}, {0.5, -0.418688, -0.081312, 0.5}};
    constexpr double scale[3] = {0.8588235, 0.8784314, 0.8784314};
    constexpr double offset[3] = {0, 0.0627451, 0.0627451};
    ColorMatrix folded{};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            folded.rows[row][column] =
                static_cast<float>(twist[row][column] * scale[row] + (column == 3 ? offset[row] : 0.0));
        }
    }
    return folded;
}

constexpr ColorMatrix foldYuvToColor() {
    constexpr double before[3] = {0, -0.0627451, -0.0627451};
    constexpr double scale[3] = {1.1643835, 1.1383928, 1.1383928};
    constexpr double after[3] = {0, -0.5, -0.5};
    constexpr double twist[3][3] = {{1, 0, 1.402}, {1, -0.344, -0.714}, {1, 1.772, 0}};
    ColorMatrix folded{};
    for (int row = 0; row < 3; ++row) {
        double constant = 0;
        for (int column = 0; column < 3; ++column) {
            folded.rows[row][column] = static_cast<float>(twist[row][column] * scale[column]);
            constant += twist[row][column] * (before[column] * scale[column] + after[column]);
        }
        folded.rows[row][3] = static_cast<float>(constant);
    }
    return folded;
}

}  // namespace

bool FrameToLuma(const Frame& src, Frame& dst) noexcept {
    if (!isMask(dst) || src.Data() == nullptr) {
        return false;
    }
    const ImgSize size = sizeOf(src, dst);
    if (src.BytesPerPixel() == 3) {
        return !isFloat(dst) &&
               runPrimitive(dst, size, &ImgLuma8C3, PlaneOperand{src.Data(), src.Stride()}, planeOf(dst), kLumaBgr);
    }
    if (!isColor(src) || isFloat(src) != isFloat(dst)) {
        return false;
    }
    const std::int32_t first = firstColor(src);
    return runEither(dst, size, &ImgLuma8A4, &ImgLumaFA4, planeOf(src, first), planeOf(dst),
                     first == 0 ? kLumaBgr : kLumaRgb);
}

bool FrameRgbToHsv(const Frame& src, Frame& dst) noexcept {
    return convertHue(src, dst, &ImgRgbToHsv8A4, &ImgRgbToHsvFA4);
}

bool FrameHsvToRgb(const Frame& src, Frame& dst) noexcept {
    return convertHue(src, dst, &ImgHsvToRgb8A4, &ImgHsvToRgbFA4);
}

bool FrameAddRGB(const Frame& src, Frame& dst, float red, float green, float blue) noexcept {
    const float values[3] = {red, green, blue};
    return areFloatArgb(src, dst) &&
           runPrimitive(dst, sizeOf(src, dst), &ImgAddFA4, planeOf(src, 1), planeOf(dst, 1), values);
}

bool FrameMultiplyRGB(const Frame& src, Frame& dst, float red, float green, float blue) noexcept {
    const float values[3] = {red, green, blue};
    return areFloatArgb(src, dst) &&
           runPrimitive(dst, sizeOf(src, dst), &ImgMulFA4, planeOf(src, 1), planeOf(dst, 1), values);
}

bool FrameTwistRGB(const Frame& src, Frame& dst, const float matrix[3][4]) noexcept {
    return matrix != nullptr && areFloatArgb(src, dst) &&
           runPrimitive(dst, sizeOf(src, dst), &ImgColorTwistFA4, planeOf(src, 1), planeOf(dst, 1), matrix[0]);
}

bool FrameColorToYuv(const Frame& src, Frame& dst) noexcept {
    constexpr ColorMatrix kMatrix = foldColorToYuv();
    return FrameTwistRGB(src, dst, kMatrix.rows);
}

bool FrameYuvToColor(const Frame& src, Frame& dst) noexcept {
    constexpr ColorMatrix kMatrix = foldYuvToColor();
    return FrameTwistRGB(src, dst, kMatrix.rows);
}

}  // namespace lumiset

#include "frame/operations/color_transform.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "frame/image_primitives.h"
#include "frame/operations/copy.h"
#include "frame/operations/operands.h"

namespace lumiset {
namespace {

/// Weights of the three samples in grey.
constexpr double kWeights[3] = {0.3086, 0.6094, 0.082};

/// An affine map of row vectors: out = in * linear + offset.
struct Affine {
    double linear[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    double offset[3] = {};
};

/// First `a`, then `b`.
Affine operator*(const Affine& a, const Affine& b) {
    Affine product;
    for (int column = 0; column < 3; ++column) {
        product.offset[column] = b.offset[column];
        for (int k = 0; k < 3; ++k) {
            product.offset[column] += a.offset[k] * b.linear[k][column];
        }
        for (int row = 0; row < 3; ++row) {
            product.linear[row][column] = 0;
            for (int k = 0; k < 3; ++k) {
                product.linear[row][column] += a.linear[row][k] * b.linear[k][column];
            }
        }
    }
    return product;
}

/// Turns row vectors about one axis, from axis + 1 towards axis + 2.
Affine rotation(int axis, double degrees) {
    const double angle = degrees * std::numbers::pi / 180;
    const int from = (axis + 1) % 3;
    const int to = (axis + 2) % 3;
    Affine turn;
    turn.linear[from][from] = std::cos(angle);
    turn.linear[to][to] = std::cos(angle);
    turn.linear[from][to] = std::sin(angle);
    turn.linear[to][from] = -std::sin(angle);
    return turn;
}

Affine shear(double x, double y) {
    Affine sheared;
    sheared.linear[0][2] = x;
    sheared.linear[1][2] = y;
    return sheared;
}

/// Turns hue about the grey axis: tips that axis on to the third one, shears planes of equal brightness level,
/// turns, and undoes the rest.
Affine hueTurn(double degrees) {
    constexpr double kFirstTip = 45;
    constexpr double kSecondTip = -35;  // 35.264 would be exact
    const Affine tip = rotation(0, kFirstTip) * rotation(1, kSecondTip);
    double weights[3] = {};
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            weights[column] += kWeights[row] * tip.linear[row][column];
        }
    }
    const double x = weights[0] / weights[2];
    const double y = weights[1] / weights[2];
    return tip * shear(x, y) * rotation(2, degrees) * shear(-x, -y) * rotation(1, -kSecondTip) *
           rotation(0, -kFirstTip);
}

Affine saturate(double amount) {
    Affine mix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            mix.linear[row][column] = kWeights[row] * (1 - amount) + (row == column ? amount : 0);
        }
    }
    return mix;
}

/// Gain of a contrast setting: 0.2 to 4, 0.995 at the middle.
double contrastGain(double contrast) {
    constexpr double kMiddle = 0.4575;
    const double curved = contrast < 0.5 ? contrast * kMiddle / 0.5 : 1 - (1 - contrast) * (1 - kMiddle) / 0.5;
    return 3.8 * curved * curved + 0.2;
}

/// Rows of one plane that a chain of loops works on while they are in the processor's cache: the nearest one for the
/// three loops over floats, the next for the two over bytes, which gain more from long runs.
template <class Sample>
std::int32_t bandRows(std::int32_t rowBytes) {
    constexpr std::int32_t kBandBytes = sizeof(Sample) == sizeof(float) ? 32 * 1024 : 128 * 1024;
    return std::max(1, kBandBytes / std::max(1, rowBytes));
}

/// The adjustment of a few rows. A, R, G, B samples are turned over for it, so that every layout adds up the same
/// products in the same order.
template <class Sample>
ImgStatus adjustRows(const Sample* src, std::int32_t srcStep, Sample* dst, std::int32_t dstStep, const float* matrix,
                     bool alphaFirst, ImgSize size) {
    constexpr bool kIsFloat = sizeof(Sample) == sizeof(float);
    constexpr std::uint32_t kReversed[4] = {3, 2, 1, 0};
    const auto pick = []([[maybe_unused]] auto bytes, [[maybe_unused]] auto floats) {
        if constexpr (kIsFloat) {
            return floats;
        } else {
            return bytes;
        }
    };
    const auto twist = pick(&ImgColorTwist8A4, &ImgColorTwistFA4);
    ImgStatus status = kImgOk;
    if (alphaFirst) {
        const auto reorder = pick(&ImgReorderChannels8C4, &ImgReorderChannelsFC4);
        status = reorder(src, srcStep, dst, dstStep, kReversed, size);
        if (status == kImgOk) {
            status = twist(dst, dstStep, dst, dstStep, matrix, size);
        }
    } else {
        status = twist(src, srcStep, dst, dstStep, matrix, size);
        if (status == kImgOk && src != dst) {
            status = pick(&ImgCopyChannel8C4, &ImgCopyChannelFC4)(src + 3, srcStep, dst + 3, dstStep, size);
        }
    }
    if constexpr (kIsFloat) {
        if (status == kImgOk) {
            status = ImgClampRangeFA4(dst, dstStep, 0.0F, 1.0F, size);
        }
    }
    const auto swap = pick(&ImgSwapChannels8C4, &ImgSwapChannelsFC4);
    return status == kImgOk && alphaFirst ? swap(dst, dstStep, kReversed, size) : status;
}

template <class Sample>
bool adjust(const Frame& src, Frame& dst, const float* matrix) {
    const ImgSize size = sizeOf(src, dst);
    const std::int32_t rows = bandRows<Sample>(size.width * dst.BytesPerPixel());
    const bool alphaFirst = AlphaIndex(dst.Format()) == 0;
    return inBands(dst.Resources(), size, [&](std::int32_t first, std::int32_t count) {
        for (std::int32_t y = first; y < first + count; y += rows) {
            const ImgSize band{size.width, std::min(rows, first + count - y)};
            if (adjustRows(src.row<const Sample>(y), src.Stride(), dst.row<Sample>(y), dst.Stride(), matrix, alphaFirst,
                           band) != kImgOk) {
                return false;
            }
        }
        return true;
    });
}

}  // namespace

void BuildColorMatrix(float contrast, float brightness, float saturation, float hue, std::uint32_t tintColor,
                      float tintAmount, std::int32_t format, float matrix[3][4], bool keepOrder) noexcept {
    constexpr double kSaturationCurve = 1.58496;  // log2(3), so that 0.5 leaves the picture alone
    const double gain = contrastGain(contrast);
    const double scale = BytesPerChannel(format) == 1 ? 255 : 1;
    const double lift = (2.0 * brightness - 1) * scale;
    const double tint = (2.0 * tintAmount - 1) * scale;

    Affine offsets;
    Affine gains;
    for (int i = 0; i < 3; ++i) {
        const std::uint32_t level = (tintColor >> (8 * (2 - i))) & 0xFFU;  // the first sample is blue
        offsets.offset[i] = tint * (level / 255.0 - 0.5) + lift;
        gains.linear[i][i] = gain;
    }
    const Affine all = hueTurn(180 - 360 * static_cast<double>(hue)) *
                       saturate(3 * std::pow(std::max(0.0, static_cast<double>(saturation)), kSaturationCurve)) *
                       offsets * gains;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            matrix[row][column] = static_cast<float>(all.linear[column][row]);
        }
        matrix[row][3] = static_cast<float>(all.offset[row]);
    }
    if (!keepOrder) {
        std::swap(matrix[0], matrix[2]);
        for (int row = 0; row < 3; ++row) {
            std::swap(matrix[row][0], matrix[row][2]);
        }
    }
}

bool ColorAdjust(const Frame& source, Frame& destination, float contrast, float brightness, float saturation, float hue,
                 std::uint32_t tintColor, float tintAmount, MemoryAllocator* /*allocator*/) noexcept {
    for (const float setting : {contrast, brightness, saturation, hue, tintAmount}) {
        if (!std::isfinite(setting)) {
            return false;
        }
    }
    if (!isColor(source)) {
        return FrameCopy(source, destination);
    }
    if (!sameFormat(source, destination)) {
        return false;
    }
    float matrix[3][4];
    BuildColorMatrix(contrast, brightness, saturation, hue, tintColor, tintAmount, source.Format(), matrix, true);
    return FrameColorMatrix(source, destination, matrix);
}

bool FrameColorMatrix(const Frame& source, Frame& destination, const float matrix[3][4]) noexcept {
    if (!isColor(source) || !sameFormat(source, destination)) {
        return false;
    }
    return isFloat(source) ? adjust<float>(source, destination, matrix[0])
                           : adjust<std::uint8_t>(source, destination, matrix[0]);
}

bool FrameColorTransform(const Frame& src, Frame& dst, float brightness, float contrast, float hue, float saturation,
                         std::uint32_t tintColor, float tintStrength, MemoryAllocator* allocator) noexcept {
    return ColorAdjust(src, dst, contrast, brightness, saturation, hue, tintColor, tintStrength, allocator);
}

}  // namespace lumiset

#include "hostkit/mix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "host/pixel_format.h"
#include "hostkit/frame_buffer.h"

namespace lumiset::hostkit {
namespace {

/// Two neighbouring samples of a line and how much the second one counts.
struct Between {
    int first;
    int second;
    float position;
};

/// Where the middle of sample `i` of `to` lies in a line of `from` samples.
Between between(int i, int to, int from) {
    const double at = (static_cast<double>(i) + 0.5) * from / to - 0.5;
    const double whole = std::floor(at);
    const int first = static_cast<int>(whole);
    return {std::clamp(first, 0, from - 1), std::clamp(first + 1, 0, from - 1), static_cast<float>(at - whole)};
}

/// A mask's rows at a frame's size.
class StretchedMask {
public:
    StretchedMask(const Mask& mask, int width, int height) : m_mask(mask), m_height(height) {
        for (int x = 0; x < width; ++x) {
            m_columns.push_back(between(x, width, mask.width));
        }
    }

    void scaleRow(int y, float scale, std::vector<float>& weights) const {
        const Between rows = between(y, m_height, m_mask.height);
        const float* top = rowOf(rows.first);
        const float* bottom = rowOf(rows.second);
        for (std::size_t x = 0; x < m_columns.size(); ++x) {
            const Between& column = m_columns[x];
            const float above = std::lerp(top[column.first], top[column.second], column.position);
            const float below = std::lerp(bottom[column.first], bottom[column.second], column.position);
            weights[x] = std::clamp(std::lerp(above, below, rows.position), 0.0F, 1.0F) * scale;
        }
    }

private:
    const float* rowOf(int y) const { return m_mask.values.data() + static_cast<std::ptrdiff_t>(y) * m_mask.width; }

    const Mask& m_mask;
    int m_height;
    std::vector<Between> m_columns;
};

template <class Sample>
Sample rounded(float value) {
    if constexpr (std::is_same_v<Sample, float>) {
        return value;
    } else {
        return static_cast<Sample>(static_cast<std::int32_t>(value + 0.5F));
    }
}

template <class Sample, int kAlpha>
void mixRow(const void* source, void* result, const std::vector<float>& weights) {
    const auto* from = static_cast<const Sample*>(source);
    auto* to = static_cast<Sample*>(result);
    for (std::size_t x = 0; x < weights.size(); ++x, from += 4, to += 4) {
        const float weight = weights[x];
        const auto sourceAlpha = static_cast<float>(from[kAlpha]);
        const auto resultAlpha = static_cast<float>(to[kAlpha]);
        const float shown = resultAlpha * weight;
        const float sum = sourceAlpha * (1.0F - weight) + shown;
        const float part = sum > 0.0F ? shown / sum : weight;
        for (int c = 0; c < 4; ++c) {
            const float w = c == kAlpha ? weight : part;
            const auto a = static_cast<float>(from[c]);
            const auto b = static_cast<float>(to[c]);
            const float mixed = a * (1.0F - w) + b * w;
            // Chosen, not computed: no rounding, and what is not finite stays on its side.
            to[c] = weight <= 0.0F ? from[c] : weight >= 1.0F ? to[c] : rounded<Sample>(mixed);
        }
    }
}

using RowMix = void (*)(const void*, void*, const std::vector<float>&);

RowMix rowMix(std::uint32_t format) {
    if (isFloatFormat(format)) {
        return AlphaIndex(format) == 0 ? mixRow<float, 0> : mixRow<float, 3>;
    }
    return AlphaIndex(format) == 0 ? mixRow<std::uint8_t, 0> : mixRow<std::uint8_t, 3>;
}

}  // namespace

void mixFrames(const VideoFrameDesc& source, const VideoFrameDesc& result, const Mix& mix) {
    const int width = std::min(source.width, result.width);
    const int height = std::min(source.height, result.height);
    std::vector<float> weights(static_cast<std::size_t>(width), mix.strength);
    const RowMix mixOneRow = rowMix(result.format);
    std::unique_ptr<StretchedMask> mask;
    if (mix.mask != nullptr) {
        mask = std::make_unique<StretchedMask>(*mix.mask, width, height);
    }
    for (int y = 0; y < height; ++y) {
        if (mask != nullptr) {
            mask->scaleRow(y, mix.strength, weights);
        }
        mixOneRow(rowOf(source, y), rowOf(result, y), weights);
    }
}

}  // namespace lumiset::hostkit

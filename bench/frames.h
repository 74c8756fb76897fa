#pragma once

// The frames that everything is measured on. There are several of each kind, used in turn: a host streams frames
// through memory, so none of them is found in the processor's cache.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <vector>

#include "frame/frame.h"
#include "frame/primitives/status.h"

namespace lumiset::bench {

inline constexpr std::int32_t kWidth = 1920;
inline constexpr std::int32_t kHeight = 1080;

/// What the frames of a pool show: random samples, or something like a photograph with a few transparent parts, for
/// work whose cost depends on the picture.
enum class Content { kNoise, kPicture };

/// Frames of one format and size; floats in 0..1. They are made when they are first used.
class Pool {
public:
    explicit Pool(std::int32_t format, std::int32_t width = kWidth, std::int32_t height = kHeight,
                  Content content = Content::kNoise, std::size_t leastFrames = 2)
        : m_format(format), m_width(width), m_height(height), m_content(content), m_leastFrames(leastFrames) {}

    [[nodiscard]] Frame& operator[](std::size_t n) const {
        if (m_frames.empty()) {
            make();
        }
        return *m_frames[n % m_frames.size()];
    }
    /// The n-th frame's samples.
    [[nodiscard]] std::uint8_t* bytes(std::size_t n) const { return (*this)[n].Data(); }
    [[nodiscard]] float* floats(std::size_t n) const { return reinterpret_cast<float*>(bytes(n)); }
    /// Bytes from row to row, the same for all frames.
    [[nodiscard]] std::int32_t step() const { return (*this)[0].Stride(); }
    [[nodiscard]] ImgSize size() const { return {(*this)[0].Width(), (*this)[0].Height()}; }
    /// The n-th frame as OpenCV sees it.
    [[nodiscard]] cv::Mat mat(std::size_t n) const;

private:
    void make() const;

    std::int32_t m_format;
    std::int32_t m_width;
    std::int32_t m_height;
    Content m_content;
    std::size_t m_leastFrames;
    mutable std::vector<std::unique_ptr<Frame>> m_frames;
};

struct Frames {
    Pool a8{kFormatBgra8};
    Pool b8{kFormatBgra8};
    Pool out8{kFormatBgra8};
    Pool aF{kFormatBgraFloat};
    Pool bF{kFormatBgraFloat};
    Pool outF{kFormatBgraFloat};
    Pool argbF{kFormatArgbFloat};
    Pool argbOutF{kFormatArgbFloat};
    Pool aMask8{kFormatMask8};
    Pool bMask8{kFormatMask8};
    Pool aMaskF{kFormatMaskFloat};
    Pool bMaskF{kFormatMaskFloat};
    Pool picture8{kFormatBgra8, kWidth, kHeight, Content::kPicture};
    Pool pictureF{kFormatBgraFloat, kWidth, kHeight, Content::kPicture};
    Pool yuv422{kFormatMask8, 2 * kWidth};  ///< packed 4:2:2: two bytes a pixel
    Pool small8{kFormatBgra8, 853, 480};
    Pool smallF{kFormatBgraFloat, 853, 480};
    Pool smallMask8{kFormatMask8, 853, 480};
};

/// Made at the first call.
Frames& frames();

}  // namespace lumiset::bench

#pragma once

// Pictures as hosts keep them, in every layout, and the picture that the host kit renders from the same pixels.

#include <cstring>
#include <random>

#include "hostkit/frame_buffer.h"
#include "hostkit/module.h"
#include "hostkit/renderer.h"
#include "tests/openfx/ofx_host.h"

namespace lumiset::openfx::test {

struct Layout {
    const char* depth = "OfxBitDepthByte";
    int channels = 4;
    const char* alpha = "OfxImageAlphaUnPremultiplied";
    RectI bounds{0, 0, 64, 48};
    int padding = 0;       ///< bytes behind a row
    bool topDown = false;  ///< negative row bytes
    bool blueFirst = false;

    [[nodiscard]] bool is(const char* name) const { return std::strcmp(depth, name) == 0; }
    [[nodiscard]] int sampleBytes() const { return is("OfxBitDepthByte") ? 1 : is("OfxBitDepthFloat") ? 4 : 2; }
    [[nodiscard]] int width() const { return bounds.x2 - bounds.x1; }
    [[nodiscard]] int height() const { return bounds.y2 - bounds.y1; }
    [[nodiscard]] int stride() const { return width() * channels * sampleBytes() + padding; }
    /// Place in memory of a sample; y counts from the picture's top, channels are red, green, blue, alpha.
    [[nodiscard]] std::size_t place(int x, int y, int channel) const {
        const int stored = topDown ? y : height() - 1 - y;
        const int sample = blueFirst && channel < 3 ? 2 - channel : channel;
        return static_cast<std::size_t>(kGuard + stored * stride() + (x * channels + sample) * sampleBytes());
    }
    static constexpr int kGuard = 64;
};

// One sample of each depth, by formulas of its own.

inline float sampleAt(const Layout& layout, const std::uint8_t* at) {
    if (layout.is("OfxBitDepthByte")) {
        return static_cast<float>(*at / 255.0);
    }
    if (layout.is("OfxBitDepthFloat")) {
        float value = 0.0F;
        std::memcpy(&value, at, 4);
        return value;
    }
    if (layout.is("OfxBitDepthHalf")) {
        __extension__ _Float16 value = 0;
        std::memcpy(&value, at, 2);
        return static_cast<float>(value);
    }
    std::uint16_t value = 0;
    std::memcpy(&value, at, 2);
    return static_cast<float>(value / 65535.0);
}

inline void putSample(const Layout& layout, std::uint8_t* at, float value) {
    const double limited = value > 0.0F ? std::min(static_cast<double>(value), 1.0) : 0.0;
    if (layout.is("OfxBitDepthByte")) {
        // As the host kit: in single precision.
        *at = static_cast<std::uint8_t>(static_cast<float>(limited) * 255.0F + 0.5F);
    } else if (layout.is("OfxBitDepthFloat")) {
        std::memcpy(at, &value, 4);
    } else if (layout.is("OfxBitDepthHalf")) {
        __extension__ const auto half = static_cast<_Float16>(value);
        std::memcpy(at, &half, 2);
    } else {
        const auto word = static_cast<std::uint16_t>(static_cast<float>(limited) * 65535.0F + 0.5F);
        std::memcpy(at, &word, 2);
    }
}

/// Makes a picture of that layout: random pixels between guards, or guards alone.
inline std::unique_ptr<Picture> makePicture(const Layout& layout, unsigned seed) {
    auto picture = std::make_unique<Picture>();
    picture->memory.assign(static_cast<std::size_t>(layout.stride() * layout.height() + 2 * Layout::kGuard), 0xA7);
    std::mt19937 random(seed);
    for (int y = 0; y < layout.height() && seed != 0; ++y) {
        for (int x = 0; x < layout.width(); ++x) {
            // Every third pixel is opaque, every ninth clear; colours of premultiplied ones stay below alpha.
            const float alpha = (x + y) % 3 == 0   ? 1.0F
                                : (x + y) % 9 == 1 ? 0.0F
                                                   : static_cast<float>(random() % 256) / 255.0F;
            const bool bounded = std::strcmp(layout.alpha, "OfxImageAlphaPremultiplied") == 0;
            for (int channel = 0; channel < layout.channels; ++channel) {
                float value = static_cast<float>(random() % 1000) / 999.0F * (bounded ? alpha : 1.0F);
                value = channel == 3 ? alpha : value;
                putSample(layout, picture->memory.data() + layout.place(x, y, channel), value);
            }
        }
    }
    const int sign = layout.topDown ? -1 : 1;
    PropertySet& props = picture->props;
    const RectI& bounds = layout.bounds;
    props.put("OfxImagePropData",
              {static_cast<void*>(picture->memory.data() + layout.place(0, layout.height() - 1, 0) -
                                  static_cast<std::size_t>(layout.blueFirst ? 2 * layout.sampleBytes() : 0))});
    props.put("OfxImagePropBounds", {bounds.x1, bounds.y1, bounds.x2, bounds.y2});
    props.put("OfxImagePropRegionOfDefinition", {bounds.x1, bounds.y1, bounds.x2, bounds.y2});
    props.put("OfxImagePropRowBytes", {sign * layout.stride()});
    props.put("OfxImageEffectPropPixelDepth", {std::string(layout.depth)});
    props.put("OfxImageEffectPropComponents",
              {std::string(layout.channels == 4 ? "OfxImageComponentRGBA" : "OfxImageComponentRGB")});
    props.put("OfxImageEffectPropPreMultiplication", {std::string(layout.alpha)});
    props.put("OfxImagePropField", {std::string("OfxFieldNone")});
    props.put("OfxImageEffectPropRenderScale", {1.0, 1.0});
    props.put("OfxImagePropPixelAspectRatio", {1.0});
    if (layout.blueFirst) {
        props.put("OfxImageEffectPropPixelOrder", {std::string("OfxImagePixelOrderBGRA")});
    }
    return picture;
}

/// In how many bytes two memories differ, and how; empty for none.
inline std::string difference(const std::vector<std::uint8_t>& found, const std::vector<std::uint8_t>& expected) {
    std::size_t count = found.size() == expected.size() ? 0 : 1;
    std::string first = "the sizes";
    for (std::size_t i = 0; i < std::min(found.size(), expected.size()); ++i) {
        if (found[i] != expected[i] && count++ == 0) {
            first = "byte " + std::to_string(i) + " is " + std::to_string(found[i]) + " instead of " +
                    std::to_string(expected[i]);
        }
    }
    return count > 0 ? std::to_string(count) + " of " + std::to_string(found.size()) + ", first " + first : "";
}

/// The picture as the host kit takes it: straight alpha, in floats unless it is of bytes.
inline hostkit::FrameBuffer frameOf(const Layout& layout, const Picture& picture, bool bytes) {
    hostkit::FrameBuffer frame(layout.width(), layout.height(), bytes ? kFormatBgra8 : kFormatBgraFloat);
    for (int y = 0; y < layout.height(); ++y) {
        for (int x = 0; x < layout.width(); ++x) {
            float pixel[4] = {0.0F, 0.0F, 0.0F, 1.0F};
            for (int channel = 0; channel < layout.channels; ++channel) {
                pixel[channel] = sampleAt(layout, picture.memory.data() + layout.place(x, y, channel));
            }
            const bool opaque = std::strcmp(layout.alpha, "OfxImageOpaque") == 0;
            pixel[3] = opaque ? 1.0F : pixel[3];
            const bool divided = std::strcmp(layout.alpha, "OfxImageAlphaPremultiplied") == 0 && pixel[3] > 0.0F;
            for (int i = 0; i < 4; ++i) {
                const int channel = i == 3 ? 3 : 2 - i;
                const float value = channel < 3 && divided ? pixel[channel] / pixel[3] : pixel[channel];
                if (bytes) {
                    // The quotient of whole numbers, whose ties go up.
                    const auto byteOf = [&](int of) { return std::round(static_cast<double>(pixel[of]) * 255.0); };
                    const double alpha = channel < 3 && divided ? byteOf(3) : 255.0;
                    const double straight = std::floor(byteOf(channel) * 255.0 / alpha + 0.5);
                    frame.row(y)[4 * x + i] = static_cast<std::uint8_t>(std::min(straight, 255.0));
                } else {
                    reinterpret_cast<float*>(frame.row(y))[4 * x + i] = value;
                }
            }
        }
    }
    return frame;
}

/// Stores the kit's picture in a host's memory, those rows from the top for which `rows` says so.
inline void storeFrame(const hostkit::FrameBuffer& frame, const Layout& layout, std::vector<std::uint8_t>& memory,
                       const std::function<bool(int x, int y)>& wanted) {
    const bool bytes = frame.format() == kFormatBgra8;
    const bool covers = std::strcmp(layout.alpha, "OfxImageAlphaUnPremultiplied") != 0 || layout.channels == 3;
    const bool isOpaque = std::strcmp(layout.alpha, "OfxImageOpaque") == 0;
    for (int y = 0; y < layout.height(); ++y) {
        for (int x = 0; x < layout.width(); ++x) {
            for (int channel = 0; channel < layout.channels && wanted(x, y); ++channel) {
                std::uint8_t* at = memory.data() + layout.place(x, y, channel);
                const std::size_t from = static_cast<std::size_t>(4 * x + (channel == 3 ? 3 : 2 - channel));
                const auto alphaAt = static_cast<std::size_t>(4 * x + 3);
                if (bytes) {
                    const double alpha = covers && channel < 3 ? frame.row(y)[alphaAt] / 255.0 : 1.0;
                    *at = channel == 3 && isOpaque ? 255
                                                   : static_cast<std::uint8_t>(std::lround(frame.row(y)[from] * alpha));
                } else {
                    const auto* row = reinterpret_cast<const float*>(frame.row(y));
                    const float alpha = covers && channel < 3 ? row[alphaAt] : 1.0F;
                    putSample(layout, at, channel == 3 && isOpaque ? 1.0F : row[from] * alpha);
                }
            }
        }
    }
}

/// The module that pictures are held against, loaded apart from the bundle's.
struct Reference {
    hostkit::Module module{LUMISET_MODULE_FILE};
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};

    [[nodiscard]] hostkit::FrameBuffer render(const hostkit::ParameterStore& values, const VideoFrameDesc& source,
                                              const hostkit::FrameContext& context) const {
        const auto format = static_cast<PixelFormat>(source.format);
        hostkit::FrameBuffer result(source.width, source.height, format);
        const std::vector<hostkit::EffectStage> chain{
            {hostkit::ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(values.effect().index)),
             values}};
        hostkit::Renderer(chain, format).render(source, result.desc(), context);
        return result;
    }
};
inline const Reference& reference() {
    static const Reference all;
    return all;
}

}  // namespace lumiset::openfx::test

#include "adapters/openfx/image.h"

#include <algorithm>

#include "adapters/openfx/abi/names.h"

namespace lumiset::openfx {
namespace {

Depth depthOf(const std::string& name) {
    if (name == value::kDepthByte) {
        return Depth::kByte;
    }
    if (name == value::kDepthShort) {
        return Depth::kShort;
    }
    if (name == value::kDepthHalf) {
        return Depth::kHalf;
    }
    if (name == value::kDepthFloat) {
        return Depth::kFloat;
    }
    throw ImageFormatError("The host hands out pictures of the depth \"" + name + "\", which effects do not know.");
}

int channelsOf(const std::string& name) {
    if (name != value::kRgba && name != value::kRgb) {
        throw ImageFormatError("The host hands out pictures of \"" + name + "\"; effects need RGBA or RGB.");
    }
    return name == value::kRgba ? 4 : 3;
}

Alpha alphaOf(const std::string& name, int channels) {
    return channels == 3 || name == value::kOpaque ? Alpha::kOpaque
           : name == value::kPremultiplied         ? Alpha::kPremultiplied
                                                   : Alpha::kStraight;
}

bool contains(const RectI& outer, const RectI& inner) {
    return inner.x1 >= outer.x1 && inner.y1 >= outer.y1 && inner.x2 <= outer.x2 && inner.y2 <= outer.y2;
}

}  // namespace

RectI intersection(const RectI& a, const RectI& b) {
    return {std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2)};
}

Image::Image(const Instance& instance, ClipHandle clip, double time) : m_host(instance.host()) {
    if (m_host.effect->clipGetImage(clip, time, nullptr, &m_handle) != kOk) {
        m_handle = nullptr;
    }
    if (m_handle != nullptr) {
        try {
            read();
        } catch (...) {
            m_host.effect->clipReleaseImage(m_handle);
            throw;
        }
    }
}

Image::~Image() {
    if (m_handle != nullptr) {
        m_host.effect->clipReleaseImage(m_handle);
    }
}

// Each picture tells what it is: there are hosts that hand out others than were agreed on.
void Image::read() {
    constexpr int kLongest = 1 << 20;
    const Properties image = properties();
    m_pixels.data = static_cast<std::uint8_t*>(image.getPointer(prop::kData));
    m_pixels.bounds = image.getRectI(prop::kBounds).value_or(RectI{});
    m_pixels.rowBytes = image.getInt(prop::kRowBytes, 0);
    m_pixels.depth = depthOf(image.getString(prop::kPixelDepth));
    m_pixels.channels = channelsOf(image.getString(prop::kComponents));
    m_pixels.blueFirst = image.getString(prop::kPixelOrder) == value::kPixelOrderBgra;
    m_pixels.alpha = alphaOf(image.getString(prop::kPremultiplication), m_pixels.channels);
    const RectI& bounds = m_pixels.bounds;
    const std::int64_t width = std::int64_t{bounds.x2} - bounds.x1;
    const std::int64_t height = std::int64_t{bounds.y2} - bounds.y1;
    if (m_pixels.data == nullptr || width < 1 || height < 1 || width > kLongest || height > kLongest ||
        (height > 1 && std::abs(m_pixels.rowBytes) < width * m_pixels.pixelBytes())) {
        throw ImageFormatError("The host hands out a picture without pixels.");
    }
}

RectI Image::picture() const {
    const RectI region = properties().getRectI(prop::kRegionOfDefinition).value_or(RectI{});
    return !isEmpty(region) && contains(m_pixels.bounds, region) ? region : m_pixels.bounds;
}

std::string Image::field() const {
    return properties().getString(prop::kField);
}

double Image::pixelAspect() const {
    const double aspect = properties().getDouble(prop::kPixelAspect, 0.0);
    const std::optional<PointD> scale = properties().getPointD(prop::kRenderScale);
    // A picture that is made smaller in one direction more than in the other has pixels of another shape.
    const bool isScaled = scale && scale->x > 0.0 && scale->y > 0.0;
    return aspect > 0.0 ? (isScaled ? aspect * scale->y / scale->x : aspect) : 0.0;
}

}  // namespace lumiset::openfx

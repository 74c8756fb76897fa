#include "apps/studio/core/export_sizes.h"

#include <algorithm>
#include <cmath>

#include "media/resize.h"

namespace lumiset::studio {
namespace {

constexpr int kUsualSides[] = {2160, 1440, 1080, 720, 480, 360, 240};  // the shorter ones

}  // namespace

std::vector<Size> exportSizes(const media::VideoFormat& format) {
    const double across = format.width * std::max(format.pixelAspect.value(), 1e-3);
    const double shape = across / format.height;
    std::vector<Size> sizes = {{format.width, format.height}};
    if (std::abs(across - format.width) >= 1.0) {
        sizes.push_back({media::evenSide(across), format.height});
    }
    for (const int side : kUsualSides) {
        const Size smaller =
            shape < 1.0 ? Size{side, media::evenSide(side / shape)} : Size{media::evenSide(side * shape), side};
        if (smaller.height < format.height && std::min(smaller.width, smaller.height) >= media::kSmallestSide &&
            std::max(smaller.width, smaller.height) <= media::kLargestSide) {
            sizes.push_back(smaller);
        }
    }
    return sizes;
}

}  // namespace lumiset::studio

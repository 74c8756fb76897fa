#include "effects/viewfinder/strokes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumiset {

float strokeCoverage(const StrokeShape& shape, float x, float y) {
    const float centreX = x + 0.5F;
    const float centreY = y + 0.5F;
    float outside = std::numeric_limits<float>::max();
    for (std::size_t i = 0; i < shape.count; ++i) {
        const Stroke& stroke = shape.strokes[i];
        const float alongX = stroke.x1 - stroke.x0;
        const float alongY = stroke.y1 - stroke.y0;
        const float fromX = centreX - stroke.x0;
        const float fromY = centreY - stroke.y0;
        const float square = alongX * alongX + alongY * alongY;
        const float share = square > 0.0F ? std::clamp((fromX * alongX + fromY * alongY) / square, 0.0F, 1.0F) : 0.0F;
        outside = std::min(outside, std::hypot(fromX - share * alongX, fromY - share * alongY) - stroke.radius);
    }
    return std::clamp(0.5F - outside, 0.0F, 1.0F);
}

}  // namespace lumiset

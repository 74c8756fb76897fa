#pragma once

// The corner-pinned mask that effects share: full outside a shape pinned to four corners, nothing inside, with a soft
// edge where the user wants one.

#include "effects/corner_mask/corner_outline.h"
#include "effects/effect.h"

namespace lumiset {

/// Where an effect with a corner-pinned mask has its parameters.
enum CornerMaskParam : std::uint32_t {
    kMaskTopLeft = 1,
    kMaskTopRight,
    kMaskBottomLeft,
    kMaskBottomRight,
    kMaskCurve,
    kMaskFeather,
    kMaskTest,
    kMaskGroupEnd,
};

struct CornerMaskSettings {
    CornerShape shape;
    float feather;  ///< 0..1
    bool invert;    ///< full inside instead
};
CornerMaskSettings readCornerMask(const ParamReader& params, bool invert);

/// How an edge is softened: by a triangular blur, for wide ones of a smaller copy of the mask.
struct MaskFeather {
    bool visible;
    std::int32_t copyWidth;  ///< the frame's own size where no smaller copy is made
    std::int32_t copyHeight;
    float blurWidth;  ///< in pixels of the copy
    float blurHeight;
};
MaskFeather maskFeather(float feather, const FrameFacts& facts);

/// Makes `mask`, a mask of the depth of `format` with its first row at the picture's top. False when there is no
/// memory.
bool makeCornerMask(const CornerMaskSettings& settings, const RenderContext& context, std::int32_t format, Frame& mask);

}  // namespace lumiset

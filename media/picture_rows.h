#pragma once

// Rows of pictures of straight BGRA as zimg takes and gives them, of whole pictures or of one of their fields. Pictures
// must outlive the rows.

#include "media/yuv_rows.h"
#include "media/zimg_graph.h"

namespace lumiset::media {

/// Writes planes of the picture's own depth into it; grey ones stand for all three colours.
[[nodiscard]] ZimgGraph::Rows packInto(Picture& picture, int field, bool grey, bool alpha);
/// Writes planes of YUV into a picture of 8 bits.
[[nodiscard]] ZimgGraph::Rows packYuvInto(Picture& picture, int field, bool alpha, const YuvWeights& weights);
/// Reads planes of the picture's own depth. Rows and pixels beyond the picture repeat its last ones.
[[nodiscard]] ZimgGraph::Rows splitFrom(const Picture& picture, int field, bool alpha);
/// Reads planes of YUV of a picture of 8 bits.
[[nodiscard]] ZimgGraph::Rows splitToYuvFrom(const Picture& picture, int field, bool alpha, const YuvWeights& weights);

}  // namespace lumiset::media

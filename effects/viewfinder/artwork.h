#pragma once

#include <cstdint>

#include "effects/viewfinder/plan.h"

namespace lumiset {

/// How much of every pixel a picture covers, 0..255: its rows of all cells, one byte a pixel without padding. Decoded
/// at the first call, by whichever thread comes first, and kept for good; null when there is no memory for it.
const std::uint8_t* artworkCoverage(Artwork artwork) noexcept;

}  // namespace lumiset

#pragma once

#include <optional>
#include <string_view>

#include "media/media.h"

namespace lumiset::media {

/// Pictures a second as people write them: a whole number, a decimal, or a ratio such as 30000/1001. The decimals that
/// stand for the rates of NTSC, "29.97" or "23.976", become these. Nothing for what is no rate, and for less than
/// 0.001 or more than 10,000 pictures a second.
std::optional<Rational> parseRate(std::string_view text);

}  // namespace lumiset::media

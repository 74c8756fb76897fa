#include "media/rate.h"

#include <cmath>

#include "hostkit/parameter_text.h"

namespace lumiset::media {
namespace {

constexpr double kLargestRate = 1e4;

std::optional<Rational> ratio(double num, double den) {
    const bool whole = num == std::floor(num) && den == std::floor(den);
    const bool small = num >= 1.0 && num <= 1e7 && den >= 1.0 && den <= 1e7;
    return whole && small && num / den >= 1e-3 && num / den <= kLargestRate
               ? std::optional(Rational{static_cast<int>(num), static_cast<int>(den)})
               : std::nullopt;
}

}  // namespace

std::optional<Rational> parseRate(std::string_view text) {
    const std::size_t slash = text.find('/');
    double num = 0.0;
    double den = 1.0;
    if (!hostkit::parseNumber(text.substr(0, slash), num)) {
        return std::nullopt;
    }
    if (slash != std::string_view::npos) {
        return hostkit::parseNumber(text.substr(slash + 1), den) ? ratio(num, den) : std::nullopt;
    }
    // 23.976 and 23.98 both mean 24000/1001.
    const double ntsc = std::round(num * 1.001);
    const bool isNtsc = num != std::round(num) && ntsc >= 24.0 && std::abs(ntsc / 1.001 - num) < 0.005;
    return isNtsc                   ? ratio(ntsc * 1000.0, 1001.0)
           : num == std::round(num) ? ratio(num, 1.0)
                                    : ratio(std::round(num * 1000.0), 1000.0);
}

}  // namespace lumiset::media

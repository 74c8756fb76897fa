#include "effects/gpu_image_ops.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace lumiset {
namespace {

/// Half axes in whole texels.
struct HalfAxes {
    std::int32_t x;
    std::int32_t y;
    [[nodiscard]] std::int32_t larger() const { return std::max(x, y); }
};

constexpr std::int32_t kExactRadius = 12;  ///< largest half axis of the ellipse that is done exactly
constexpr double kGrowth = 2.85;           ///< of one pass; below 3, or the ring and the centre leave a gap between
constexpr double kNotch = 0.4;             ///< texels between the drawn edge and the ellipse, from one ring
constexpr std::int32_t kDensePoints = 8;   ///< on a quarter of a ring, at least, where it has so many texels

/// The ellipse after pass `pass` of `passes`, in geometric steps from the exact size to the whole one.
HalfAxes grownAfter(HalfAxes whole, int pass, int passes) {
    if (pass == passes) {
        return whole;
    }
    const double share = std::pow(static_cast<double>(kExactRadius) / whole.larger(),
                                  static_cast<double>(passes - pass) / static_cast<double>(passes));
    return {static_cast<std::int32_t>(std::lround(whole.x * share)),
            static_cast<std::int32_t>(std::lround(whole.y * share))};
}

/// Points on a quarter of a ring by which an ellipse of half axis r grows to R: between two points at the angle a
/// the edge is (R - r) (1 - cos(a / 2)) R / r short. Small rings have every texel of their boundary: left out ones
/// would show as corners.
std::int32_t quarterPoints(std::int32_t from, std::int32_t to) {
    const double reach = static_cast<double>(to - from) * to / from;
    const double halfAngle = std::sqrt(2.0 * kNotch / reach);
    const auto forTheNotch = static_cast<std::int32_t>(std::ceil(std::numbers::pi / 4.0 / halfAngle));
    return std::max(forTheNotch, std::min((3 * (to - from) + 1) / 2, kDensePoints));
}

}  // namespace

void growByEllipse(PicturePasses& passes, std::size_t ellipse, std::size_t ring, EllipseSize size) noexcept {
    HalfAxes whole{size.width / 2, size.height / 2};
    const bool empty = whole.x < 1 || whole.y < 1;
    if (empty) {
        whole = {0, 0};
    }
    const double growth = static_cast<double>(whole.larger()) / kExactRadius;
    const int rings = growth > 1.0 ? static_cast<int>(std::ceil(std::log(growth) / std::log(kGrowth))) : 0;
    HalfAxes done = rings == 0 ? whole : grownAfter(whole, 0, rings);
    for (int step = empty ? 1 : 0; step < 2; ++step) {
        passes.draw(ellipse, [&](ShaderProgram& program) {
            program.SetInt("step", step);
            program.SetFloat2("radius", static_cast<float>(done.x), static_cast<float>(done.y));
            // An ellipse without rows is left out whole.
            program.SetFloat2("evenSize", empty || size.width % 2 == 0 ? 1.0F : 0.0F,
                              empty || size.height % 2 == 0 ? 1.0F : 0.0F);
        });
    }
    for (int i = 1; i <= rings; ++i) {
        const HalfAxes next = grownAfter(whole, i, rings);
        const std::int32_t points = quarterPoints(done.larger(), next.larger());
        const double angle = std::numbers::pi / 2.0 / points;
        passes.draw(ring, [&](ShaderProgram& program) {
            program.SetFloat2("radius", static_cast<float>(next.x - done.x), static_cast<float>(next.y - done.y));
            program.SetInt("quarterPoints", points);
            program.SetFloat2("turn", static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)));
        });
        done = next;
    }
}

}  // namespace lumiset

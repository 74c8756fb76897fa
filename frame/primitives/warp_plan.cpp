#include "frame/primitives/warp_plan.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumiset {
namespace {

/// Distances that count as nothing, in pixels.
constexpr double kHair = 1.0 / 1024;
constexpr double kInsideMargin = kHair;
constexpr double kTouchedMargin = 1 - kHair;

/// Whole numbers from `low` to `high`, limited to `limits`.
PixelSpan wholeNumbers(double low, double high, const PixelSpan& limits) {
    const double first = std::ceil(std::max(low, static_cast<double>(limits.first)));
    const double last = std::floor(std::min(high, static_cast<double>(limits.last)));
    if (!(first <= last)) {
        return {0, -1};
    }
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(last)};
}

}  // namespace

void WarpPlan::setSide(int index, double a, double b, double c) {
    const double length = std::hypot(a, b);
    Side& side = m_sides[index];
    side = {a / length, b / length, c / length, 0};
    if (std::abs(side.a) > 1e-9) {
        side.inverseA = 1 / side.a;
    }
}

PixelSpan WarpPlan::spanAt(double y, double margin, const PixelSpan& widest) const {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    for (const Side& side : m_sides) {
        const double need = -margin - side.b * y - side.c;  // a x >= need
        if (side.inverseA > 0) {
            low = std::max(low, need * side.inverseA);
        } else if (side.inverseA < 0) {
            high = std::min(high, need * side.inverseA);
        } else if (need > 0) {
            return {0, -1};
        }
    }
    return wholeNumbers(low, high, widest);
}

RowSpans WarpPlan::spansOf(std::int32_t y) const {
    return {spanAt(y, kInsideMargin, m_widest.inside), spanAt(y, kTouchedMargin, m_widest.touched)};
}

double WarpPlan::coverage(std::int32_t x, std::int32_t y) const {
    double product = 1;
    for (const Side& side : m_sides) {
        product *= std::clamp(1 + side.at(x, y), 0.0, 1.0);
    }
    return product;
}

std::optional<WarpPlan> WarpPlan::ofMatrix(ImgSize srcSize, const double (*m)[3], ImgSize dstSize) noexcept {
    WarpPlan plan{};
    plan.lastColumn = srcSize.width - 1;
    plan.lastRow = srcSize.height - 1;
    const double det = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    const double inverse[2][3] = {{m[1][1] / det, -m[0][1] / det, (m[0][1] * m[1][2] - m[1][1] * m[0][2]) / det},
                                  {-m[1][0] / det, m[0][0] / det, (m[1][0] * m[0][2] - m[0][0] * m[1][2]) / det}};
    for (int i = 0; i < 2; ++i) {
        for (int k = 0; k < 3; ++k) {
            if (!(std::abs(inverse[i][k]) < 1e9)) {
                return std::nullopt;
            }
            plan.matrix[i][k] = inverse[i][k];
        }
        const double* row = inverse[i];
        plan.setSide(2 * i, row[0], row[1], row[2]);
        plan.setSide(2 * i + 1, -row[0], -row[1], (i == 0 ? plan.lastColumn : plan.lastRow) - row[2]);
    }
    // Where the four corners come to lie: pixels outside their bounds are touched by no side.
    const auto spanOf = [&](const double* row, double margin, std::int32_t length) {
        const double right = row[0] * plan.lastColumn;
        const double down = row[1] * plan.lastRow;
        const auto [low, high] = std::minmax({row[2], row[2] + right, row[2] + down, row[2] + right + down});
        return wholeNumbers(low - margin, high + margin, {0, length - 1});
    };
    plan.m_rows = spanOf(m[1], kTouchedMargin, dstSize.height);
    plan.m_widest = {spanOf(m[0], kInsideMargin, dstSize.width), spanOf(m[0], kTouchedMargin, dstSize.width)};
    return plan;
}

}  // namespace lumiset

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
constexpr double kSmallestArea = 1e-6;

double cross(const ImgPoint& a, const ImgPoint& b, const ImgPoint& c) {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

/// Whole numbers from `low` to `high`, limited to `limits`.
PixelSpan wholeNumbers(double low, double high, const PixelSpan& limits) {
    const double first = std::ceil(std::max(low, static_cast<double>(limits.first)));
    const double last = std::floor(std::min(high, static_cast<double>(limits.last)));
    if (!(first <= last)) {
        return {0, -1};
    }
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(last)};
}

PixelSpan common(const PixelSpan& a, const PixelSpan& b) {
    return {std::max(a.first, b.first), std::min(a.last, b.last)};
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

RowSpans WarpPlan::computeSpans(std::int32_t y) const {
    return {spanAt(y, kInsideMargin, m_widest.inside), spanAt(y, kTouchedMargin, m_widest.touched)};
}

double WarpPlan::coverage(std::int32_t x, std::int32_t y) const {
    double product = 1;
    for (const Side& side : m_sides) {
        product *= std::clamp(1 + side.at(x, y), 0.0, 1.0);
    }
    return product;
}

void WarpPlan::findRows(const ImgPoint* corners, ImgSize dstSize) {
    double left = corners[0].x;
    double right = corners[0].x;
    double top = corners[0].y;
    double bottom = corners[0].y;
    for (int i = 1; i < 4; ++i) {
        left = std::min(left, corners[i].x);
        right = std::max(right, corners[i].x);
        top = std::min(top, corners[i].y);
        bottom = std::max(bottom, corners[i].y);
    }
    const PixelSpan columns{0, dstSize.width - 1};
    m_rows = wholeNumbers(top - kTouchedMargin, bottom + kTouchedMargin, {0, dstSize.height - 1});
    // The widest spans that any row can have, and the rows in which no side cuts into them.
    m_widest = {wholeNumbers(left - kInsideMargin, right + kInsideMargin, columns),
                wholeNumbers(left - kTouchedMargin, right + kTouchedMargin, columns)};
    m_steadyRows = m_rows;
    const auto keepWhere = [&](const PixelSpan& span, double margin) {
        for (const Side& side : m_sides) {
            for (const std::int32_t x : {span.first, span.last}) {
                const double rest = -margin - side.a * x - side.c;  // b y >= rest
                const double infinity = std::numeric_limits<double>::infinity();
                const bool level = std::abs(side.b) < 1e-9;
                const double low = level ? (rest > 0 ? infinity : -infinity) : side.b > 0 ? rest / side.b : -infinity;
                const double high = !level && side.b < 0 ? rest / side.b : infinity;
                m_steadyRows = common(m_steadyRows, wholeNumbers(low, high, m_rows));
            }
        }
    };
    if (m_widest.inside.empty() || m_widest.touched.empty()) {
        m_steadyRows = {0, -1};
    } else {
        keepWhere(m_widest.inside, kInsideMargin);
        keepWhere(m_widest.touched, kTouchedMargin);
    }
}

std::optional<WarpPlan> WarpPlan::ofQuad(const ImgPixelRect& rect, const ImgPoint* quad, ImgSize dstSize) noexcept {
    for (int i = 0; i < 4; ++i) {
        // Far beyond any picture the products below would lose the pixels.
        if (!(std::abs(quad[i].x) < 1e7 && std::abs(quad[i].y) < 1e7)) {
            return std::nullopt;
        }
    }
    WarpPlan plan{};
    plan.rect = rect;
    double turn[4];
    double area = 0;
    for (int i = 0; i < 4; ++i) {
        const ImgPoint& a = quad[i];
        const ImgPoint& b = quad[(i + 1) % 4];
        turn[i] = cross(a, b, quad[(i + 2) % 4]);
        area += (a.x * b.y - a.y * b.x) / 2;
    }
    const double width = rect.right - rect.left;
    const double height = rect.bottom - rect.top;
    const double all[] = {std::abs(turn[0]), std::abs(turn[1]), std::abs(turn[2]), std::abs(turn[3])};
    if (*std::max_element(all, all + 4) < kSmallestArea || width == 0 || height == 0) {
        plan.m_rows = {0, -1};
        return plan;
    }
    const double way = area < 0 ? -1 : 1;
    for (int i = 0; i < 4; ++i) {
        if (!(turn[i] * way >= kSmallestArea)) {
            return std::nullopt;
        }
        const ImgPoint& a = quad[i];
        const ImgPoint& b = quad[(i + 1) % 4];
        plan.setSide(i, way * (a.y - b.y), way * (b.x - a.x), way * (a.x * b.y - b.x * a.y));
    }

    // Unit square to quadrilateral (Heckbert, Fundamentals of Texture Mapping and Image Warping, 1989), with the
    // first corner as origin; its adjugate leads back.
    const auto x = [&](int i) { return quad[i].x - quad[0].x; };
    const auto y = [&](int i) { return quad[i].y - quad[0].y; };
    const double sumX = -x(1) + x(2) - x(3);
    const double sumY = -y(1) + y(2) - y(3);
    const double dx1 = x(1) - x(2);
    const double dy1 = y(1) - y(2);
    const double dx2 = x(3) - x(2);
    const double dy2 = y(3) - y(2);
    const double det = dx1 * dy2 - dx2 * dy1;
    const double g = (sumX * dy2 - dx2 * sumY) / det;
    const double h = (dx1 * sumY - sumX * dy1) / det;
    const double a = x(1) + g * x(1);
    const double b = x(3) + h * x(3);
    const double d = y(1) + g * y(1);
    const double e = y(3) + h * y(3);
    const double back[3][3] = {{e, -b, 0}, {-d, a, 0}, {d * h - e * g, b * g - a * h, a * e - b * d}};
    const double scale[3] = {width, height, 1};
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < 2; ++k) {
            plan.matrix[i][k] = back[i][k] * scale[i];
        }
        plan.matrix[i][2] = (back[i][2] - back[i][0] * quad[0].x - back[i][1] * quad[0].y) * scale[i];
    }
    plan.findRows(quad, dstSize);
    return plan;
}

std::optional<WarpPlan> WarpPlan::ofMatrix(ImgSize srcSize, const double (*m)[3], ImgSize dstSize) noexcept {
    WarpPlan plan{};
    plan.rect = {0, 0, srcSize.width - 1, srcSize.height - 1};
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
        const double last = i == 0 ? plan.rect.right : plan.rect.bottom;
        plan.setSide(2 * i, row[0], row[1], row[2]);
        plan.setSide(2 * i + 1, -row[0], -row[1], last - row[2]);
    }
    plan.matrix[2][2] = 1;
    ImgPoint corners[4];
    for (int i = 0; i < 4; ++i) {
        const double x = i == 1 || i == 2 ? plan.rect.right : 0;
        const double y = i >= 2 ? plan.rect.bottom : 0;
        corners[i] = {m[0][0] * x + m[0][1] * y + m[0][2], m[1][0] * x + m[1][1] * y + m[1][2]};
    }
    plan.findRows(corners, dstSize);
    return plan;
}

}  // namespace lumiset

#include "effects/corner_mask/corner_outline.h"

#include <algorithm>
#include <cmath>
#include <compare>

namespace lumiset {
namespace {

using Point = ParamValue::Point;

struct Pixel {
    std::int32_t row;
    std::int32_t column;
    friend auto operator<=>(const Pixel&, const Pixel&) = default;
};

Point between(Point from, Point to, float along) {
    return {from.x * (1.0F - along) + to.x * along, from.y * (1.0F - along) + to.y * along};
}

std::int32_t wholePosition(float share, std::int32_t size) {
    const auto position = static_cast<std::int64_t>(share * static_cast<float>(size));
    return static_cast<std::int32_t>(std::min<std::int64_t>(position, size - 1));
}

/// Draws outlines in whole pixels: calls `plot(Pixel)` for each.
template <class Plot>
class OutlinePen {
public:
    OutlinePen(std::int32_t width, std::int32_t height, Plot plot) : m_width(width), m_height(height), m_plot(plot) {}

    void drawShape(const CornerShape& shape) {
        const float first = shape.curve * 0.5F;
        const float last = 1.0F - first;
        const auto nearTo = [&](Point corner, Point other) { return between(corner, other, first); };
        const auto farFrom = [&](Point corner, Point other) { return between(corner, other, last); };
        const Point topStart = nearTo(shape.topLeft, shape.topRight);
        const Point topEnd = farFrom(shape.topLeft, shape.topRight);
        const Point rightStart = nearTo(shape.topRight, shape.bottomRight);
        const Point rightEnd = farFrom(shape.topRight, shape.bottomRight);
        const Point bottomStart = nearTo(shape.bottomLeft, shape.bottomRight);
        const Point bottomEnd = farFrom(shape.bottomLeft, shape.bottomRight);
        const Point leftStart = nearTo(shape.topLeft, shape.bottomLeft);
        const Point leftEnd = farFrom(shape.topLeft, shape.bottomLeft);
        drawCurve(topEnd, shape.topRight, rightStart);
        drawCurve(rightEnd, shape.bottomRight, bottomEnd);
        drawCurve(bottomStart, shape.bottomLeft, leftEnd);
        drawCurve(leftStart, shape.topLeft, topStart);
        drawLine(topStart, topEnd);
        drawLine(rightStart, rightEnd);
        drawLine(bottomEnd, bottomStart);
        drawLine(leftEnd, leftStart);
    }

private:
    /// De Casteljau's construction at points about ten pixels apart.
    void drawCurve(Point from, Point control, Point to) {
        const auto width = static_cast<float>(m_width);
        const float length = std::hypot((control.x - from.x) * width, (control.y - from.y) * width) +
                             std::hypot((to.x - control.x) * width, (to.y - control.y) * width);
        const auto steps = static_cast<std::int32_t>(std::max(length / 10.0F, 2.0F));
        Point last = from;
        for (std::int32_t i = 1; i <= steps; ++i) {
            const float along = static_cast<float>(i) / static_cast<float>(steps);
            const Point next = between(between(from, control, along), between(control, to, along), along);
            drawLine(last, next);
            last = next;
        }
    }

    /// One pixel in each row, at the nearest column. A line within a row is its first pixel: the next line begins
    /// with its last one.
    void drawLine(Point from, Point to) {
        const Pixel a{wholePosition(from.y, m_height), wholePosition(from.x, m_width)};
        const Pixel b{wholePosition(to.y, m_height), wholePosition(to.x, m_width)};
        const std::int32_t down = b.row >= a.row ? 1 : -1;
        const std::int64_t rows = std::int64_t{down} * (b.row - a.row);
        m_plot(a);
        for (std::int64_t i = 1; i <= rows; ++i) {
            const std::int64_t doubled = std::int64_t{2} * (b.column - a.column) * i + rows;
            const std::int64_t moved = doubled >= 0 ? doubled / (2 * rows) : -((2 * rows - 1 - doubled) / (2 * rows));
            m_plot({a.row + down * static_cast<std::int32_t>(i), a.column + static_cast<std::int32_t>(moved)});
        }
    }

    std::int32_t m_width;
    std::int32_t m_height;
    Plot m_plot;
};

template <class Plot>
void plotOutline(const CornerShape& shape, std::int32_t width, std::int32_t height, Plot plot) {
    OutlinePen<Plot>(width, height, plot).drawShape(shape);
}

/// Collects runs of columns row by row; rows with the same runs become higher rectangles.
class RectangleList {
public:
    explicit RectangleList(PixelRect* rects) : m_rects(rects) {}

    void addRun(std::int32_t row, std::int32_t left, std::int32_t right) {
        m_rects[m_count++] = {left, row, right, row + 1};
    }
    void endRow() {
        const std::size_t runs = m_count - m_row;
        PixelRect* above = m_rects + m_above;
        const PixelRect* here = m_rects + m_row;
        const bool same =
            runs == m_row - m_above && std::equal(here, here + runs, above, [](const PixelRect& a, const PixelRect& b) {
                return a.left == b.left && a.right == b.right;
            });
        if (same) {
            std::for_each(above, above + runs, [](PixelRect& rect) { ++rect.bottom; });
            m_count = m_row;
        } else {
            m_above = m_row;
            m_row = m_count;
        }
    }
    [[nodiscard]] std::span<const PixelRect> rects() const { return {m_rects, m_count}; }

private:
    PixelRect* m_rects;
    std::size_t m_count = 0;
    std::size_t m_above = 0;  ///< first run of the row above, which may be higher than a row
    std::size_t m_row = 0;    ///< first run of this row
};

}  // namespace

bool CornerOutline::trace(const CornerShape& shape, std::int32_t width, std::int32_t height) noexcept {
    std::int64_t count = 0;
    plotOutline(shape, width, height, [&](Pixel) { ++count; });
    // A row has no more runs than pixels, or one if it has none.
    m_memory.add<Pixel>(count);
    m_memory.add<PixelRect>(count + height);
    if (!m_memory.allocate()) {
        return false;
    }
    const std::span pixels(m_memory.take<Pixel>(count), static_cast<std::size_t>(count));
    auto next = pixels.begin();
    plotOutline(shape, width, height, [&](Pixel pixel) { *next++ = pixel; });
    std::sort(pixels.begin(), pixels.end());

    RectangleList list(m_memory.take<PixelRect>(count + height));
    auto pixel = pixels.begin();
    for (std::int32_t row = 0; row < height; ++row) {
        std::int32_t left = 0;
        std::int32_t right = pixel != pixels.end() && pixel->row == row ? pixel->column + 1 : width;
        for (; pixel != pixels.end() && pixel->row == row; ++pixel) {
            if (pixel->column > right) {
                list.addRun(row, left, right);
                left = pixel->column;
            }
            right = pixel->column + 1;
        }
        list.addRun(row, left, width);
        list.endRow();
    }
    m_outside = list.rects();
    return true;
}

}  // namespace lumiset

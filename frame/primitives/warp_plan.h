#pragma once

// The geometry of a warp: which destination pixels a warped picture covers, and where in the source each lies.

#include <cstdint>
#include <optional>

#include "frame/primitives/warp.h"

namespace lumiset {

/// Columns of a row, both included; empty with `last` below `first`.
struct PixelSpan {
    std::int32_t first;
    std::int32_t last;

    [[nodiscard]] bool empty() const { return last < first; }
};

struct RowSpans {
    PixelSpan inside;   ///< pixels whose centres lie in the picture
    PixelSpan touched;  ///< and those less than a pixel outside
};

class WarpPlan {
public:
    /// Projective map of a rectangle to a quadrilateral. Nothing if it is not convex or a number not finite.
    static std::optional<WarpPlan> ofQuad(const ImgPixelRect& rect, const ImgPoint* quad, ImgSize dstSize) noexcept;
    /// Affine map of a whole picture. Nothing if it cannot be inverted.
    static std::optional<WarpPlan> ofMatrix(ImgSize srcSize, const double (*matrix)[3], ImgSize dstSize) noexcept;

    /// Rows with pixels to draw.
    [[nodiscard]] PixelSpan rows() const { return m_rows; }
    /// Rows that follow each other and have the same spans, as most rows of an upright strip have.
    [[nodiscard]] PixelSpan steadyRows() const { return m_steadyRows; }
    [[nodiscard]] RowSpans spansOf(std::int32_t y) const {
        return y >= m_steadyRows.first && y <= m_steadyRows.last ? m_widest : computeSpans(y);
    }
    /// Share of a touched pixel that the picture covers, 0..1.
    [[nodiscard]] double coverage(std::int32_t x, std::int32_t y) const;

    /// Source position of a destination pixel: (x, y, w) of `matrix` times (column, row, 1), x / w and y / w from the
    /// rectangle's left top pixel.
    double matrix[3][3];
    ImgPixelRect rect;

private:
    /// Distance to a side of the picture in pixels, a x + b y + c, positive inside.
    struct Side {
        double a;
        double b;
        double c;
        double inverseA;  ///< 0 for a side along the row

        [[nodiscard]] double at(double x, double y) const { return a * x + b * y + c; }
    };

    void setSide(int index, double a, double b, double c);
    void findRows(const ImgPoint* corners, ImgSize dstSize);
    [[nodiscard]] PixelSpan spanAt(double y, double margin, const PixelSpan& widest) const;
    [[nodiscard]] RowSpans computeSpans(std::int32_t y) const;

    Side m_sides[4];
    PixelSpan m_rows;
    RowSpans m_widest;       ///< the widest spans that any row can have
    PixelSpan m_steadyRows;  ///< rows with just those
};

}  // namespace lumiset

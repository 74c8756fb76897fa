#pragma once

// The geometry of a warp: which destination pixels a warped picture covers, and where in the source each lies.

#include <cstdint>
#include <optional>

#include "frame/primitives/status.h"

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
    /// Affine map of a whole picture. Nothing if it cannot be inverted.
    static std::optional<WarpPlan> ofMatrix(ImgSize srcSize, const double (*matrix)[3], ImgSize dstSize) noexcept;

    /// Rows with pixels to draw.
    [[nodiscard]] PixelSpan rows() const { return m_rows; }
    [[nodiscard]] RowSpans spansOf(std::int32_t y) const;
    /// Share of a touched pixel that the picture covers, 0..1.
    [[nodiscard]] double coverage(std::int32_t x, std::int32_t y) const;

    /// Source position of a destination pixel: `matrix` times (column, row, 1).
    double matrix[2][3];
    std::int32_t lastColumn;  ///< of the source
    std::int32_t lastRow;

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
    [[nodiscard]] PixelSpan spanAt(double y, double margin, const PixelSpan& widest) const;

    Side m_sides[4];
    PixelSpan m_rows;
    RowSpans m_widest;  ///< the widest spans that any row can have
};

}  // namespace lumiset

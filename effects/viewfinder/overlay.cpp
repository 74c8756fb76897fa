#include "effects/viewfinder/overlay.h"

#include <algorithm>

#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/layout.h"
#include "frame/primitives/status.h"

namespace lumiset {
namespace {

/// Fills a rectangle, moved to the right and down, as much of it as the frame holds.
void DrawOverlayRect(Frame& frame, const PixelRect& rect, std::int32_t right, std::int32_t down, std::uint32_t color) {
    const std::int32_t left = rect.left + right;
    const std::int32_t top = std::max(rect.top + down, 0);
    const std::int32_t width = std::min(rect.right + right, frame.Width()) - left;
    const std::int32_t height = std::min(rect.bottom + down, frame.Height()) - top;
    if (width > 0 && height > 0) {
        Frame part;
        part.WrapSubRect(frame, left, top, width, height, frame.Flipped());
        FrameFillColor(part, color);
    }
}

void drawLines(Frame& frame, const OverlayLines& lines, std::int32_t down, std::int32_t shadow) {
    if (shadow != 0) {
        for (const PixelRect& rect : lines.all()) {
            DrawOverlayRect(frame, rect, shadow, down + shadow, kOutlineColor);
        }
    }
    for (const PixelRect& rect : lines.all()) {
        DrawOverlayRect(frame, rect, 0, down, kMarkColor);
    }
}

/// Composites `top` over a sample with the opacity `alpha`, 0..255.
void mixInto(std::uint8_t& sample, std::uint32_t top, std::uint32_t alpha) {
    sample = static_cast<std::uint8_t>(scaledProduct(top, alpha) + scaledProduct(sample, 255 - alpha));
}
void mixInto(float& sample, std::uint32_t top, std::uint32_t alpha) {
    const float share = static_cast<float>(alpha) / 255.0F;
    sample = static_cast<float>(top) / 255.0F * share + sample * (1.0F - share);
}

/// A colour 0xAABBGGRR over a row of pixels, as much of it as `coverage` says.
template <class L>
void blitRow(typename L::Sample* row, const std::uint8_t* coverage, std::int32_t width, std::uint32_t color) {
    for (std::int32_t x = 0; x < width; ++x, row += 4) {
        if (const std::uint32_t alpha = scaledProduct(color >> 24U, coverage[x]); alpha != 0) {
            mixInto(row[L::kRed], color & 0xFFU, alpha);
            mixInto(row[L::kGreen], color >> 8U & 0xFFU, alpha);
            mixInto(row[L::kBlue], color >> 16U & 0xFFU, alpha);
            mixInto(row[L::kAlpha], 255, alpha);
        }
    }
}

/// The same for a picture at (x, y), which may lie outside the frame in part.
void blit(Frame& frame, const Frame& picture, std::int32_t x, std::int32_t y, std::uint32_t color) {
    const std::int32_t left = std::max(x, 0);
    const std::int32_t right = std::min(x + picture.Width(), frame.Width());
    const std::int32_t bottom = std::min(y + picture.Height(), frame.Height());
    visitLayout(frame.Format(), [&](auto layout) {
        using L = decltype(layout);
        for (std::int32_t row = std::max(y, 0); row < bottom && left < right; ++row) {
            blitRow<L>(frame.row<typename L::Sample>(row) + std::ptrdiff_t{4} * left,
                       picture.PixelAddress(left - x, row - y, 0), right - left, color);
        }
        return true;
    });
}

/// Everything moved down, as much of it as the frame holds.
void drawMoved(Frame& frame, const OverlayPlan& plan, const CCameraFont* font, std::int32_t down) {
    drawLines(frame, plan.safeArea, down, plan.shadow);
    drawLines(frame, plan.focusBox, down, plan.shadow);
    if (font == nullptr) {
        return;
    }
    for (const OverlayMark& mark : plan.allMarks()) {
        Frame picture;
        font->cell(mark.artwork, mark.cell, picture);
        if (plan.shadow != 0) {
            blit(frame, picture, mark.x + plan.shadow, mark.y + down + plan.shadow, kOutlineColor);
        }
        blit(frame, picture, mark.x, mark.y + down, mark.color);
    }
}

}  // namespace

void drawOverlay(Frame& frame, const OverlayPlan& plan, const CCameraFont* font) noexcept {
    inBands(frame.Resources(), {frame.Width(), frame.Height()}, [&](std::int32_t first, std::int32_t rows) {
        Frame band;
        band.WrapSubRect(frame, 0, first, frame.Width(), rows, frame.Flipped());
        drawMoved(band, plan, font, -first);
        return true;
    });
}

}  // namespace lumiset

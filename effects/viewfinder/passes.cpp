#include "effects/viewfinder/passes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace lumiset {
namespace {

PixelRect rectOf(const OverlayMark& mark, const FontSize& font) {
    const CellSize size = scaledCell(mark.artwork, font);
    return {mark.x, mark.y, mark.x + size.width, mark.y + size.height};
}

bool meetsOneOf(std::span<const OverlayMark> marks, const OverlayMark& mark, const FontSize& font) {
    const PixelRect rect = rectOf(mark, font);
    return std::any_of(marks.begin(), marks.end(), [&](const OverlayMark& other) {
        const PixelRect drawn = rectOf(other, font);
        return rect.left < drawn.right && drawn.left < rect.right && rect.top < drawn.bottom && drawn.top < rect.bottom;
    });
}

}  // namespace

void ViewfinderPasses::makeGrey(const ViewfinderSettings& settings) {
    std::array<float, 3> tint = tintFactors(settings.tintColor, settings.tint);
    if (!isFloatFormat(m_frame.source().format)) {
        for (float& factor : tint) {
            factor = std::trunc(factor * 255.0F) / 255.0F;  // whole levels, as the processor has them
        }
    }
    m_frame.pass(kGrey, m_frame.source(), *m_current,
                 [&](ShaderProgram& program) { program.SetFloat3("tint", tint[0], tint[1], tint[2]); });
}

void ViewfinderPasses::drawOverlay(const OverlayPlan& plan) {
    for (const OverlayLines* lines : {&plan.safeArea, &plan.focusBox}) {
        if (lines->count != 0) {
            clearMask();
            fillMask(lines->all(), 1.0F);
            drawMask(plan.shadow);
        }
    }
    for (std::span<const OverlayMark> rest = plan.allMarks(); !rest.empty();) {
        std::size_t count = 1;
        while (count < rest.size() && !meetsOneOf(rest.first(count), rest[count], plan.font)) {
            ++count;
        }
        clearMask();
        for (const OverlayMark& mark : rest.first(count)) {
            drawMark(mark, plan.font);
        }
        drawMask(plan.shadow);
        rest = rest.subspan(count);
    }
}

void ViewfinderPasses::fillMask(std::span<const PixelRect> rects, float coverage) {
    m_frame.passRects(kFill, *m_current, mask(), rects,
                      [&](ShaderProgram& program) { program.SetFloat("value", coverage); });
}

void ViewfinderPasses::clearMask() {
    const PixelRect everything{0, 0, m_frame.width(), m_frame.height()};
    fillMask(std::span(&everything, 1), 0.0F);
}

void ViewfinderPasses::drawMask(std::int32_t shadow) {
    m_frame.pass(kOverlay, {*m_current, mask()}, *m_other,
                 [&](ShaderProgram& program) { program.SetFloat("shadow", static_cast<float>(shadow)); });
    swap();
}

void ViewfinderPasses::drawMark(const OverlayMark& mark, const FontSize& font) {
    const CellSize size = scaledCell(mark.artwork, font);
    const ArtworkCells& cells = artworkCells(mark.artwork);
    const StrokeShape& shape = cells.shapes[static_cast<std::size_t>(mark.cell)];
    const PixelRect rect{std::max(mark.x, 0), std::max(mark.y, 0), std::min(mark.x + size.width, m_frame.width()),
                         std::min(mark.y + size.height, m_frame.height())};
    if (rect.left >= rect.right || rect.top >= rect.bottom) {
        return;
    }
    m_frame.passRects(kStrokes, *m_current, mask(), std::span(&rect, 1), [&](ShaderProgram& program) {
        const float scaleX = static_cast<float>(cells.width) / static_cast<float>(size.width);
        const float scaleY = static_cast<float>(cells.height) / static_cast<float>(size.height);
        program.SetFloat2("rectSize", static_cast<float>(rect.right - rect.left),
                          static_cast<float>(rect.bottom - rect.top));
        program.SetFloat2("rectStart", static_cast<float>(rect.left - mark.x), static_cast<float>(rect.top - mark.y));
        program.SetFloat2("scale", scaleX, scaleY);
        program.SetFloat2("reach", reachOf(scaleX), reachOf(scaleY));
        program.SetInt("strokeCount", static_cast<std::int32_t>(shape.count));
        program.SetFloat("isLight", mark.color == kLightColor ? 1.0F : 0.0F);
        for (std::size_t i = 0; i < shape.count; ++i) {
            const Stroke& stroke = shape.strokes[i];
            char name[48];
            std::snprintf(name, sizeof name, "strokes[%zu].ends", i);
            program.SetFloat4(name, stroke.x0, stroke.y0, stroke.x1, stroke.y1);
            std::snprintf(name, sizeof name, "strokes[%zu].radius", i);
            program.SetFloat(name, stroke.radius);
        }
    });
}

}  // namespace lumiset

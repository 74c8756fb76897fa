#pragma once

#include <cstdint>
#include <span>

#include "effects/picture_passes.h"
#include "effects/viewfinder/plan.h"

namespace lumiset {

/// The steps in OpenGL. A third temporary gathers the overlay's coverage.
class ViewfinderPasses : public PicturePasses {
public:
    /// Places of the programs.
    enum Program : std::size_t { kColor, kGrey, kPixels, kSharpenPicture, kFill, kStrokes, kOverlay, kProgramCount };

    using PicturePasses::PicturePasses;

    void makeGrey(const ViewfinderSettings& settings);

    /// Lines and marks may meet in small frames, and marks each other in narrow ones: what meets is drawn over what
    /// stands already.
    void drawOverlay(const OverlayPlan& plan);

private:
    GPUTexture& mask() { return m_frame.temporary(2); }

    void fillMask(std::span<const PixelRect> rects, float coverage);
    void clearMask();
    void drawMask(std::int32_t shadow);

    /// How far the filter reaches, in pixels of the picture; without one, between neighbours.
    static float reachOf(float scale) { return static_cast<float>(fontBlurSize(scale) + 1) * 0.5F; }

    void drawMark(const OverlayMark& mark, const FontSize& font);
};

}  // namespace lumiset

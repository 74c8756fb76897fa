#include "effects/viewfinder/camera_font.h"

#include <new>

#include "effects/viewfinder/artwork.h"
#include "frame/frame_operations.h"

namespace lumiset {

CCameraFont* CCameraFont::create(const FontSize& size) noexcept {
    if (size.height < 1) {
        return nullptr;
    }
    auto* font = new (std::nothrow) CCameraFont(size);
    bool done = font != nullptr;
    for (std::size_t i = 0; done && i < kArtworkCount; ++i) {
        done = font->scale(static_cast<Artwork>(i));
    }
    if (!done && font != nullptr) {
        font->Release();
        font = nullptr;
    }
    return font;
}

Result CCameraFont::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IUnknown>(this, iid, out, kResultNoInterface);
}

void CCameraFont::cell(Artwork artwork, std::int32_t index, Frame& view) const {
    const CellSize size = scaledCell(artwork, m_size);
    view.WrapSubRect(m_pictures[static_cast<std::size_t>(artwork)], index * size.width, 0, size.width, size.height,
                     false);
}

bool CCameraFont::scale(Artwork artwork) noexcept {
    const ArtworkCells& cells = artworkCells(artwork);
    const auto count = static_cast<std::int32_t>(cells.shapes.size());
    const std::uint8_t* coverage = artworkCoverage(artwork);
    const CellSize size = scaledCell(artwork, m_size);
    Frame& scaled = m_pictures[static_cast<std::size_t>(artwork)];
    Frame blurred;
    if (coverage == nullptr || !blurred.Allocate(cells.width, cells.height, 1, nullptr, kFormatMask8, false) ||
        !scaled.Allocate(count * size.width, size.height, 1, nullptr, kFormatMask8, false)) {
        return false;
    }
    const double factorX = static_cast<double>(size.width) / cells.width;
    const double factorY = static_cast<double>(size.height) / cells.height;
    // Each cell for itself, so that no digit's edge shows in its neighbour. Centres of cells meet.
    bool done = true;
    for (std::int32_t i = 0; done && i < count; ++i) {
        Frame whole;
        whole.Wrap(const_cast<std::uint8_t*>(coverage) + i * cells.width, cells.width, cells.height,
                   count * cells.width, 1, kFormatMask8, false);
        done = FrameBlur(whole, blurred, static_cast<float>(fontBlurSize(static_cast<float>(1.0 / factorX))),
                         static_cast<float>(fontBlurSize(static_cast<float>(1.0 / factorY))), nullptr, false) &&
               FrameResizeRect(blurred, scaled, {0, 0, cells.width, cells.height},
                               {i * size.width, 0, (i + 1) * size.width, size.height}, kResizeLinear, factorX, factorY,
                               0.5 * (factorX - 1.0), 0.5 * (factorY - 1.0));
    }
    return done;
}

}  // namespace lumiset

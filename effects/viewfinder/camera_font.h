#pragma once

// The pictures of the viewfinder's marks, scaled to a frame: coverage, one byte a pixel.

#include "effects/viewfinder/plan.h"
#include "frame/frame.h"
#include "host/reference_count.h"
#include "host/unknown.h"

namespace lumiset {

/// Scaled once and never changed, so that any number of threads may draw from it while they hold a reference.
class CCameraFont final : public Counted<IUnknown> {
public:
    /// A font with one reference; null when there is no memory, or for the height 0. The pictures are decoded when
    /// the first font is made, and kept.
    static CCameraFont* create(const FontSize& size) noexcept;

    CCameraFont(const CCameraFont&) = delete;
    CCameraFont& operator=(const CCameraFont&) = delete;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;

    [[nodiscard]] const FontSize& size() const { return m_size; }

    /// Makes `view` a view of one cell of a picture.
    void cell(Artwork artwork, std::int32_t index, Frame& view) const;

private:
    explicit CCameraFont(const FontSize& size) : m_size(size) {}
    ~CCameraFont() = default;
    void lastReleased() noexcept override { delete this; }

    [[nodiscard]] bool scale(Artwork artwork) noexcept;

    const FontSize m_size;
    std::array<Frame, kArtworkCount> m_pictures;
};

}  // namespace lumiset

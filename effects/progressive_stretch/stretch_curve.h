#pragma once

#include <cstdint>

namespace lumiset {

/// Which part of the source a progressive stretch shows, in whole pixels.
struct StretchRegion {
    std::int32_t left;
    std::int32_t top;
    std::int32_t width;
    std::int32_t height;
    std::int32_t side;  ///< what the crop leaves of each side beyond a 4:3 picture
};
/// `crop` is 0..1; at 1 a quarter of the picture is cut away in each direction.
StretchRegion stretchRegion(std::int32_t width, std::int32_t height, float crop);

/// Maps a distance from the middle of the frame, 0..1, to one of the uniformly stretched picture. It runs through
/// (0, 0) and (1, 1) and never falls; a uniform stretch maps every distance to itself.
class StretchCurve {
public:
    /// `stretch` is 0..1: at 1 the stretch is uniform, at 0 the middle keeps its proportions.
    StretchCurve(float stretch, std::int32_t side, std::int32_t half);

    [[nodiscard]] float at(float x) const;

private:
    float m_k;
    float m_c;
};

/// Column of the stretched picture that a frame of `width` columns shows at column `x`: 0..width - 2.
float stretchedColumn(const StretchCurve& curve, std::int32_t width, std::int32_t x);

}  // namespace lumiset

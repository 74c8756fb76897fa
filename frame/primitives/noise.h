#pragma once

// Random noise. The seed decides the picture, the same one on every instruction set and platform, whatever the row
// step; it is advanced, so that the next call gives different noise. Arguments are checked as told in copy.h.

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame/primitives/noise_lanes.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// In place: each sample plus a whole number drawn evenly from low..high, both included, limited to 0..255.
/// `kImgBadRange` with `high` below `low`, or a limit beyond +-65536.
ImgStatus ImgAddUniform8C1(std::uint8_t* plane, std::int32_t step, std::int32_t low, std::int32_t high,
                           std::uint32_t* seed, ImgSize size) noexcept;

/// In place: each sample plus normally distributed noise (Marsaglia's polar method). `kImgBadRange` for a mean or
/// deviation that is not finite, or a negative deviation.
ImgStatus ImgAddGaussF(float* plane, std::int32_t step, float mean, float deviation, std::uint32_t* seed,
                       ImgSize size) noexcept;
/// The same, rounded and limited to 0..255.
ImgStatus ImgAddGauss8C1(std::uint8_t* plane, std::int32_t step, float mean, float deviation, std::uint32_t* seed,
                         ImgSize size) noexcept;

/// What the parts of a plane's noise are made from.
struct GaussStretch {
    NoiseLanes start;
    std::size_t skipped;  ///< points that belong to the stretch before
    std::uint64_t first;  ///< sample of the plane, counted through all rows
    std::uint64_t end;    ///< behind the last one
};

/// The same noise as of one call of `ImgAddGauss8C1` or `ImgAddGaussF`, byte by byte, in parts that threads make side
/// by side: first every part is measured, then every part is added. It costs about half as much again.
class GaussParts {
public:
    /// Advances the seed as that call does. Not `cut`, or small, it is one part, which takes no measuring. The plane
    /// has at least one sample.
    GaussParts(std::uint32_t& seed, ImgSize size, bool cut) noexcept;

    [[nodiscard]] std::int32_t count() const { return m_count; }
    void measure(std::int32_t part) noexcept;
    ImgStatus add8C1(std::int32_t part, std::uint8_t* plane, std::int32_t step, float mean,
                     float deviation) const noexcept;
    ImgStatus addF(std::int32_t part, float* plane, std::int32_t step, float mean, float deviation) const noexcept;

private:
    [[nodiscard]] NoiseLanes startOf(std::int32_t part) const;
    [[nodiscard]] GaussStretch stretchOf(std::int32_t part) const;

    NoiseLanes m_start;
    ImgSize m_size;
    std::int32_t m_count;
    std::uint32_t m_steps;                      ///< of the generators, in a part
    std::array<std::uint32_t, 64> m_kept = {};  ///< points in each part
};

}  // namespace lumiset

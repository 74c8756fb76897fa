#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "host/pixel_format.h"
#include "host/records.h"
#include "platform/guarded_memory.h"

namespace lumiset::app::validate {

inline constexpr std::int32_t kFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

/// How a picture lies in memory.
struct Layout {
    std::int32_t format = kFormatBgra8;
    std::int32_t padding = 0;  ///< bytes behind each row, a multiple of 4
    bool negativeStride = false;
    bool flipped = false;
    bool atEnd = true;  ///< the last byte lies right before a guard page, else the first right behind one
};

/// A picture whose memory ends at a page that nobody may touch.
class Picture {
public:
    Picture(std::int32_t width, std::int32_t height, const Layout& layout = {});

    [[nodiscard]] std::int32_t width() const { return m_width; }
    [[nodiscard]] std::int32_t height() const { return m_height; }
    [[nodiscard]] VideoFrameDesc desc() const;
    /// Fills every byte, the padding too.
    void fill(std::uint8_t byte);
    /// Random samples in the range that pictures have, with flat areas and extremes; the same for one state of `random`
    /// in every format and layout, but for the precision.
    void draw(std::mt19937& random);
    /// Copies the pixels of the rectangle that both pictures have; of equal formats.
    void take(const Picture& other);

    /// The samples of a row counted from the picture's top, in the order red, green, blue, alpha, as bits.
    [[nodiscard]] std::vector<std::uint32_t> row(std::int32_t y) const;
    /// All of them.
    [[nodiscard]] std::vector<std::uint32_t> samples() const;
    /// Every byte as it lies in memory.
    [[nodiscard]] std::vector<std::uint8_t> bytes() const;
    /// Whether every float is a finite number; bytes are.
    [[nodiscard]] bool isFinite() const;
    void setReadOnly(bool readOnly) { m_memory->setReadOnly(readOnly); }

private:
    [[nodiscard]] std::uint8_t* rowAt(std::int32_t y) const;  ///< y from the picture's top

    std::int32_t m_width;
    std::int32_t m_height;
    Layout m_layout;
    std::int32_t m_stride;
    std::unique_ptr<platform::GuardedMemory> m_memory;
};

}  // namespace lumiset::app::validate

#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "adapters/openfx/instance.h"

namespace lumiset::openfx {

/// A picture in a form that was not declared; the text is a whole sentence.
class ImageFormatError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Depth { kByte, kShort, kHalf, kFloat };
enum class Alpha { kOpaque, kPremultiplied, kStraight };

/// How the pixels of a host's picture lie in memory.
struct Pixels {
    std::uint8_t* data = nullptr;  ///< pixel (bounds.x1, bounds.y1), of the bottom row
    RectI bounds{};                ///< right and top exclusive
    std::ptrdiff_t rowBytes = 0;   ///< to the row above; of either sign
    Depth depth = Depth::kByte;
    int channels = 4;  ///< 3 or 4
    bool blueFirst = false;
    Alpha alpha = Alpha::kStraight;

    [[nodiscard]] std::uint8_t* at(int x, int y) const {
        return data + (static_cast<std::ptrdiff_t>(y) - bounds.y1) * rowBytes +
               (static_cast<std::ptrdiff_t>(x) - bounds.x1) * pixelBytes();
    }
    [[nodiscard]] std::ptrdiff_t pixelBytes() const {
        return channels * (depth == Depth::kByte ? 1 : depth == Depth::kFloat ? 4 : 2);
    }
};

/// A picture of a clip, held for as long as the object lives.
class Image {
public:
    /// False afterwards where the clip has none at that time. Throws `ImageFormatError`.
    Image(const Instance& instance, ClipHandle clip, double time);
    ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    explicit operator bool() const { return m_handle != nullptr; }
    [[nodiscard]] const Pixels& pixels() const { return m_pixels; }
    /// The whole picture within the bounds: its region, or where hosts tell one that does not fit, all there is.
    [[nodiscard]] RectI picture() const;
    [[nodiscard]] std::string field() const;
    /// Width of a pixel by its height as it lies in memory; 0 where the host does not tell.
    [[nodiscard]] double pixelAspect() const;

private:
    [[nodiscard]] Properties properties() const { return m_host.properties(m_handle); }
    void read();

    const HostInfo& m_host;
    Props m_handle = nullptr;
    Pixels m_pixels;
};

/// Those of a rectangle's rows and columns that the other has too; may be empty.
[[nodiscard]] RectI intersection(const RectI& a, const RectI& b);
[[nodiscard]] inline bool isEmpty(const RectI& rect) {
    return rect.x2 <= rect.x1 || rect.y2 <= rect.y1;
}

}  // namespace lumiset::openfx

#pragma once

#include <memory>

#include "media/media.h"

namespace lumiset::media {

/// What sides of a picture may be asked for.
constexpr int kSmallestSide = 16;
constexpr int kLargestSide = 16384;

/// The even number next to what a side comes to, for files that keep colour at half the size.
[[nodiscard]] int evenSide(double exact);

/// How the same pictures are described at another size, of `kSmallestSide` to `kLargestSide`; a side of 0 follows from
/// the other, as an even number. The picture keeps its shape, so that pixels of another one tell players; a size that
/// has the shape of the stored picture, or of square pixels, but for rounding to whole pixels counts as that.
[[nodiscard]] VideoFormat resized(VideoFormat format, int width, int height);

/// Makes pictures of another size, by Lanczos' filter of three lobes on the coded values, colours weighing as much as
/// their alpha. The fields of interlaced pictures are filtered apart. Used from one thread at a time.
class Resizer {
public:
    Resizer(int width, int height);
    Resizer(Resizer&&) noexcept;
    ~Resizer();

    /// `result` takes everything else from `picture`.
    void resize(const Picture& picture, Picture& result);

private:
    struct Inside;
    std::unique_ptr<Inside> m_inside;
};

}  // namespace lumiset::media

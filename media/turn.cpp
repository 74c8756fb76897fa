#include "media/turn.h"

#include <cstdlib>
#include <cstring>

namespace lumiset::media {
namespace {

// The linear part of a display matrix, which takes stored coordinates to shown ones, as -1, 0 and 1.
struct Turn {
    int xToX, xToY, yToX, yToY;
};

Turn turnOf(const std::int32_t* matrix) {
    const auto step = [](std::int32_t value) { return std::abs(value) < 0x8000 ? 0 : value > 0 ? 1 : -1; };
    const Turn turn = {step(matrix[0]), step(matrix[1]), step(matrix[3]), step(matrix[4])};
    const bool straight = turn.xToX != 0 && turn.yToY != 0 && turn.xToY == 0 && turn.yToX == 0;
    const bool aside = turn.xToX == 0 && turn.yToY == 0 && turn.xToY != 0 && turn.yToX != 0;
    // Angles between are left to players.
    return straight || aside ? turn : Turn{1, 0, 0, 1};
}

}  // namespace

bool isUpright(const std::int32_t* displayMatrix) {
    const Turn turn = turnOf(displayMatrix);
    return turn.xToX == 1 && turn.yToY == 1;
}

bool isTurned(const std::int32_t* displayMatrix) {
    return turnOf(displayMatrix).xToY != 0;
}

void turnUpright(const Picture& from, const std::int32_t* displayMatrix, Picture& to) {
    const Turn turn = turnOf(displayMatrix);
    const bool aside = turn.xToY != 0;
    to.allocate(aside ? from.height : from.width, aside ? from.width : from.height, from.depth);
    const int bytes = from.bytesPerPixel();
    // The inverse of a turn is its transpose. Walking a shown row to the right moves through the stored picture by
    // (xToX, yToX), walking down by (xToY, yToY).
    const int x0 = turn.xToX + turn.xToY < 0 ? from.width - 1 : 0;
    const int y0 = turn.yToX + turn.yToY < 0 ? from.height - 1 : 0;
    const std::ptrdiff_t right =
        static_cast<std::ptrdiff_t>(turn.xToX) * bytes + static_cast<std::ptrdiff_t>(turn.yToX) * from.stride;
    for (int y = 0; y < to.height; y++) {
        const std::uint8_t* source =
            from.row(y0 + turn.yToY * y) + static_cast<std::ptrdiff_t>(x0 + turn.xToY * y) * bytes;
        std::uint8_t* target = to.row(y);
        for (int x = 0; x < to.width; x++, source += right, target += bytes) {
            std::memcpy(target, source, static_cast<std::size_t>(bytes));
        }
    }
}

}  // namespace lumiset::media

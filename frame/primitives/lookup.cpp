#include "frame/primitives/arithmetic.h"
#include "frame/primitives/check.h"

namespace lumiset {

ImgStatus ImgLookup8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       const std::uint8_t* table, ImgSize size) noexcept {
    const ImgStatus status = checkPlanes(size, {{src, srcStep, 1}, {dst, dstStep, 1}, arrayArgument(table)});
    if (status != kImgOk) {
        return status;
    }
    const Plane<const std::uint8_t> from{src, srcStep};
    const Plane<std::uint8_t> to{dst, dstStep};
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* in = from.row(y);
        std::uint8_t* out = to.row(y);
        for (std::int32_t x = 0; x < size.width; ++x) {
            out[x] = table[in[x]];
        }
    }
    return status;
}

ImgStatus ImgLookup8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       const std::uint8_t* const* tables, ImgSize size) noexcept {
    ImgStatus status = checkPlanes(size, {{src, srcStep, 4}, {dst, dstStep, 4}, arrayArgument(tables)});
    if (status == kImgOk && (tables[0] == nullptr || tables[1] == nullptr || tables[2] == nullptr)) {
        status = kImgNullPointer;
    }
    if (status != kImgOk) {
        return status;
    }
    const std::uint8_t* const first = tables[0];
    const std::uint8_t* const second = tables[1];
    const std::uint8_t* const third = tables[2];
    const Plane<const std::uint8_t> from{src, srcStep};
    const Plane<std::uint8_t> to{dst, dstStep};
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* in = from.row(y);
        std::uint8_t* out = to.row(y);
        for (std::int32_t x = 0; x < size.width; ++x, in += 4, out += 4) {
            out[0] = first[in[0]];
            out[1] = second[in[1]];
            out[2] = third[in[2]];
        }
    }
    return status;
}

}  // namespace lumiset

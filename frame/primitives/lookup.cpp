#include "frame/primitives/lookup.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frame/primitives/lookup.cpp"
#include "hwy/foreach_target.h"

#include "frame/primitives/pixel_math-inl.h"
#include "frame/primitives/row_loops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace lumiset::HWY_NAMESPACE {
namespace {

// Where vectors have 32 bytes or more, a table is looked up by byte shuffles in sixteenths (the method of
// W. Mula, "SIMD-ized faster parse of IPv4 addresses" and others): a shuffle gives 0 for an index with its top bit
// set, and the index counts down by 16 from one sixteenth to the next. Each sixteenth is stored as its difference
// (exclusive or) to the one before, so that an index that has passed several of them has collected just the last.
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3

class Table {
public:
    explicit Table(const std::uint8_t* entries) {
        for (std::size_t half = 0; half < 2; ++half) {
            for (std::size_t i = 0; i < 128; ++i) {
                const std::size_t at = half * 128 + i;
                m_steps[at] = static_cast<std::uint8_t>(entries[at] ^ (i < 16 ? 0 : entries[at - 16]));
            }
        }
    }
    HWY_INLINE Vec8 operator()(Vec8 indices) const {
        const Vec8 other = hn::Xor(indices, hn::Set(Tag8(), 0x80));
        return hn::Xor(half(m_steps, indices), half(m_steps + 128, other));
    }

private:
    HWY_INLINE static Vec8 half(const std::uint8_t* steps, Vec8 indices) {
        const hn::ScalableTag<std::int8_t> dSigned;
        const auto sixteen = hn::Set(dSigned, 16);
        auto index = hn::BitCast(dSigned, indices);
        Vec8 sum = hn::TableLookupBytesOr0(hn::LoadDup128(Tag8(), steps), indices);
        for (std::size_t i = 16; i < 128; i += 16) {
            index = hn::SaturatedSub(index, sixteen);
            const Vec8 found = hn::TableLookupBytesOr0(hn::LoadDup128(Tag8(), steps + i), hn::BitCast(Tag8(), index));
            sum = hn::Xor(sum, found);
        }
        return sum;
    }

    HWY_ALIGN std::uint8_t m_steps[256];
};

}  // namespace

void lookup8A4(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const std::uint8_t* const* tables,
               ImgSize size) {
    const Table first(tables[0]);
    const Table second(tables[1]);
    const Table third(tables[2]);
    mapColours(size, src, dst, [&](Triple<Vec8> v) HWY_ATTR {
        return Triple<Vec8>{first(v.first), second(v.second), third(v.third)};
    });
}

#else

}  // namespace

void lookup8A4(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, const std::uint8_t* const* tables,
               ImgSize size) {
    const std::uint8_t* const first = tables[0];
    const std::uint8_t* const second = tables[1];
    const std::uint8_t* const third = tables[2];
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::uint8_t* in = src.row(y);
        std::uint8_t* out = dst.row(y);
        for (std::int32_t x = 0; x < size.width; ++x, in += 4, out += 4) {
            out[0] = first[in[0]];
            out[1] = second[in[1]];
            out[2] = third[in[2]];
        }
    }
}

#endif

}  // namespace lumiset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lumiset {

HWY_EXPORT(lookup8A4);
ImgStatus ImgLookup8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       const std::uint8_t* const* tables, ImgSize size) noexcept {
    const bool complete = tables != nullptr && tables[0] != nullptr && tables[1] != nullptr && tables[2] != nullptr;
    return runLoop(complete ? kImgOk : kImgNullPointer, HWY_DYNAMIC_DISPATCH(lookup8A4), size, pixels<4>(src, srcStep),
                   pixels<4>(dst, dstStep), tables);
}

}  // namespace lumiset
#endif

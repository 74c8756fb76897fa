#include "frame/primitives/morphology.h"

#include <cstddef>
#include <cstring>
#include <new>

#include "frame/primitives/block_morphology.h"
#include "frame/primitives/check.h"

namespace lumiset {

/// A mask as rectangles: the runs of set elements of its rows, where equal runs of rows that follow each other are
/// one rectangle. A full mask is a single one.
struct ImgMorphState {
    std::int32_t width;
    std::int32_t channels;
    bool isFloat;
    std::int32_t count;
    BlockRectangle* rectangles;
};

namespace {

/// Calls `found(left, right)` with each run of set elements of a mask row, the right side included.
template <class Found>
void eachRun(const std::uint8_t* row, std::int32_t width, const Found& found) {
    for (std::int32_t x = 0; x < width; ++x) {
        if (row[x] != 0) {
            const std::int32_t left = x;
            while (x + 1 < width && row[x + 1] != 0) {
                ++x;
            }
            found(left, x);
        }
    }
}

bool isRun(const std::uint8_t* row, std::int32_t width, std::int32_t left, std::int32_t right) {
    for (std::int32_t x = left; x <= right; ++x) {
        if (row[x] == 0) {
            return false;
        }
    }
    return (left == 0 || row[left - 1] == 0) && (right + 1 == width || row[right + 1] == 0);
}

/// Calls `found(left, right, top, bottom)` with each rectangle of a mask.
template <class Found>
void eachRectangle(const std::uint8_t* mask, ImgSize size, const Found& found) {
    const auto rowOf = [&](std::int32_t y) { return mask + static_cast<std::ptrdiff_t>(size.width) * y; };
    for (std::int32_t y = 0; y < size.height; ++y) {
        eachRun(rowOf(y), size.width, [&](std::int32_t left, std::int32_t right) {
            if (y > 0 && isRun(rowOf(y - 1), size.width, left, right)) {
                return;
            }
            std::int32_t bottom = y;
            while (bottom + 1 < size.height && isRun(rowOf(bottom + 1), size.width, left, right)) {
                ++bottom;
            }
            found(left, right, y, bottom);
        });
    }
}

}  // namespace

ImgStatus ImgMorphInit::operator()(std::int32_t width, const std::uint8_t* mask, ImgSize maskSize, std::int32_t anchorX,
                                   std::int32_t anchorY, ImgMorphState** out) const noexcept {
    if (mask == nullptr || out == nullptr) {
        return kImgNullPointer;
    }
    if (width < 1 || maskSize.width < 1 || maskSize.height < 1) {
        return kImgBadSize;
    }
    if (anchorX < 0 || anchorX >= maskSize.width || anchorY < 0 || anchorY >= maskSize.height) {
        return kImgBadMaskSize;
    }
    std::size_t count = 0;
    eachRectangle(mask, maskSize, [&](auto...) { ++count; });
    auto* state = new (std::nothrow) ImgMorphState{width, channels, isFloat, 0, nullptr};
    if (state == nullptr) {
        return kImgNoMemory;
    }
    state->rectangles = new (std::nothrow) BlockRectangle[count + 1];
    if (state->rectangles == nullptr) {
        delete state;
        return kImgNoMemory;
    }
    eachRectangle(mask, maskSize, [&](std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom) {
        state->rectangles[state->count++] = {anchorX - left,
                                             right - anchorX,
                                             anchorY - top,
                                             bottom - anchorY,
                                             floorLog2(right - left + 1),
                                             floorLog2(bottom - top + 1)};
    });
    *out = state;
    return kImgOk;
}

template <class T>
ImgStatus ImgMorph<T>::operator()(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, ImgSize size,
                                  const ImgMorphState* state) const noexcept {
    const std::int32_t pixelBytes = channels * static_cast<std::int32_t>(sizeof(T));
    const ImgStatus status =
        checkPlanes(size, {{src, srcStep, pixelBytes}, {dst, dstStep, pixelBytes}, arrayArgument(state)});
    if (status != kImgOk) {
        return status;
    }
    if (size.width > state->width) {
        return kImgBadSize;
    }
    if (channels != state->channels || state->isFloat != (sizeof(T) == sizeof(float))) {
        return kImgBadMaskSize;
    }
    if (state->count == 0) {
        for (std::int32_t y = 0; y < size.height; ++y) {
            std::memcpy(Plane<T>{dst, dstStep}.row(y), Plane<const T>{src, srcStep}.row(y),
                        static_cast<std::size_t>(size.width) * static_cast<std::size_t>(pixelBytes));
        }
        return kImgOk;
    }
    MemoryAllocator heap;
    const bool done = blockMorphology(
        {reinterpret_cast<const std::uint8_t*>(src), srcStep, reinterpret_cast<std::uint8_t*>(dst), dstStep, size.width,
         size.height, channels, state->isFloat, minimum, state->rectangles, state->count, state->count == 1},
        heap);
    return done ? kImgOk : kImgNoMemory;
}

template struct ImgMorph<std::uint8_t>;
template struct ImgMorph<float>;

void ImgMorphFree(ImgMorphState* state) noexcept {
    if (state != nullptr) {
        delete[] state->rectangles;
        delete state;
    }
}

}  // namespace lumiset

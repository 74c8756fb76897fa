#pragma once

// What the filter operations share: a plain copy, and a source that does not overlap the destination.

#include <cstddef>
#include <cstdint>

#include "frame/operations/operands.h"

namespace lumiset {

/// Copies `size` pixels; the frames may overlap.
void copyPixels(const Frame& src, Frame& dst, ImgSize size);

/// Rows of a source from which a destination that may overlap it can be computed: the source itself, or a copy.
class StableSource {
public:
    explicit StableSource(MemoryAllocator& allocator) : m_allocator(allocator) {}
    ~StableSource() { m_allocator.FreeBytes(m_copy); }
    StableSource(const StableSource&) = delete;
    StableSource& operator=(const StableSource&) = delete;

    /// Copies `size` pixels of `src` if they share memory with `dst`. False when there is no memory.
    [[nodiscard]] bool prepare(const Frame& src, const Frame& dst, ImgSize size);

    [[nodiscard]] const std::uint8_t* data() const { return m_data; }
    [[nodiscard]] std::int32_t stride() const { return m_stride; }

private:
    MemoryAllocator& m_allocator;
    void* m_copy = nullptr;
    const std::uint8_t* m_data = nullptr;
    std::int32_t m_stride = 0;
};

}  // namespace lumiset

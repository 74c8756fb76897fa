#pragma once

// Memory is asked for before it is needed. What the processor fetches ahead by itself ends with each page, and does
// not include what is only written. A fetch changes nothing and cannot fail, wherever it points.

#include <cstddef>
#include <cstdint>

#include "hwy/cache_control.h"

namespace lumiset {

/// For a loop whose steps take `count` samples each: asks for those it comes to some steps after the ones at `from`, be
/// they read or written.
template <class T>
inline void fetchAhead(const T* from, std::size_t count) {
    constexpr std::uintptr_t kAhead = 2048;  // bytes
    constexpr std::size_t kLine = 64;
    for (std::size_t i = 0; i < count * sizeof(T); i += kLine) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a pointer must not leave its picture, an address may
        hwy::Prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(from) + kAhead + i));
    }
}

}  // namespace lumiset

#include "platform/memory_size.h"

#include <unistd.h>

namespace lumiset::platform {

std::size_t memoryBytes() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long size = ::sysconf(_SC_PAGESIZE);
    return pages > 0 && size > 0 ? static_cast<std::size_t>(pages) * static_cast<std::size_t>(size)
                                 : std::size_t{1} << 30;
}

}  // namespace lumiset::platform

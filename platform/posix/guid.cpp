#include "platform/guid.h"

#include <sys/random.h>

namespace lumiset::platform {

bool makeGuid(Guid& guid) noexcept {
    if (::getrandom(&guid, sizeof guid, 0) != static_cast<ssize_t>(sizeof guid)) {
        return false;
    }
    // A version 4 identifier: all random but for six bits.
    guid.data3 = static_cast<std::uint16_t>((guid.data3 & 0x0FFFU) | 0x4000U);
    guid.data4[0] = static_cast<std::uint8_t>((guid.data4[0] & 0x3FU) | 0x80U);
    return true;
}

}  // namespace lumiset::platform

#include "platform/guid.h"

#include <objbase.h>

#include <cstring>

namespace lumiset::platform {

bool makeGuid(Guid& guid) noexcept {
    GUID made{};
    static_assert(sizeof made == sizeof guid);
    if (CoCreateGuid(&made) != S_OK) {
        return false;
    }
    std::memcpy(&guid, &made, sizeof guid);
    return true;
}

}  // namespace lumiset::platform

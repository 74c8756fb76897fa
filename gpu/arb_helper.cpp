#include "gpu/arb_helper.h"

#include "platform/gl_proc.h"

namespace lumiset {

bool ARBHelper::IsExtensionSupported(const char* name) const noexcept {
    constexpr std::uint32_t kExtensions = 0x1F03;
    using GetString = const char*(LUMISET_CALL*)(std::uint32_t);
    const auto getString = reinterpret_cast<GetString>(platform::glCoreProc("glGetString"));
    const char* list = getString != nullptr ? getString(kExtensions) : nullptr;
    return list != nullptr && hasExtensionWord(list, name);
}

bool ARBHelper::Load(std::uint32_t /*flags*/) noexcept {
    return loadArbTable(*this, platform::glExtensionProc,
                        [this](const char* name) { return IsExtensionSupported(name); });
}

}  // namespace lumiset

// A host that has only what is installed. It renders one grey frame through every
// effect and prints their names.

#include <cstdint>
#include <cstdio>
#include <vector>

#include "host/effect_library.h"
#include "host/pixel_format.h"

#ifdef MODULE
#include <dlfcn.h>
static lumiset::IEffectLibrary* openLibrary() {
    void* module = dlopen(MODULE, RTLD_NOW | RTLD_LOCAL);
    void* entry = module != nullptr ? dlsym(module, "GetEffectsLibrary") : nullptr;
    return entry != nullptr ? reinterpret_cast<lumiset::IEffectLibrary* (*)()>(entry)() : nullptr;
}
#else
static lumiset::IEffectLibrary* openLibrary() {
    return GetEffectsLibrary();
}
#endif

int main() {
    lumiset::IEffectLibrary* library = openLibrary();
    if (library == nullptr) {
        return 1;
    }
    std::vector<std::uint8_t> pixels(4 * 16 * 16, 128);
    std::vector<std::uint8_t> result(pixels.size());
    const lumiset::VideoFrameDesc source{pixels.data(), 16, 16, 64, 4, {}, lumiset::kFormatBgra8, 0};
    const lumiset::VideoFrameDesc destination{result.data(), 16, 16, 64, 4, {}, lumiset::kFormatBgra8, 0};
    lumiset::FrameRenderInfo info{};
    info.field = lumiset::FrameRenderInfo::kWholeFrame;
    for (std::uint32_t i = 0; lumiset::IVideoGPUEffect* effect = library->CreateEffect(i); ++i) {
        const bool done = effect->ProcessFrame(nullptr, &source, nullptr, &destination, &info);
        std::printf("%s\n", done ? effect->GetEffectName() : "?");
        effect->Release();
    }
    library->Release();
    return 0;
}

// Whatever bytes a preset file holds: reading ends, and what was read is written so that it reads back the same.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/preset_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto preset = lumiset::parsePreset(std::string(reinterpret_cast<const char*>(data), size));
    if (preset) {
        const std::string text = lumiset::presetText(*preset);
        const auto again = lumiset::parsePreset(text);
        if (!again || again->name != preset->name || again->effectName != preset->effectName ||
            again->entries.size() != preset->entries.size() || lumiset::presetText(*again) != text) {
            std::abort();
        }
    }
    return 0;
}

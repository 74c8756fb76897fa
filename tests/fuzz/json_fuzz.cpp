// Whatever bytes a preset in JSON holds: it is refused with a sentence, or read to values that are written so that they
// read back the same.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "apps/lumiset/presets/preset_json.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/module.h"
#include "tests/fuzz/memory_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumiset;
    using fuzz::require;
    static const hostkit::Module s_module(std::getenv("LUMISET_MODULE"));
    static const hostkit::EffectCatalogue s_catalogue(s_module.effectLibrary());
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const app::NamedPreset preset = app::presetFromJson(s_catalogue, text, "otherwise");
        const std::string written = app::presetToJson(preset);
        require(app::presetToJson(app::presetFromJson(s_catalogue, written, "another")) == written);
    } catch (const app::PresetJsonError& error) {
        const std::string sentence = error.what();
        require(!sentence.empty() && sentence.find('\0') == std::string::npos);
    }
    return 0;
}

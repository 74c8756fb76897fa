// write_presets MODULE FOLDER: writes every preset of every effect as a preset file, FOLDER/EFFECT/PRESET.lumv?. Run
// when the project is built.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "hostkit/module.h"
#include "hostkit/preset_file.h"

namespace lumiset::openfx {
namespace {

void writePresets(IEffectLibrary& library, const hostkit::EffectDescription& effect,
                  const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const hostkit::PresetDescription& preset : effect.presets) {
        hostkit::ParameterStore values(effect);
        values.apply(preset);
        std::string name = preset.uniqueName;
        std::replace(name.begin(), name.end(), '/', '-');
        const std::string extension = hostkit::presetExtension(effect);
        hostkit::savePresetFile(library, (folder / (name + extension)).string(), values);
    }
}

}  // namespace
}  // namespace lumiset::openfx

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: write_presets MODULE FOLDER\n", stderr);
        return 2;
    }
    try {
        const lumiset::hostkit::Module module(argv[1]);
        const lumiset::hostkit::EffectCatalogue catalogue(module.effectLibrary());
        for (const lumiset::hostkit::EffectDescription& effect : catalogue.effects()) {
            lumiset::openfx::writePresets(module.effectLibrary(), effect, std::filesystem::path(argv[2]) / effect.name);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "write_presets: %s\n", error.what());
        return 1;
    }
}

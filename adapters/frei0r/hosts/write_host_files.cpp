// write_host_files MODULE FOLDER: writes what Kdenlive and MLT read about the plug-ins, in the folders below FOLDER in
// which they look for it: kdenlive/effects, kdenlive/effect-templates, mlt-7/frei0r. Run when the project is built.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "adapters/frei0r/hosts/kdenlive.h"
#include "adapters/frei0r/hosts/mlt_metadata.h"
#include "hostkit/module.h"

namespace lumiset::frei0r {
namespace {

void write(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    if (!(stream << text).flush()) {
        throw std::runtime_error("The file " + file.string() + " cannot be written.");
    }
}

void writeEffect(const hostkit::EffectDescription& effect, const std::filesystem::path& folder) {
    const std::filesystem::path kdenlive = folder / "kdenlive";
    write(kdenlive / "effects" / (pluginName(effect.name) + ".xml"), kdenliveEffect(effect));
    write(folder / "mlt-7/frei0r" / mltMetadataFile(effect), mltMetadata(effect));
    for (const hostkit::PresetDescription& preset : effect.presets) {
        hostkit::ParameterStore values(effect);
        values.apply(preset);
        const std::string id = pluginName(effect.name + ' ' + preset.uniqueName);
        write(kdenlive / "effect-templates" / (id + ".xml"),
              kdenliveTemplate(settingsOf(values), id, effect.name + ": " + preset.uniqueName));
    }
}

int run(const std::filesystem::path& module, const std::filesystem::path& folder) {
    try {
        const hostkit::Module loaded(module);
        const hostkit::EffectCatalogue catalogue(loaded.effectLibrary());
        for (const hostkit::EffectDescription& effect : catalogue.effects()) {
            writeEffect(effect, folder);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "write_host_files: %s\n", error.what());
        return 1;
    }
}

}  // namespace
}  // namespace lumiset::frei0r

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: write_host_files MODULE FOLDER\n", stderr);
        return 2;
    }
    return lumiset::frei0r::run(argv[1], argv[2]);
}

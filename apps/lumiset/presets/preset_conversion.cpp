#include "apps/lumiset/presets/preset_conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "apps/lumiset/presets/preset_json.h"
#include "apps/lumiset/usage_error.h"
#include "hostkit/preset_file.h"
#include "media/pending_file.h"
#include "platform/files.h"

namespace lumiset::app {
namespace {

using hostkit::EffectCatalogue;
using hostkit::EffectDescription;
using hostkit::PresetFileError;

/// As much as a preset file may have.
constexpr std::size_t kMaxBytes = 1U << 20U;

std::string extensionOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char each) { return each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each; });
    return extension;
}

bool isJson(const EffectCatalogue& catalogue, const std::string& path) {
    const std::string extension = extensionOf(path);
    const auto& effects = catalogue.effects();
    if (extension != ".json" && std::none_of(effects.begin(), effects.end(), [&](const EffectDescription& effect) {
            return hostkit::presetExtension(effect) == extension;
        })) {
        throw UsageError(fmt::format("\"{}\" is neither a preset file (.lumva to .lumvj) nor JSON (.json).", path));
    }
    return extension == ".json";
}

std::string readText(const std::string& path) {
    std::ifstream stream(std::filesystem::path(path), std::ios::binary);
    std::string text(kMaxBytes + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad() || (stream.fail() && !stream.eof())) {
        throw PresetFileError(fmt::format("The file \"{}\" cannot be read.", path));
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > kMaxBytes) {
        throw PresetFileError(fmt::format("The file \"{}\" is larger than a megabyte.", path));
    }
    return text;
}

NamedPreset readPreset(IEffectLibrary& library, const EffectCatalogue& catalogue, const std::string& path) {
    if (isJson(catalogue, path)) {
        try {
            return presetFromJson(catalogue, readText(path), std::filesystem::path(path).stem().string());
        } catch (const PresetJsonError& error) {
            throw PresetFileError(fmt::format("{}: {}", path, error.what()));
        }
    }
    NamedPreset preset{hostkit::ParameterStore(hostkit::effectOfPresetFile(library, catalogue, path)), {}};
    preset.name = hostkit::loadPresetFile(library, path, preset.parameters);
    return preset;
}

/// The text of a preset file with another name in it, quoted as the module does.
std::string renamed(std::string text, const std::string& name) {
    constexpr std::string_view kAttribute = "<Preset Name=";
    std::string value;
    for (const char each : name) {
        switch (each) {
            case '&':
                value += "&amp;";
                break;
            case '<':
                value += "&lt;";
                break;
            case '>':
                value += "&gt;";
                break;
            case '"':
                value += "&quot;";
                break;
            case '\'':
                value += "&apos;";
                break;
            default:
                value += each;
        }
    }
    const char quote = name.find('"') == std::string::npos ? '"' : '\'';
    const std::size_t begin = text.find(kAttribute) + kAttribute.size();
    const std::size_t end = text.find(text.at(begin), begin + 1) + 1;
    return text.replace(begin, end - begin, quote + value + quote);
}

/// A folder of this user's own, gone with the object.
class ScratchFolder {
public:
    ScratchFolder() : m_path(platform::makeTemporaryFolder()) {
        if (m_path.empty()) {
            throw PresetFileError("There is no place for temporary files.");
        }
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    [[nodiscard]] std::string file() const { return (m_path / "preset").string(); }

private:
    std::filesystem::path m_path;
};

/// The module writes to files alone, and names a preset by its file; this one has a name of its own.
std::string presetFileText(IEffectLibrary& library, const NamedPreset& preset) {
    const ScratchFolder scratch;
    hostkit::savePresetFile(library, scratch.file(), preset.parameters);
    std::string text = renamed(readText(scratch.file()), preset.name);
    std::ofstream(std::filesystem::path(scratch.file()), std::ios::binary) << text;
    hostkit::ParameterStore again(preset.parameters.effect());
    if (hostkit::loadPresetFile(library, scratch.file(), again) != preset.name) {
        throw PresetFileError("It does not read back.");
    }
    return text;
}

}  // namespace

void convertPreset(IEffectLibrary& library, const EffectCatalogue& catalogue, const std::string& from,
                   const std::string& to) {
    const bool toJson = isJson(catalogue, to);
    const NamedPreset preset = readPreset(library, catalogue, from);
    const EffectDescription& effect = preset.parameters.effect();
    if (!toJson && extensionOf(to) != hostkit::presetExtension(effect)) {
        throw UsageError(fmt::format("Preset files of \"{}\" have the extension {}; \"{}\" is another effect's.",
                                     effect.name, hostkit::presetExtension(effect), to));
    }
    std::string text;
    try {
        text = toJson ? presetToJson(preset) : presetFileText(library, preset);
    } catch (const PresetJsonError& error) {
        throw PresetFileError(fmt::format("{}: {}", from, error.what()));
    } catch (const PresetFileError&) {  // told of the name that it has for now
        throw PresetFileError(fmt::format("The file \"{}\" cannot be written.", to));
    }
    media::PendingFile file(to);
    file.write(text);
    file.commit();
}

}  // namespace lumiset::app

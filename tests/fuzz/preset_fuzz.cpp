// Whatever bytes a preset file holds: loading it ends, writes no more than it may, and hands out what the file says;
// and what was read is written so that it reads back the same.

#include <cstdint>
#include <cstring>
#include <string>

#include "platform/text.h"
#include "support/preset_file.h"
#include "support/preset_saver.h"
#include "tests/fuzz/memory_file.h"
#include "tests/presets/preset_effect.h"

namespace lumiset {
namespace {

using fuzz::require;

/// An effect with a parameter of every type.
test::PresetEffectStub everyType() {
    test::PresetEffectStub effect;
    for (const ParamType type : {kParamGroup, kParamPoint, kParamChoice, kParamSlider, kParamColor, kParamBoolean}) {
        effect.entries.push_back({type, {}});
    }
    return effect;
}

bool isFilledWith(const unsigned char* bytes, std::size_t size, unsigned char byte) {
    return bytes[0] == byte && std::memcmp(bytes, bytes + 1, size - 1) == 0;
}

void checkLoad(const std::string& text, const std::optional<Preset>& preset) {
    static const fuzz::MemoryFile s_file;
    static test::PresetEffectStub s_effect = everyType();
    constexpr unsigned char kUntouched = 0xA5;

    s_file.write(text);
    const std::wstring path = platform::fromUtf8(s_file.path()).value();
    PresetOutcome outcome;
    std::memset(&outcome, kUntouched, sizeof outcome);
    CPresetSaver saver;
    const bool loaded = saver.LoadPreset(nullptr, &s_effect, 2, path.c_str(), &outcome);
    if (!loaded) {
        require(outcome.status == (preset ? kPresetMismatched : kPresetUnreadable));
        require(isFilledWith(reinterpret_cast<const unsigned char*>(&outcome) + sizeof outcome.status,
                             sizeof outcome - sizeof outcome.status, kUntouched));
        return;
    }
    require(preset && outcome.status == kPresetDone && outcome.count == s_effect.entries.size());
    require(preset->effectName == s_effect.effectName && preset->effectLibrary == s_effect.effectLibrary);
    for (std::size_t i = 0; i < outcome.count; ++i) {
        require(outcome.entries[i].type == s_effect.entries[i].type);
        require(std::memcmp(&outcome.entries[i], &preset->entries[i], sizeof(PresetEntry)) == 0);
    }
    const std::size_t length = ::strnlen(outcome.name, sizeof outcome.name);
    require(length < sizeof outcome.name && preset->name.compare(0, length, outcome.name, length) == 0);
    require(platform::fromUtf8({outcome.name, length}).has_value());
}

void checkRoundTrip(const Preset& preset) {
    const std::string text = presetText(preset);
    const std::optional<Preset> again = parsePreset(text);
    require(again && again->name == preset.name && again->effectLibrary == preset.effectLibrary &&
            again->effectName == preset.effectName && again->entries.size() == preset.entries.size() &&
            presetText(*again) == text);
}

}  // namespace
}  // namespace lumiset

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::optional<lumiset::Preset> preset = lumiset::parsePreset(text);
    lumiset::checkLoad(text, preset);
    // What takes the most bytes allowed may take more when it is written in full.
    if (preset && text.size() < lumiset::kMaxPresetBytes / 16) {
        lumiset::checkRoundTrip(*preset);
    }
    return 0;
}

// Whatever bytes a preset file holds: loading it ends, writes no more than it may, and hands out what the file says;
// and what was read is written so that it reads back the same.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/text.h"
#include "support/preset_file.h"
#include "support/preset_saver.h"
#include "tests/presets/preset_effect.h"

namespace lumiset {
namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A file in memory, under a path as every other.
class MemoryFile {
public:
    MemoryFile() : m_descriptor(::memfd_create("preset", 0)) { require(m_descriptor >= 0); }

    void write(const std::string& bytes) const {
        require(::ftruncate(m_descriptor, 0) == 0 && ::lseek(m_descriptor, 0, SEEK_SET) == 0 &&
                ::write(m_descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    }
    [[nodiscard]] std::wstring path() const { return L"/proc/self/fd/" + std::to_wstring(m_descriptor); }

private:
    int m_descriptor;
};

/// An effect with a parameter of every type.
testing::PresetEffectStub everyType() {
    testing::PresetEffectStub effect;
    for (const ParamType type : {kParamGroup, kParamPoint, kParamChoice, kParamSlider, kParamColor, kParamBoolean}) {
        effect.entries.push_back({type, {}});
    }
    return effect;
}

bool isFilledWith(const unsigned char* bytes, std::size_t size, unsigned char byte) {
    return bytes[0] == byte && std::memcmp(bytes, bytes + 1, size - 1) == 0;
}

void checkLoad(const std::string& text, const std::optional<Preset>& preset) {
    static const MemoryFile s_file;
    static testing::PresetEffectStub s_effect = everyType();
    constexpr unsigned char kUntouched = 0xA5;

    s_file.write(text);
    PresetOutcome outcome;
    std::memset(&outcome, kUntouched, sizeof outcome);
    CPresetSaver saver;
    const bool loaded = saver.LoadPreset(nullptr, &s_effect, 2, s_file.path().c_str(), &outcome);
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

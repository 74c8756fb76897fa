#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "apps/lumiset/validate/check.h"
#include "apps/lumiset/validate/effect.h"
#include "hostkit/module.h"

namespace lumiset::app::validate {
namespace {

using hostkit::ComPtr;
using hostkit::Module;

/// An effect with the values of a preset, as a host hands it to the saver.
class Stored final : public IPresetEffect {
public:
    Stored(const Effect& effect, const char* libraryName, std::vector<ParamValue> values)
        : m_effect(effect), m_libraryName(libraryName), m_values(std::move(values)) {}
    Result LUMISET_CALL QueryInterface(const Guid&, void** out) noexcept override {
        *out = nullptr;
        return kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 2; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    const char* LUMISET_CALL GetEffectName() noexcept override { return m_effect.name.c_str(); }
    const char* LUMISET_CALL GetLibraryName() noexcept override { return m_libraryName; }
    bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept override {
        return m_effect.object->GetParamInfo(index, out);
    }
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t) noexcept override {
        *out = m_values[index];
    }
    [[nodiscard]] const std::vector<ParamValue>& values() const { return m_values; }

private:
    const Effect& m_effect;
    const char* m_libraryName;
    std::vector<ParamValue> m_values;
};

/// A folder that goes with the object.
class Folder {
public:
    Folder() {
        std::random_device device;
        do {
            m_path = std::filesystem::temp_directory_path() / fmt::format("lumiset-validate-{:08x}", device());
        } while (!std::filesystem::create_directory(m_path));
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    [[nodiscard]] std::filesystem::path operator/(const char* name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool sameValue(const ParamInfo& info, const ParamValue& a, const ParamValue& b) {
    switch (info.type) {
        case kParamGroup:
            return true;
        case kParamBoolean:
            return (a.boolean != 0) == (b.boolean != 0);
        case kParamPoint:
            return a.words[0] == b.words[0] && a.words[1] == b.words[1];
        default:
            return a.words[0] == b.words[0];
    }
}

/// Whether the saver reads `file`, with every value in range. Throws `Broken` where it answers two things at once.
bool isRead(IPresetSaver& saver, Stored& stored, const Effect& effect, const std::filesystem::path& file) {
    PresetOutcome outcome;
    std::memset(&outcome, 0xEE, sizeof outcome);
    const PresetOutcome before = outcome;
    const std::wstring path = file.wstring();
    const bool read = saver.LoadPreset(nullptr, &stored, effect.index, path.c_str(), &outcome);
    const auto broken = [&](const char* what) { throw Broken(effect.name + ": " + what); };
    if (read != (outcome.status == kPresetDone)) {
        broken("its answer and its status differ.");
    }
    if (!read) {
        if (std::memcmp(&outcome.count, &before.count, sizeof outcome - offsetof(PresetOutcome, count)) != 0) {
            broken("a file that is refused has left values.");
        }
        return false;
    }
    if (outcome.count != effect.params.size()) {
        broken("a file was read with more or fewer values than it has parameters.");
    }
    for (std::size_t i = 0; i < effect.params.size(); ++i) {
        const float* const numbers = &outcome.entries[i].value.point.x;
        const std::uint32_t type = effect.params[i].type;
        const int count = type == kParamSlider ? 1 : type == kParamPoint ? 2 : 0;
        for (int k = 0; k < count; ++k) {
            if (!(numbers[k] >= 0.0F && numbers[k] <= 1.0F)) {
                broken("a value out of range was read from a file.");
            }
        }
    }
    return true;
}

/// Stores each preset and reads it again; the last one's file stays.
void checkKept(IPresetSaver& saver, const char* library, const Effect& effect, const std::filesystem::path& file) {
    const std::wstring path = file.wstring();
    for (std::uint32_t preset = 0; preset < std::max(effect.presets, 1U); ++preset) {
        Stored stored(effect, library, effect.valuesOf(preset));
        PresetOutcome outcome{};
        if (!saver.SavePreset(nullptr, &stored, effect.index, path.c_str(), &outcome) ||
            !saver.LoadPreset(nullptr, &stored, effect.index, path.c_str(), &outcome)) {
            throw Broken(fmt::format("{}: preset {} cannot be stored and read.", effect.name, preset));
        }
        for (std::size_t i = 0; i < effect.params.size(); ++i) {
            if (!sameValue(effect.params[i], outcome.entries[i].value, stored.values()[i])) {
                throw Broken(
                    fmt::format("{}: preset {} is read with another {}.", effect.name, preset, effect.params[i].label));
            }
        }
    }
}

/// Cuts a text short, changes a byte or a digit of it, or repeats a part.
std::string damaged(std::string text, int way, std::mt19937& random) {
    const std::size_t at = random() % text.size();
    const std::size_t digit = text.find_first_of("0123456789", at);
    if (way == 0) {
        text.resize(at);
    } else if (way == 1) {
        text[at] = static_cast<char>(random() & 0xFFU);
    } else if (way == 2 && digit != std::string::npos) {
        text[digit] = static_cast<char>('0' + random() % 10);
    } else {
        text.insert(at, text.substr(random() % text.size(), random() % 40));
    }
    return text;
}

void checkDamaged(IPresetSaver& saver, Stored& stored, const Effect& effect, const std::filesystem::path& file,
                  std::mt19937& random) {
    const std::string good = contentsOf(file);
    for (int damage = 0; damage < 400; ++damage) {
        const std::string bad = damaged(good, damage % 4, random);
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bad;
        (void)isRead(saver, stored, effect, file);
        if (contentsOf(file) != bad) {
            throw Broken(effect.name + ": reading changes the file.");
        }
    }
}

void checkFiles(const Subject& subject) {
    const Module module(subject.module);
    IEffectLibrary& library = module.effectLibrary();
    const auto saver = ComPtr<IPresetSaver>::adopt(library.CreatePresetSaver());
    if (!saver) {
        throw Broken("There is no preset saver.");
    }
    const Folder folder;
    const std::filesystem::path file = folder / "Pre set.preset";
    std::mt19937 random = subject.random();
    const std::vector<Effect> effects = effectsOf(library);
    for (const Effect& effect : effects) {
        if (effect.params.size() > kMaxPresetEntries) {
            throw Broken(effect.name + " has more parameters than a preset holds.");
        }
        checkKept(*saver.get(), library.GetLibraryName(), effect, file);
        for (const Effect& other : effects) {
            Stored foreign(other, library.GetLibraryName(), other.valuesOf(0));
            if (isRead(*saver.get(), foreign, other, file) != (other.index == effect.index)) {
                throw Broken(
                    fmt::format("{} and {} read each other's files, or not their own.", effect.name, other.name));
            }
        }
        Stored stored(effect, library.GetLibraryName(), effect.valuesOf(0));
        checkDamaged(*saver.get(), stored, effect, file, random);
        if (isRead(*saver.get(), stored, effect, folder / "missing") ||
            saver->SavePreset(nullptr, &stored, effect.index, (folder / "no folder/a").wstring().c_str(), nullptr) ||
            saver->LoadPreset(nullptr, &stored, effect.index, nullptr, nullptr)) {
            throw Broken(effect.name + ": a file that cannot be is read or written.");
        }
    }
}

constexpr Check kPresetChecks[] = {
    {"files", "Presets are stored and read with the same values; a damaged or foreign file is refused as a whole.",
     checkFiles},
};

}  // namespace

std::span<const Check> presetChecks() {
    return kPresetChecks;
}

}  // namespace lumiset::app::validate

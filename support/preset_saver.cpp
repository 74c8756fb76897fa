#include "support/preset_saver.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <string>

#include "platform/file_dialog.h"
#include "platform/files.h"
#include "platform/message_box.h"
#include "platform/text.h"
#include "support/preset_file.h"

namespace lumiset {
namespace {

/// Letters that tell effects apart.
constexpr std::uint32_t kMaxEffects = 26;

using Ask = platform::DialogAnswer (*)(const platform::FileDialog&, std::wstring&);

/// The path that was given, or else the user's choice.
platform::DialogAnswer choosePath(void* owner, std::uint32_t index, const wchar_t* given, const char* title, Ask ask,
                                  std::wstring& path) {
    if (given != nullptr) {
        path = given;
        return platform::DialogAnswer::kChosen;
    }
    if (owner == nullptr || index >= kMaxEffects) {
        return platform::DialogAnswer::kUnavailable;
    }
    const std::string extension = presetExtension(index).data();
    return ask({owner, title, "Preset Files (*." + extension + ")", extension}, path);
}

bool namesItself(IPresetEffect* effect) {
    return effect != nullptr && effect->GetEffectName() != nullptr && effect->GetLibraryName() != nullptr;
}

/// The effect's values now; nothing for an effect with more parameters than a preset holds, or with a value that is no
/// number.
std::optional<std::vector<PresetEntry>> valuesOf(IPresetEffect& effect) {
    std::vector<PresetEntry> entries;
    for (ParamInfo info{}; effect.GetParamInfo(static_cast<std::uint32_t>(entries.size()), &info); info = {}) {
        if (entries.size() == kMaxPresetEntries) {
            return std::nullopt;
        }
        PresetEntry entry{info.type, {}};
        if (info.type <= kParamBoolean) {
            entry.value = info.defaultValue;
            effect.GetParamValue(static_cast<std::uint32_t>(entries.size()), &entry.value, info.type);
        }
        if (!limitValues(entry)) {
            return std::nullopt;
        }
        entries.push_back(entry);
    }
    return entries;
}

/// Leaves the entries that `effect` has; of a list that has no such item the first one is meant, as everywhere. False
/// when one is missing or of another type.
bool fits(IPresetEffect& effect, Preset& preset) {
    if (preset.effectLibrary != effect.GetLibraryName() || preset.effectName != effect.GetEffectName()) {
        return false;
    }
    std::uint32_t count = 0;
    for (ParamInfo info{}; effect.GetParamInfo(count, &info); info = {}) {
        if (count == kMaxPresetEntries || count >= preset.entries.size() || preset.entries[count].type != info.type) {
            return false;
        }
        if (info.type == kParamChoice && info.itemCount > 0 && preset.entries[count].value.choice >= info.itemCount) {
            preset.entries[count].value.choice = 0;
        }
        ++count;
    }
    preset.entries.resize(count);
    return true;
}

/// A file's name without folder and extension. XML has no way to write control characters, so these are given up.
std::string presetName(std::wstring_view path) {
    const std::size_t slash = path.find_last_of(L"/\\");
    std::wstring_view stem = slash == std::wstring_view::npos ? path : path.substr(slash + 1);
    if (const std::size_t dot = stem.rfind(L'.'); dot != std::wstring_view::npos && dot > 0) {
        stem = stem.substr(0, dot);
    }
    std::wstring name(stem);
    std::replace_if(
        name.begin(), name.end(), [](wchar_t each) { return each < L' ' || each == 0x7F; }, L' ');
    return platform::toUtf8(name).value_or("");
}

/// As much of `text` as the record holds, cut between characters.
void copyName(char (&out)[kPresetNameSize], const std::string& text) {
    std::size_t size = std::min(text.size(), sizeof out - 1);
    while (size > 0 && size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) {
        --size;
    }
    std::memset(out, 0, sizeof out);
    std::memcpy(out, text.data(), size);
}

void fill(PresetOutcome* outcome, const Preset& preset) {
    if (outcome == nullptr) {
        return;
    }
    *outcome = {};
    outcome->count = static_cast<std::uint32_t>(preset.entries.size());
    copyName(outcome->name, preset.name);
    std::copy(preset.entries.begin(), preset.entries.end(), outcome->entries);
}

PresetStatus load(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* given,
                  PresetOutcome* outcome) {
    std::wstring path;
    const auto answer = choosePath(owner, index, given, "Load Preset", platform::askForFileToOpen, path);
    if (answer == platform::DialogAnswer::kCancelled) {
        return kPresetCancelled;
    }
    std::optional<Preset> preset;
    if (answer == platform::DialogAnswer::kChosen && namesItself(effect) && platform::toSystemText(path)) {
        if (const auto text = platform::readFile(path, kMaxPresetBytes)) {
            preset = parsePreset(*text);
        }
    }
    if (!preset) {
        if (owner != nullptr) {
            platform::showFailure(owner, "Preset load error",
                                  "Sorry, can't open the preset specified.\n"
                                  "Possible reason: access denied or file is corrupted.");
        }
        return kPresetUnreadable;
    }
    if (!fits(*effect, *preset)) {
        if (owner != nullptr) {
            const std::string text = "Error trying to open a " + preset->effectName + " preset. This can only open " +
                                     effect->GetEffectName() + " presets. Please try again.";
            platform::showFailure(owner, "Preset open warning", text.c_str());
        }
        return kPresetMismatched;
    }
    fill(outcome, *preset);
    return kPresetDone;
}

/// The effect's values under the name of their file; nothing when they would not read back.
std::optional<Preset> presetOf(IPresetEffect* effect, std::wstring_view path) {
    std::optional<std::vector<PresetEntry>> entries = namesItself(effect) ? valuesOf(*effect) : std::nullopt;
    if (!entries || !platform::toSystemText(path)) {
        return std::nullopt;
    }
    return Preset{presetName(path), effect->GetLibraryName(), effect->GetEffectName(), std::move(*entries)};
}

/// True for a text that reads back to the effect's preset. Names with control characters, say, would not.
bool readsBack(IPresetEffect& effect, const std::string& text) {
    std::optional<Preset> again = parsePreset(text);
    return again && fits(effect, *again);
}

PresetStatus save(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* given,
                  PresetOutcome* outcome) {
    std::wstring path;
    const auto answer = choosePath(owner, index, given, "Save Preset", platform::askForFileToSave, path);
    if (answer == platform::DialogAnswer::kCancelled) {
        return kPresetCancelled;
    }
    if (answer == platform::DialogAnswer::kChosen) {
        if (const std::optional<Preset> preset = presetOf(effect, path)) {
            const std::string text = presetText(*preset);
            if (readsBack(*effect, text) && platform::replaceFile(path, text)) {
                fill(outcome, *preset);
                return kPresetDone;
            }
        }
    }
    if (owner != nullptr) {
        platform::showFailure(nullptr, "Preset save error",
                              "Sorry, can't save preset.\nPossible reason: access denied or disk is full.");
    }
    return kPresetNotSaved;
}

bool report(PresetStatus status, PresetOutcome* outcome) {
    if (outcome != nullptr) {
        outcome->status = status;
    }
    return status == kPresetDone;
}

}  // namespace

Result CPresetSaver::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IPresetSaver>(this, iid, out, kResultFail);
}

void CPresetSaver::DeleteThis() noexcept {
    delete this;
}

bool CPresetSaver::LoadPreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                              PresetOutcome* outcome) noexcept {
    try {
        return report(load(owner, effect, index, path, outcome), outcome);
    } catch (const std::exception&) {  // memory is exhausted
        return report(kPresetUnreadable, outcome);
    }
}

bool CPresetSaver::SavePreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                              PresetOutcome* outcome) noexcept {
    try {
        return report(save(owner, effect, index, path, outcome), outcome);
    } catch (const std::exception&) {
        return report(kPresetNotSaved, outcome);
    }
}

}  // namespace lumiset

#pragma once

// Preset files: an effect's parameter values in a small XML file.

#include <array>
#include <cstddef>
#include <cstdint>

#include "host/records.h"

namespace lumiset {

/// What a host hands over to have an effect's values stored or a file checked: the effect's names and parameters, and
/// the values they have now. Called on the thread that called the saver, and not kept.
class IPresetEffect : public IUnknown {
public:
    /// Both names as the effect and its library tell them; constant texts.
    virtual const char* LUMISET_CALL GetEffectName() noexcept = 0;
    virtual const char* LUMISET_CALL GetLibraryName() noexcept = 0;
    /// As `IVideoEffect::GetParamInfo`: false past the last parameter.
    virtual bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept = 0;
    /// As `IEffectHost::GetParamValue`: `out` holds the default on entry. Not asked for group markers.
    virtual void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept = 0;

protected:
    ~IPresetEffect() = default;
};

inline constexpr std::size_t kMaxPresetEntries = 64;
inline constexpr std::size_t kPresetNameSize = 256;

enum PresetStatus : std::uint32_t {
    kPresetDone = 0,
    kPresetCancelled = 1,   ///< the user closed the dialog
    kPresetUnreadable = 2,  ///< no file to read, or not a preset
    kPresetMismatched = 3,  ///< a preset of another effect, or of another version of it
    kPresetNotSaved = 4,
};

/// One parameter's value in a preset.
struct PresetEntry {
    std::uint32_t type;  ///< a `ParamType`; group markers and unknown types have no value
    ParamValue value;
};

/// How a call ended. Only `status` is written unless it is `kPresetDone`.
struct PresetOutcome {
    std::uint32_t status;                    ///< a `PresetStatus`
    std::uint32_t count;                     ///< entries that count: one for each of the effect's parameters
    char name[kPresetNameSize];              ///< the preset's name in UTF-8, NUL-terminated
    PresetEntry entries[kMaxPresetEntries];  ///< by parameter index
};
/// The extension of the preset files of the effect with that library index, up to 25: "lumva" is the first one's.
constexpr std::array<char, 6> presetExtension(std::uint32_t index) noexcept {
    return {'l', 'u', 'm', 'v', static_cast<char>('a' + index), '\0'};
}

static_assert(sizeof(PresetEntry) == 12);
static_assert(sizeof(PresetOutcome) == 1032);
static_assert(offsetof(PresetOutcome, name) == 8 && offsetof(PresetOutcome, entries) == 264);

/// Reads and writes preset files. The object has no state; several threads may share it. In both calls `index` is the
/// effect's library index, by which its files get their extension, ".lumva" to ".lumvj". `owner` is the parent window
/// of dialogs and messages; where it is null none appear. (Where windows have no such handles anything but null stands
/// for the user being there to see them.) With a `path` no dialog appears; without one the user is asked, and without
/// an owner to ask the call fails. `outcome` may be null.
class IPresetSaver : public IUnknown {
public:
    static constexpr Guid kId{0x44CD1462, 0x6E3D, 0x438E, {0x9B, 0x72, 0x8C, 0x53, 0x3A, 0xA8, 0xFD, 0x8C}};

    /// Reads a preset of `effect` and hands the values out in `outcome`; setting them is the host's part. A file of up
    /// to 1 MiB is accepted if it names the effect and its library and holds an entry of the right type for each
    /// parameter; more entries than that do not matter. Sliders and points are limited to 0..1, of a list that has no
    /// such item the first one is meant; a file with a number that is not finite is refused.
    virtual bool LUMISET_CALL LoadPreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                                         PresetOutcome* outcome) noexcept = 0;
    /// Writes the values that `effect` has now, under the file's name as the preset's name. On success `outcome` holds
    /// what was written; on failure what stood under that path is as it was.
    virtual bool LUMISET_CALL SavePreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                                         PresetOutcome* outcome) noexcept = 0;
    /// Deletes the object; `Release` calls it at count 0. Hosts do not.
    virtual void LUMISET_CALL DeleteThis() noexcept = 0;

protected:
    ~IPresetSaver() = default;
};

}  // namespace lumiset

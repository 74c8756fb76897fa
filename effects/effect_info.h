#pragma once

// An effect, declared as data: rows of parameters and of presets. One implementation (effect.h) answers the
// host's questions from these rows, and `static_assert(valid(info))` checks them when they are compiled.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "host/records.h"

namespace lumiset {

/// One parameter as the host's panel shows it. Rows are made by the functions below.
struct ParamRow {
    const char* label = "";
    ParamType type = kParamGroup;
    ParamValue defaultValue{};
    PanelRect panelRect{};
    const char* toolTip = "";
    float minimum = 0.0F;  ///< sliders: the range that the panel shows
    float maximum = 0.0F;
    bool showDecimals = true;
    bool closesGroup = false;
    std::span<const char* const> items = {};  ///< choices: the list's labels
};

/// Behaviour bits that `GetEffectFlags` reports.
enum EffectFlags : std::uint32_t {
    kFlagsEveryEffect = 0x03C1,
    kFlagChangesAlpha = 0x0004,   ///< the result's transparency is not the source's
    kFlagDependsOnTime = 0x4000,  ///< the picture changes with the render time
};

struct GPUProgramSource;

/// A table of presets whatever its size.
struct PresetRows {
    std::span<const char* const> names;
    std::span<const ParamValue> values;  ///< preset after preset, `slots` values each
    std::size_t slots;
};

/// Everything about an effect but its renderers.
struct EffectInfo {
    const char* name;
    std::uint32_t flags;
    std::span<const ParamRow> params;
    PresetRows presets;
    /// The one name, if any, that several presets bear by intent.
    std::string_view sharedPresetName = {};
    /// The picture knows up from down: frames stored bottom-up are turned over before and after rendering.
    bool needsTopDown = false;
    /// The program by which a host learns whether the effect can render in OpenGL; null without such a renderer.
    const GPUProgramSource* mainProgram = nullptr;
};

constexpr ParamValue sliderValue(float value) {
    return {.slider = value};
}
constexpr ParamValue pointValue(float x, float y) {
    return {.point = {x, y}};
}
/// Packed as 0x00BBGGRR.
constexpr ParamValue colorValue(std::uint32_t value) {
    return {.words = {value, 0}};
}
constexpr ParamValue choiceValue(std::uint32_t item) {
    return {.words = {item, 0}};
}
constexpr ParamValue booleanValue(bool value) {
    return {.words = {value ? 1U : 0U, 0}};
}

constexpr ParamRow sliderParam(const char* label, float defaultValue, PanelRect panel, const char* toolTip,
                               float minimum = 0.0F, float maximum = 100.0F, bool showDecimals = true) {
    return {.label = label,
            .type = kParamSlider,
            .defaultValue = sliderValue(defaultValue),
            .panelRect = panel,
            .toolTip = toolTip,
            .minimum = minimum,
            .maximum = maximum,
            .showDecimals = showDecimals};
}
constexpr ParamRow colorParam(const char* label, std::uint32_t defaultValue, PanelRect panel, const char* toolTip) {
    return {.label = label,
            .type = kParamColor,
            .defaultValue = colorValue(defaultValue),
            .panelRect = panel,
            .toolTip = toolTip};
}
constexpr ParamRow pointParam(const char* label, float x, float y, PanelRect panel, const char* toolTip) {
    return {
        .label = label, .type = kParamPoint, .defaultValue = pointValue(x, y), .panelRect = panel, .toolTip = toolTip};
}
constexpr ParamRow booleanParam(const char* label, bool defaultValue, PanelRect panel, const char* toolTip) {
    return {.label = label,
            .type = kParamBoolean,
            .defaultValue = booleanValue(defaultValue),
            .panelRect = panel,
            .toolTip = toolTip};
}
constexpr ParamRow choiceParam(const char* label, std::span<const char* const> items, std::uint32_t defaultItem,
                               PanelRect panel, const char* toolTip) {
    return {.label = label,
            .type = kParamChoice,
            .defaultValue = choiceValue(defaultItem),
            .panelRect = panel,
            .toolTip = toolTip,
            .items = items};
}
constexpr ParamRow groupOpen(const char* label, PanelRect panel) {
    return {.label = label, .type = kParamGroup, .panelRect = panel};
}
constexpr ParamRow groupClose(const char* label, PanelRect panel) {
    return {.label = label, .type = kParamGroup, .panelRect = panel, .closesGroup = true};
}

/// One preset of an effect with `Slots` values.
template <std::size_t Slots>
struct PresetRow {
    const char* name;
    std::array<ParamValue, Slots> values;
};

template <class... Values>
constexpr PresetRow<sizeof...(Values)> preset(const char* name, Values... values) {
    return {name, {values...}};
}

/// The presets of an effect in their order, stored as `EffectInfo` refers to them.
template <std::size_t Slots, std::size_t Count>
struct PresetTable {
    static constexpr std::size_t kSlots = Slots;

    std::array<const char*, Count> names{};
    std::array<ParamValue, Count * Slots> values{};

    template <class... Rows>
    constexpr explicit PresetTable(const Rows&... rows) : names{rows.name...} {
        std::size_t next = 0;
        for (const PresetRow<Slots>& row : {rows...}) {
            for (const ParamValue& value : row.values) {
                values[next++] = value;
            }
        }
    }

    constexpr operator PresetRows() const { return {names, values, kSlots}; }
};
template <std::size_t Slots, class... Rows>
PresetTable(const PresetRow<Slots>&, const Rows&...) -> PresetTable<Slots, 1 + sizeof...(Rows)>;

namespace detail {

constexpr bool isUnit(float value) {
    return value >= 0.0F && value <= 1.0F;
}

constexpr bool fits(std::string_view text, std::size_t size) {
    return !text.empty() && text.size() < size;
}

/// A value as the host's panel could set it. Any word is a colour: its highest byte is cut off.
constexpr bool validValue(const ParamRow& row, const ParamValue& value) {
    switch (row.type) {
        case kParamSlider:
            return isUnit(value.slider);
        case kParamPoint:
            return isUnit(value.point.x) && isUnit(value.point.y);
        case kParamBoolean:
            return value.words[0] <= 1;
        case kParamChoice:
            return value.words[0] < row.items.size();
        default:
            return true;
    }
}

constexpr bool validParam(const ParamRow& row) {
    if (!fits(row.label, kParamLabelSize)) {
        return false;
    }
    if (row.type == kParamGroup) {
        return true;
    }
    bool good = !std::string_view(row.toolTip).empty() && validValue(row, row.defaultValue);
    if (row.type == kParamSlider) {
        good = good && row.minimum < row.maximum;
    } else if (row.type == kParamChoice) {
        good = good && row.items.size() <= kMaxChoiceItems;
        for (const char* item : row.items) {
            good = good && fits(item, kChoiceLabelSize);
        }
    }
    return good;
}

constexpr bool validParams(std::span<const ParamRow> params) {
    bool open = false;
    for (const ParamRow& row : params) {
        if (!validParam(row) || (row.type == kParamGroup && row.closesGroup != open)) {
            return false;
        }
        open = row.type == kParamGroup ? !row.closesGroup : open;
    }
    return !open;
}

constexpr bool validPresetNames(const EffectInfo& info) {
    const auto& names = info.presets.names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string_view name = names[i];
        const auto others = names.first(i);
        if (name.empty() ||
            (name != info.sharedPresetName && std::find(others.begin(), others.end(), name) != others.end())) {
            return false;
        }
    }
    return !names.empty();
}

constexpr bool validPresets(const EffectInfo& info) {
    std::size_t valued = 0;
    for (const ParamRow& row : info.params) {
        valued += row.type != kParamGroup ? 1 : 0;
    }
    const PresetRows& presets = info.presets;
    const bool numberedByParam = presets.slots == info.params.size();
    if ((presets.slots != valued && !numberedByParam) ||
        presets.values.size() != presets.slots * presets.names.size()) {
        return false;
    }
    for (std::size_t preset = 0; preset < presets.names.size(); ++preset) {
        std::size_t slot = preset * presets.slots;
        for (const ParamRow& row : info.params) {
            const bool isGroup = row.type == kParamGroup;
            if (!isGroup && !validValue(row, presets.values[slot])) {
                return false;
            }
            slot += !isGroup || numberedByParam ? 1 : 0;
        }
    }
    return true;
}

}  // namespace detail

/// True when an effect's tables are whole:
/// - its name, labels, list items and preset names stand and fit the fields that hosts have for them, and every
///   parameter with a value has a tool tip;
/// - groups open and close in turn, sliders show a range, and lists have items;
/// - defaults and preset values are such as the panel could set: sliders and points in 0..1, booleans 0 or 1, choices
///   an item of their list, each made by the function for its parameter's type (or the table does not compile);
/// - presets have a value for each parameter that has one, or for each row, and names of their own.
constexpr bool valid(const EffectInfo& info) {
    return !std::string_view(info.name).empty() && detail::validParams(info.params) && detail::validPresetNames(info) &&
           detail::validPresets(info);
}

}  // namespace lumiset

#include "apps/lumiset/presets/preset_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "host/preset_saver.h"
#include "hostkit/value_json.h"
#include "platform/text.h"

namespace lumiset::app {
namespace {

using hostkit::EffectDescription;
using hostkit::Json;
using hostkit::ParameterDescription;

/// The preset, its values, one value in its stored form, the two numbers of a point.
constexpr hostkit::JsonLimits kLimits{"a preset", 4};

const Json& member(const Json& json, const char* key, bool (Json::*isRight)() const noexcept, const char* what) {
    return hostkit::jsonMember(json, key, isRight, what, kLimits);
}

std::string checkedName(const std::string& name) {
    const auto isControl = [](char each) { return static_cast<unsigned char>(each) < 0x20 || each == 0x7F; };
    if (name.size() >= kPresetNameSize || std::any_of(name.begin(), name.end(), isControl) ||
        !platform::fromUtf8(name)) {
        throw PresetJsonError(
            fmt::format("A preset's name is one line of at most {} bytes in UTF-8.", kPresetNameSize - 1));
    }
    return name;
}

NamedPreset presetOf(const hostkit::EffectCatalogue& catalogue, const Json& json, const std::string& otherwise) {
    hostkit::checkJsonKeys(json, {"effect", "name", "values"}, "A preset");
    const std::string effect = member(json, "effect", &Json::is_string, "an effect's name");
    NamedPreset preset{hostkit::ParameterStore(catalogue.effect(effect)), otherwise};
    if (json.contains("name")) {
        preset.name = member(json, "name", &Json::is_string, "a text");
    }
    preset.name = checkedName(preset.name);
    std::set<std::uint32_t> set;
    for (const auto& [label, value] : member(json, "values", &Json::is_object, "an object of labels").items()) {
        const ParameterDescription& parameter = preset.parameters.effect().parameter(label);
        if (!set.insert(parameter.index).second) {
            throw PresetJsonError(fmt::format("{} is set twice.", parameter.path()));
        }
        preset.parameters.set(parameter, hostkit::valueFromJson(parameter, value));
    }
    return preset;
}

}  // namespace

std::string presetToJson(const NamedPreset& preset) {
    const EffectDescription& effect = preset.parameters.effect();
    Json values = Json::object();
    try {
        for (const ParameterDescription& parameter : effect.parameters) {
            values[effect.shortestName(parameter)] =
                hostkit::valueToJson(parameter, preset.parameters.valueAt(parameter, 0.0));
        }
    } catch (const hostkit::ParameterError& error) {
        throw PresetJsonError(error.what());
    }
    return Json{{"effect", effect.name}, {"name", preset.name}, {"values", std::move(values)}}.dump(2) + '\n';
}

NamedPreset presetFromJson(const hostkit::EffectCatalogue& catalogue, const std::string& text,
                           const std::string& otherwise) {
    try {
        return presetOf(catalogue, hostkit::parseJson(text, kLimits), otherwise);
    } catch (const hostkit::ParameterError& error) {
        throw PresetJsonError(error.what());
    } catch (const hostkit::JsonError& error) {
        throw PresetJsonError(error.what());
    }
}

}  // namespace lumiset::app

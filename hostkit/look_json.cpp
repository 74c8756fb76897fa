#include "hostkit/look_json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

#include "hostkit/names.h"
#include "hostkit/parameter_text.h"
#include "hostkit/value_json.h"

namespace lumiset::hostkit {
namespace {

/// The look, its effects, one of them, its keys, those of one parameter, one key, its value, a point in that.
constexpr JsonLimits kLimits{"a look", 8};
constexpr std::size_t kMaxEffects = 100;
constexpr std::size_t kMaxKeys = 10000;  // of one parameter
constexpr std::size_t kMaxLineBytes = 200;
constexpr std::size_t kMaxAboutBytes = 1000;
constexpr std::size_t kMaxClipBytes = 4096;

bool isControl(char each) {
    return static_cast<unsigned char>(each) < 0x20 || each == 0x7F;
}

/// Shortest, and without the ".0" that whole numbers have in JSON.
std::string percentText(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

double strengthFrom(const Json& json) {
    if (!json.contains("strength")) {
        return 100.0;
    }
    const Json& strength = json["strength"];
    if (!strength.is_number() || !(strength.get<double>() >= 0.0) || !(strength.get<double>() <= 100.0)) {
        throw JsonError("\"strength\" is a number from 0 to 100.");
    }
    return strength.get<double>();
}

std::string textFrom(const Json& json, const char* key) {
    return json.contains(key) ? jsonMember(json, key, &Json::is_string, "a text", kLimits).get<std::string>() : "";
}

LookTime timeFrom(const Json& json) {
    LookTime time;
    if (json.is_number() && json.get<double>() >= 0.0 && std::isfinite(json.get<double>())) {
        time.at = json.get<double>();
    } else if (!json.is_string() || !parseLookTime(json.get<std::string>(), time) || !time.isPart) {
        throw JsonError("\"at\" is a number of seconds, 0 or later, or a part of the clip from \"0%\" to \"100%\".");
    }
    return time;
}

Json timeJson(const LookTime& time) {
    return time.isPart ? Json(percentText(time.at) + '%') : Json(time.at);
}

/// Reads `labels`, an object, as parameters that are not yet in `effect`.
template <class Read>
void readParameters(const EffectDescription& description, const Json& labels, LookEffect& effect, const Read& read) {
    for (const auto& [label, json] : labels.items()) {
        const ParameterDescription& parameter = description.parameter(label);
        const std::size_t before = effect.parameters.size();
        LookParameter& place = effect.of(parameter);
        if (effect.parameters.size() == before) {
            throw JsonError(parameter.path() + " of " + description.name + " is set twice.");
        }
        read(parameter, json, place);
    }
}

void readKeys(const ParameterDescription& parameter, const Json& json, LookParameter& place) {
    if (!json.is_array() || json.empty() || json.size() > kMaxKeys) {
        throw JsonError("The keys of " + parameter.path() + " are a list of 1 to " + std::to_string(kMaxKeys) + '.');
    }
    for (const Json& key : json) {
        checkJsonKeys(key, {"at", "value"}, "A key");
        if (!key.contains("at") || !key.contains("value")) {
            throw JsonError("A key of " + parameter.path() + " has \"at\" and \"value\".");
        }
        place.keys.push_back({timeFrom(key["at"]), valueFromJson(parameter, key["value"])});
    }
}

LookEffect effectFrom(const EffectCatalogue& catalogue, const Json& json) {
    checkJsonKeys(json, {"effect", "off", "preset", "strength", "values", "keys"}, "An effect of a look");
    const auto name = jsonMember(json, "effect", &Json::is_string, "an effect's name", kLimits).get<std::string>();
    const EffectDescription& description = catalogue.effect(name);
    LookEffect effect{description.name};
    if (const std::string preset = textFrom(json, "preset"); !preset.empty()) {
        effect.preset = description.preset(preset).uniqueName;
    }
    effect.strength = strengthFrom(json);
    effect.off =
        json.contains("off") && jsonMember(json, "off", &Json::is_boolean, "true or false", kLimits).get<bool>();
    if (json.contains("values")) {
        readParameters(description, jsonMember(json, "values", &Json::is_object, "an object of labels", kLimits),
                       effect, [](const ParameterDescription& parameter, const Json& value, LookParameter& place) {
                           place.value = valueFromJson(parameter, value);
                       });
    }
    if (json.contains("keys")) {
        readParameters(description, jsonMember(json, "keys", &Json::is_object, "an object of labels", kLimits), effect,
                       readKeys);
    }
    return effect;
}

Look lookFrom(const EffectCatalogue& catalogue, const Json& json, const std::string& otherwise) {
    if (json.is_object() && json.contains("lumilook") && json["lumilook"].is_number_integer() &&
        json["lumilook"].get<double>() > kLookVersion) {
        throw JsonError("It is written for a newer program.");
    }
    checkJsonKeys(json, {"lumilook", "name", "about", "author", "clip", "strength", "effects"}, "A look");
    if (!json.contains("lumilook") || json["lumilook"] != kLookVersion) {
        throw JsonError("A look has \"lumilook\", the version of its form, which is 1.");
    }
    Look look{textFrom(json, "name"), textFrom(json, "about"), textFrom(json, "author"), strengthFrom(json)};
    if (look.name.empty()) {
        look.name = otherwise;
    }
    look.clip = textFrom(json, "clip");
    checkLookTexts(look);
    const Json& effects = jsonMember(json, "effects", &Json::is_array, "a list of effects", kLimits);
    if (effects.empty() || effects.size() > kMaxEffects) {
        throw JsonError("A look has 1 to " + std::to_string(kMaxEffects) + " effects.");
    }
    for (const Json& each : effects) {
        look.effects.push_back(effectFrom(catalogue, each));
    }
    return look;
}

Json keysJson(const ParameterDescription& parameter, const std::vector<LookParameter::Key>& keys) {
    Json list = Json::array();
    for (const LookParameter::Key& key : keys) {
        list.push_back({{"at", timeJson(key.time)}, {"value", valueToJson(parameter, key.value)}});
    }
    return list;
}

Json effectJson(const EffectDescription& description, const LookEffect& effect) {
    Json json{{"effect", description.name}};
    if (effect.off) {
        json["off"] = true;
    }
    if (!effect.preset.empty()) {
        json["preset"] = description.preset(effect.preset).uniqueName;
    }
    if (effect.strength < 100.0) {
        json["strength"] = effect.strength;
    }
    Json values = Json::object();
    Json keys = Json::object();
    for (const LookParameter& each : effect.parameters) {
        const ParameterDescription* known = description.parameterAt(each.index);
        // Asking for a number that it does not have says so.
        const ParameterDescription& parameter =
            known != nullptr ? *known : description.parameter('#' + std::to_string(each.index));
        const std::string name = description.shortestName(parameter);
        if (each.keys.empty()) {
            values[name] = valueToJson(parameter, each.value);
        } else {
            keys[name] = keysJson(parameter, each.keys);
        }
    }
    if (!values.empty()) {
        json["values"] = std::move(values);
    }
    if (!keys.empty()) {
        json["keys"] = std::move(keys);
    }
    return json;
}

}  // namespace

bool parseLookTime(std::string_view text, LookTime& time) {
    text = trimmed(text);
    time.isPart = text.ends_with('%');
    if (!time.isPart) {
        return parseTime(text, time.at);
    }
    return parseNumber(trimmed(text.substr(0, text.size() - 1)), time.at) && time.at >= 0.0 && time.at <= 100.0;
}

void checkLookTexts(const Look& look) {
    for (const std::string* line : {&look.name, &look.author}) {
        if (line->size() > kMaxLineBytes || std::any_of(line->begin(), line->end(), isControl)) {
            throw LookError("A look's name and author are one line each, of at most 200 bytes.");
        }
    }
    if (look.about.size() > kMaxAboutBytes) {
        throw LookError("What is said about a look has at most 1000 bytes.");
    }
    if (look.clip.size() > kMaxClipBytes) {
        throw LookError("The name of a look's clip has at most 4096 bytes.");
    }
}

std::string lookToJson(const EffectCatalogue& catalogue, const Look& look) {
    Json json{{"lumilook", kLookVersion}, {"name", look.name}};
    if (!look.about.empty()) {
        json["about"] = look.about;
    }
    if (!look.author.empty()) {
        json["author"] = look.author;
    }
    if (!look.clip.empty()) {
        json["clip"] = look.clip;
    }
    if (look.strength < 100.0) {
        json["strength"] = look.strength;
    }
    json["effects"] = Json::array();
    for (const LookEffect& each : look.effects) {
        json["effects"].push_back(effectJson(catalogue.effect(each.effect), each));
    }
    try {
        return json.dump(2) + '\n';
    } catch (const Json::type_error&) {
        throw LookError("The texts of a look are in UTF-8.");
    }
}

Look lookFromJson(const EffectCatalogue& catalogue, const std::string& text, const std::string& otherwise) {
    try {
        return lookFrom(catalogue, parseJson(text, kLimits), otherwise);
    } catch (const ParameterError& error) {
        throw LookError(error.what());
    } catch (const JsonError& error) {
        throw LookError(error.what());
    }
}

}  // namespace lumiset::hostkit

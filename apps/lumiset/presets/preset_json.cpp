#include "apps/lumiset/presets/preset_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "host/preset_saver.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"
#include "platform/text.h"

namespace lumiset::app {
namespace {

using hostkit::EffectDescription;
using hostkit::ParameterDescription;
using Json = nlohmann::ordered_json;

/// The preset, its values, one value in its stored form, the two numbers of a point.
constexpr int kMaxDepth = 4;

// What takes longer than it should, or fills the screen, when it is refused by name.
constexpr std::size_t kMaxKeys = 1000;
constexpr std::size_t kMaxTextBytes = 1000;

constexpr const char* kStored = "stored";

// A value stands in JSON as a panel shows it. Some values of a preset file no panel shows: a colour with something in
// its fourth byte, a number too near to 0 for the range. These stand as {"stored": what the file holds}.

bool sameBits(ParamType type, const ParamValue& a, const ParamValue& b) {
    return a.words[0] == b.words[0] && (type != kParamPoint || a.words[1] == b.words[1]);
}

bool isInRange(const ParameterDescription& parameter, const ParamValue& value) {
    const auto isFraction = [](float number) { return number >= 0.0F && number <= 1.0F; };
    switch (parameter.type) {
        case kParamPoint:
            return isFraction(value.point.x) && isFraction(value.point.y);
        case kParamChoice:
            return value.choice < parameter.items.size();
        case kParamColor:
            return true;
        case kParamBoolean:
            return value.words[0] <= 1;
        default:
            return isFraction(value.slider);
    }
}

std::string formOf(const ParameterDescription& parameter) {
    switch (parameter.type) {
        case kParamPoint:
            return "[x, y] in percent, 0 to 100 each";
        case kParamBoolean:
            return "true or false";
        case kParamSlider:
            return "a number, " + hostkit::describeRange(parameter);
        default:
            return hostkit::describeRange(parameter) + ", in quotation marks";
    }
}

[[noreturn]] void refuse(const ParameterDescription& parameter, const Json& json) {
    const std::string found = json.dump();
    throw PresetJsonError(fmt::format("{} takes {}, not {}.", parameter.path(), formOf(parameter),
                                      found.size() <= 60 ? found : json.type_name()));
}

std::string numberText(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

bool areTwoNumbers(const Json& json) {
    return json.is_array() && json.size() == 2 && json[0].is_number() && json[1].is_number();
}

ParamValue storedFromJson(const ParameterDescription& parameter, const Json& json) {
    ParamValue value{};
    const bool isFloat = parameter.type == kParamSlider;
    const bool isWord = !isFloat && parameter.type != kParamPoint;
    if (isFloat && json.is_number()) {
        value.slider = json.get<float>();
    } else if (isWord && json.is_number_unsigned() && json.get<std::uint64_t>() <= UINT32_MAX) {
        value.words[0] = json.get<std::uint32_t>();
    } else if (!isFloat && !isWord && areTwoNumbers(json)) {
        value.point = {json[0].get<float>(), json[1].get<float>()};
    } else {
        refuse(parameter, json);
    }
    if (!isInRange(parameter, value)) {
        refuse(parameter, json);
    }
    return value;
}

/// Throws `ParameterError` for a value beyond the parameter's range.
ParamValue valueFromJson(const ParameterDescription& parameter, const Json& json) {
    if (json.is_object() && json.size() == 1 && json.contains(kStored)) {
        return storedFromJson(parameter, json[kStored]);
    }
    switch (parameter.type) {
        case kParamSlider:
            if (json.is_number()) {
                return hostkit::parseValue(parameter, numberText(json.get<double>()));
            }
            break;
        case kParamPoint:
            if (areTwoNumbers(json)) {
                return hostkit::parseValue(parameter,
                                           numberText(json[0].get<double>()) + ',' + numberText(json[1].get<double>()));
            }
            break;
        case kParamBoolean:
            if (json.is_boolean()) {
                return hostkit::parseValue(parameter, json.get<bool>() ? "on" : "off");
            }
            break;
        default:
            if (json.is_string()) {
                return hostkit::parseValue(parameter, json.get<std::string>());
            }
    }
    refuse(parameter, json);
}

/// `number` with as few digits as `isEnough` wants.
template <class IsEnough>
double shortened(double number, const IsEnough& isEnough) {
    for (int digits = 1; digits < 17; ++digits) {
        std::array<char, 32> buffer{};
        const char* end =
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::general, digits).ptr;
        double candidate = 0.0;
        std::from_chars(buffer.data(), end, candidate);
        if (isEnough(candidate)) {
            return candidate;
        }
    }
    return number;
}

Json storedNumber(float number) {
    return shortened(static_cast<double>(number),
                     [&](double candidate) { return static_cast<float>(candidate) == number; });
}

Json storedJson(const ParameterDescription& parameter, const ParamValue& value) {
    Json stored;
    switch (parameter.type) {
        case kParamSlider:
            stored = storedNumber(value.slider);
            break;
        case kParamPoint:
            stored = {storedNumber(value.point.x), storedNumber(value.point.y)};
            break;
        default:
            stored = value.words[0];
    }
    return {{kStored, stored}};
}

/// What a panel with this range shows for a number from 0 to 1.
double shownNumber(float number, float minimum, float maximum) {
    const auto low = static_cast<double>(minimum);
    const double width = static_cast<double>(maximum) - low;
    return shortened(low + static_cast<double>(number) * width,
                     [&](double candidate) { return static_cast<float>((candidate - low) / width) == number; });
}

Json shownJson(const ParameterDescription& parameter, const ParamValue& value) {
    switch (parameter.type) {
        case kParamSlider:
            return shownNumber(value.slider, parameter.minimum, parameter.maximum);
        case kParamPoint:
            return {shownNumber(value.point.x, 0.0F, 100.0F), shownNumber(value.point.y, 0.0F, 100.0F)};
        case kParamBoolean:
            return value.boolean != 0;
        default:
            return hostkit::formatValue(parameter, value);
    }
}

Json valueToJson(const ParameterDescription& parameter, const ParamValue& value) {
    if (!isInRange(parameter, value)) {
        throw PresetJsonError(fmt::format("The value of {} lies beyond what it takes, {}.", parameter.path(),
                                          hostkit::describeRange(parameter)));
    }
    Json shown = shownJson(parameter, value);
    return sameBits(parameter.type, valueFromJson(parameter, shown), value) ? shown : storedJson(parameter, value);
}

/// Sees the parts of a text while it is read, and throws for what no preset has.
class PartChecker {
public:
    bool operator()(int depth, Json::parse_event_t event, const Json& part) {
        switch (event) {
            case Json::parse_event_t::object_start:
                m_keys.emplace_back();
                [[fallthrough]];
            case Json::parse_event_t::array_start:
                if (depth >= kMaxDepth) {
                    throw PresetJsonError("It is nested deeper than a preset.");
                }
                break;
            case Json::parse_event_t::object_end:
                m_keys.pop_back();
                break;
            case Json::parse_event_t::key:
                checkText(part);
                if (!m_keys.back().insert(part.get<std::string>()).second) {
                    throw PresetJsonError(fmt::format("\"{}\" stands there twice.", part.get<std::string>()));
                }
                if (m_keys.back().size() > kMaxKeys) {
                    throw PresetJsonError("It has more values than any effect.");
                }
                break;
            default:
                checkText(part);
        }
        return true;
    }

private:
    static void checkText(const Json& part) {
        if (part.is_string() && part.get_ref<const std::string&>().size() > kMaxTextBytes) {
            throw PresetJsonError("A text in it is too long.");
        }
    }

    std::vector<std::set<std::string>> m_keys;  // of each object around this place
};

/// Throws `PresetJsonError` for what is no JSON, is nested deeper than any preset, or has a key twice in one object.
Json parsed(const std::string& text) {
    try {
        return Json::parse(text, PartChecker());
    } catch (const Json::parse_error& error) {
        const std::size_t end = std::min(error.byte, text.size());
        throw PresetJsonError(fmt::format("It is not JSON; see line {}.",
                                          1 + std::count(text.data(), text.data() + end - (end > 0 ? 1 : 0), '\n')));
    } catch (const Json::exception&) {
        throw PresetJsonError("A number in it is too large.");
    }
}

/// What an object has under a key, which it must have, as `isRight` wants it.
const Json& member(const Json& json, const char* key, bool (Json::*isRight)() const noexcept, const char* kind) {
    if (!json.contains(key) || !(json[key].*isRight)()) {
        throw PresetJsonError(fmt::format("A preset has \"{}\", {}.", key, kind));
    }
    return json[key];
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
    if (!json.is_object()) {
        throw PresetJsonError("A preset is a JSON object.");
    }
    const std::vector<std::string> known = {"effect", "name", "values"};
    for (const auto& [key, value] : json.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            throw PresetJsonError(fmt::format("A preset has {}, not \"{}\".", hostkit::quotedList(known), key));
        }
    }
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
        preset.parameters.set(parameter, valueFromJson(parameter, value));
    }
    return preset;
}

}  // namespace

std::string presetToJson(const NamedPreset& preset) {
    const EffectDescription& effect = preset.parameters.effect();
    Json values = Json::object();
    for (const ParameterDescription& parameter : effect.parameters) {
        values[effect.shortestName(parameter)] = valueToJson(parameter, preset.parameters.valueAt(parameter, 0.0));
    }
    return Json{{"effect", effect.name}, {"name", preset.name}, {"values", std::move(values)}}.dump(2) + '\n';
}

NamedPreset presetFromJson(const hostkit::EffectCatalogue& catalogue, const std::string& text,
                           const std::string& otherwise) {
    try {
        return presetOf(catalogue, parsed(text), otherwise);
    } catch (const hostkit::ParameterError& error) {
        throw PresetJsonError(error.what());
    }
}

}  // namespace lumiset::app

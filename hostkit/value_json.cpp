#include "hostkit/value_json.h"

#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

constexpr const char* kStored = "stored";

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
            return "a number, " + describeRange(parameter);
        default:
            return describeRange(parameter) + ", in quotation marks";
    }
}

[[noreturn]] void refuse(const ParameterDescription& parameter, const Json& json) {
    const std::string found = json.dump();
    throw ParameterError(parameter.path() + " takes " + formOf(parameter) + ", not " +
                         (found.size() <= 60 ? found : json.type_name()) + '.');
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

Json storedNumber(float number) {
    return shortenedNumber(static_cast<double>(number),
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
    return shortenedNumber(low + static_cast<double>(number) * width,
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
            return formatValue(parameter, value);
    }
}

}  // namespace

ParamValue valueFromJson(const ParameterDescription& parameter, const Json& json) {
    if (json.is_object() && json.size() == 1 && json.contains(kStored)) {
        return storedFromJson(parameter, json[kStored]);
    }
    switch (parameter.type) {
        case kParamSlider:
            if (json.is_number()) {
                return parseValue(parameter, numberText(json.get<double>()));
            }
            break;
        case kParamPoint:
            if (areTwoNumbers(json)) {
                return parseValue(parameter,
                                  numberText(json[0].get<double>()) + ',' + numberText(json[1].get<double>()));
            }
            break;
        case kParamBoolean:
            if (json.is_boolean()) {
                return parseValue(parameter, json.get<bool>() ? "on" : "off");
            }
            break;
        default:
            if (json.is_string()) {
                return parseValue(parameter, json.get<std::string>());
            }
    }
    refuse(parameter, json);
}

Json valueToJson(const ParameterDescription& parameter, const ParamValue& value) {
    if (!isInRange(parameter, value)) {
        throw ParameterError("The value of " + parameter.path() + " lies beyond what it takes, " +
                             describeRange(parameter) + '.');
    }
    Json shown = shownJson(parameter, value);
    return sameBits(parameter.type, valueFromJson(parameter, shown), value) ? shown : storedJson(parameter, value);
}

}  // namespace lumiset::hostkit

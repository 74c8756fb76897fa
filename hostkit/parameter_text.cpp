#include "hostkit/parameter_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "hostkit/names.h"

namespace lumiset::hostkit {
namespace {

[[noreturn]] void refuse(const ParameterDescription& parameter, std::string_view text) {
    throw ParameterError(parameter.label + " takes " + describeRange(parameter) + ", not \"" + std::string(text) +
                         "\".");
}

bool parsePercentage(std::string_view text, double& number) {
    text = trimmed(text);
    if (!text.empty() && text.back() == '%') {
        text.remove_suffix(1);
    }
    return parseNumber(trimmed(text), number);
}

ParamValue parseSlider(const ParameterDescription& parameter, std::string_view text) {
    double number = 0.0;
    // Compared in the range's own precision: its ends can be said as they are shown.
    if (!parsePercentage(text, number) || static_cast<float>(number) < parameter.minimum ||
        static_cast<float>(number) > parameter.maximum) {
        refuse(parameter, text);
    }
    const auto minimum = static_cast<double>(parameter.minimum);
    const auto maximum = static_cast<double>(parameter.maximum);
    ParamValue value{};
    if (maximum > minimum) {
        value.slider = static_cast<float>(std::clamp((number - minimum) / (maximum - minimum), 0.0, 1.0));
    }
    return value;
}

ParamValue parsePoint(const ParameterDescription& parameter, std::string_view text) {
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos) {
        refuse(parameter, text);
    }
    ParamValue value{};
    double x = 0.0;
    double y = 0.0;
    const bool read = parsePercentage(text.substr(0, comma), x) && parsePercentage(text.substr(comma + 1), y);
    if (!read || x < 0.0 || x > 100.0 || y < 0.0 || y > 100.0) {
        refuse(parameter, text);
    }
    value.point = {static_cast<float>(x / 100.0), static_cast<float>(y / 100.0)};
    return value;
}

ParamValue parseColor(const ParameterDescription& parameter, std::string_view text) {
    const std::string_view digits = text.substr(text.substr(0, 1) == "#" ? 1 : 0);
    std::uint32_t rgb = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, rgb, 16);
    if (digits.size() != 6 || error != std::errc() || stop != end) {
        refuse(parameter, text);
    }
    ParamValue value{};
    value.color = (rgb & 0xFFU) << 16U | (rgb & 0xFF00U) | rgb >> 16U;
    return value;
}

ParamValue parseBoolean(const ParameterDescription& parameter, std::string_view text) {
    struct Word {
        std::string_view text;
        std::uint8_t value;
    };
    constexpr auto kWords = std::to_array<Word>(
        {{"on", 1}, {"off", 0}, {"true", 1}, {"false", 0}, {"yes", 1}, {"no", 0}, {"1", 1}, {"0", 0}});
    for (const Word& word : kWords) {
        if (equalIgnoringCase(word.text, text)) {
            ParamValue value{};
            value.boolean = word.value;
            return value;
        }
    }
    refuse(parameter, text);
}

ParamValue parseChoice(const ParameterDescription& parameter, std::string_view text) {
    ParamValue value{};
    for (std::size_t i = 0; i < parameter.items.size(); ++i) {
        if (equalIgnoringCase(parameter.items[i], text)) {
            value.choice = static_cast<std::uint32_t>(i);
            return value;
        }
    }
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value.choice);
    if (error != std::errc() || stop != end || value.choice >= parameter.items.size()) {
        refuse(parameter, text);
    }
    return value;
}

double shownMaximum(const ParameterDescription& parameter) {
    return parameter.wholeNumbers ? std::floor(static_cast<double>(parameter.maximum))
                                  : static_cast<double>(parameter.maximum);
}

}  // namespace

bool parseNumber(std::string_view text, double& number) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && std::isfinite(number);
}

bool parseTime(std::string_view text, double& seconds) {
    constexpr double kLatest = 1e9;  // a number of microseconds all the same
    std::string_view rest = trimmed(text);
    if (rest.size() > 1 && rest.back() == 's') {
        rest.remove_suffix(1);
    }
    double sum = 0.0;
    for (int part = 0; part < 3; ++part) {
        const std::size_t colon = rest.find(':');
        double number = 0.0;
        if (!parseNumber(rest.substr(0, colon), number) || number < 0.0) {
            return false;
        }
        sum = sum * 60.0 + number;
        if (colon == std::string_view::npos) {
            seconds = std::min(sum, kLatest);
            return true;
        }
        rest.remove_prefix(colon + 1);
    }
    return false;
}

std::string formatNumber(double number, int decimals) {
    std::array<char, 400> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed, decimals);
    std::string text(buffer.data(), error == std::errc() ? end : buffer.data());
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') {
            text.pop_back();
        }
    }
    return text == "-0" ? "0" : text;
}

ParamValue parseValue(const ParameterDescription& parameter, std::string_view text) {
    const std::string_view trim = trimmed(text);
    switch (parameter.type) {
        case kParamPoint:
            return parsePoint(parameter, trim);
        case kParamChoice:
            return parseChoice(parameter, trim);
        case kParamColor:
            return parseColor(parameter, trim);
        case kParamBoolean:
            return parseBoolean(parameter, trim);
        default:
            break;
    }
    return parseSlider(parameter, trim);
}

std::string formatValue(const ParameterDescription& parameter, const ParamValue& value) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    switch (parameter.type) {
        case kParamPoint:
            return formatNumber(100.0 * static_cast<double>(value.point.x), 2) + ',' +
                   formatNumber(100.0 * static_cast<double>(value.point.y), 2);
        case kParamChoice:
            return value.choice < parameter.items.size() ? parameter.items[value.choice] : std::to_string(value.choice);
        case kParamColor: {
            std::string text = "#";
            for (const std::uint32_t shift : {4U, 0U, 12U, 8U, 20U, 16U}) {
                text += kDigits[value.color >> shift & 15U];
            }
            return text;
        }
        case kParamBoolean:
            return value.boolean != 0 ? "on" : "off";
        default:
            break;
    }
    const auto minimum = static_cast<double>(parameter.minimum);
    const auto maximum = static_cast<double>(parameter.maximum);
    return formatNumber(minimum + static_cast<double>(value.slider) * (maximum - minimum),
                        parameter.wholeNumbers ? 0 : 2);
}

const char* typeName(ParamType type) {
    switch (type) {
        case kParamPoint:
            return "point";
        case kParamChoice:
            return "choice";
        case kParamSlider:
            return "slider";
        case kParamColor:
            return "color";
        case kParamBoolean:
            return "boolean";
        default:
            return "group";
    }
}

std::string describeRange(const ParameterDescription& parameter) {
    switch (parameter.type) {
        case kParamPoint:
            return "x,y in percent, 0 to 100 each";
        case kParamChoice:
            return quotedList(parameter.items);
        case kParamColor:
            return "a colour as #RRGGBB";
        case kParamBoolean:
            return "on or off";
        default:
            break;
    }
    return formatNumber(static_cast<double>(parameter.minimum), 2) + " to " + formatNumber(shownMaximum(parameter), 2);
}

}  // namespace lumiset::hostkit

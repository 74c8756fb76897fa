#include "support/preset_file.h"

#include <tinyxml.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <system_error>

#include "support/preset_markup.h"

namespace lumiset {
namespace {

// Every node belongs to the document before the next allocation, so none is lost when memory runs out: the library's
// parser and its copies of nodes would lose theirs.

// The numbers go through the XML library as texts: its own conversions follow the host's locale and round.

template <class Number>
void writeNumber(TiXmlElement& element, const char* attribute, Number number) {
    char text[32] = {};
    std::to_chars(text, text + sizeof text - 1, number);
    element.SetAttribute(attribute, text);
}

template <class Number>
bool readNumber(const TiXmlElement& element, const char* attribute, Number& number) {
    const char* found = element.Attribute(attribute);
    if (found == nullptr) {
        return false;
    }
    const std::string_view text(found);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

/// A number that single precision cannot hold, being too large or too near to 0, is one all the same.
bool readFloat(const TiXmlElement& element, const char* attribute, float& number) {
    double wide = 0.0;
    if (readNumber(element, attribute, number)) {
        return true;
    }
    if (!readNumber(element, attribute, wide)) {
        return false;
    }
    number = static_cast<float>(std::clamp(wide, -2.0, 2.0));
    return true;
}

/// A 32-bit word, signed or unsigned.
bool readWord(const TiXmlElement& element, const char* attribute, std::uint32_t& word) {
    std::int64_t number = 0;
    if (!readNumber(element, attribute, number) || number < INT32_MIN || number > UINT32_MAX) {
        return false;
    }
    word = static_cast<std::uint32_t>(number);
    return true;
}

void writeEntry(TiXmlElement& element, const PresetEntry& entry) {
    writeNumber(element, "type", entry.type);
    switch (entry.type) {
        case kParamPoint:
            writeNumber(element, "x", entry.value.point.x);
            writeNumber(element, "y", entry.value.point.y);
            break;
        case kParamSlider:
            writeNumber(element, "value", entry.value.slider);
            break;
        case kParamChoice:
        case kParamColor:
            writeNumber(element, "value", static_cast<std::int32_t>(entry.value.words[0]));
            break;
        case kParamBoolean:
            writeNumber(element, "value", entry.value.boolean != 0 ? 1 : 0);
            break;
        default:
            break;
    }
}

bool readEntry(const TiXmlElement& element, PresetEntry& entry) {
    entry = {};
    if (!readWord(element, "type", entry.type)) {
        return false;
    }
    switch (entry.type) {
        case kParamPoint:
            return readFloat(element, "x", entry.value.point.x) && readFloat(element, "y", entry.value.point.y) &&
                   limitValues(entry);
        case kParamSlider:
            return readFloat(element, "value", entry.value.slider) && limitValues(entry);
        case kParamChoice:
        case kParamColor:
            return readWord(element, "value", entry.value.words[0]);
        case kParamBoolean: {
            std::uint32_t word = 0;
            const bool read = readWord(element, "value", word);
            entry.value.words[0] = word != 0 ? 1 : 0;
            return read;
        }
        default:
            return true;
    }
}

std::string attributeOr(const TiXmlElement& element, const char* attribute) {
    const char* text = element.Attribute(attribute);
    return text != nullptr ? text : "";
}

}  // namespace

bool limitValues(PresetEntry& entry) {
    const auto limit = [](float& number) {
        const bool finite = std::isfinite(number);
        number = std::clamp(number, 0.0F, 1.0F);
        return finite;
    };
    switch (entry.type) {
        case kParamPoint:
            return limit(entry.value.point.x) && limit(entry.value.point.y);
        case kParamSlider:
            return limit(entry.value.slider);
        default:
            return true;
    }
}

std::string presetText(const Preset& preset) {
    TiXmlDocument document;
    document.LinkEndChild(new TiXmlDeclaration("1.0", "", "no"));
    document.LinkEndChild(new TiXmlComment(" Effect's Preset File "));
    TiXmlElement& root = *document.LinkEndChild(new TiXmlElement("Preset"))->ToElement();
    root.SetAttribute("Name", preset.name);
    root.SetAttribute("LibraryName", preset.effectLibrary);
    root.SetAttribute("EffectName", preset.effectName);
    for (const PresetEntry& entry : preset.entries) {
        writeEntry(*root.LinkEndChild(new TiXmlElement("parameter"))->ToElement(), entry);
    }
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

std::optional<Preset> parsePreset(const std::string& text) {
    TiXmlDocument document;
    if (text.size() > kMaxPresetBytes || !readPresetMarkup(text, document)) {
        return std::nullopt;
    }
    const TiXmlElement* root = document.FirstChildElement("Preset");
    if (root == nullptr) {
        return std::nullopt;
    }
    Preset preset{attributeOr(*root, "Name"), attributeOr(*root, "LibraryName"), attributeOr(*root, "EffectName"), {}};
    for (const TiXmlElement* each = root->FirstChildElement("parameter"); each != nullptr;
         each = each->NextSiblingElement("parameter")) {
        if (!readEntry(*each, preset.entries.emplace_back())) {
            return std::nullopt;
        }
    }
    if (preset.entries.empty()) {
        return std::nullopt;
    }
    return preset;
}

}  // namespace lumiset

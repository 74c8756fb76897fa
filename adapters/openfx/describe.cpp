#include "adapters/openfx/describe.h"

#include <algorithm>
#include <array>

#include "adapters/openfx/abi/names.h"

// Hosts refuse properties that are newer than they are. Where that changes nothing but a panel's looks the answers of
// `Properties::set` are left alone.

namespace lumiset::openfx {
namespace {

using hostkit::ParameterDescription;

constexpr auto kDepths = std::to_array({value::kDepthByte, value::kDepthShort, value::kDepthFloat, value::kDepthHalf});

/// Those of our depths that the host has, without gaps; the usual ones where it does not tell.
void describeDepths(const HostInfo& host, const Properties& properties) {
    int count = 0;
    for (const char* depth : kDepths) {
        const bool known = host.depths.empty()
                               ? std::string_view(depth) != value::kDepthHalf
                               : std::find(host.depths.begin(), host.depths.end(), depth) != host.depths.end();
        if (known && properties.set(prop::kSupportedDepths, depth, count)) {
            ++count;
        }
    }
}

void defineClip(const HostInfo& host, EffectHandle descriptor, const char* name) {
    Props clip = nullptr;
    if (host.effect->clipDefine(descriptor, name, &clip) != kOk) {
        throw HostError("The host refuses the clip " + std::string(name) + ".");
    }
    const Properties properties = host.properties(clip);
    properties.set(prop::kSupportedComponents, value::kRgba, 0);
    properties.set(prop::kSupportedComponents, value::kRgb, 1);
    properties.set(prop::kSupportsTiles, 0);
    properties.set(prop::kTemporalClipAccess, 0);
    properties.set(prop::kFieldExtraction, value::kFieldBoth);
}

/// There are hosts that limit what has not all four to -1..1.
void setRange(const Properties& properties, int dimension, double low, double high) {
    properties.set(prop::kMin, low, dimension);
    properties.set(prop::kMax, high, dimension);
    properties.set(prop::kDisplayMin, low, dimension);
    properties.set(prop::kDisplayMax, high, dimension);
}

void describeSlider(const Properties& properties, const ParameterDescription& slider) {
    const auto low = static_cast<double>(slider.minimum);
    const auto high = static_cast<double>(slider.maximum);
    properties.set(prop::kDoubleType, value::kDoublePlain);
    properties.set(prop::kDefault, panelNumber(slider, slider.defaultValue.slider));
    setRange(properties, 0, low, high);
    // A step that one sees: the hundredth of a slider of 0 to 10 is a tenth.
    properties.set(prop::kIncrement, slider.wholeNumbers || high - low > 20.0 ? 1.0 : 0.1);
    properties.set(prop::kDigits, slider.wholeNumbers ? 0 : 2);
}

/// In hosts that have positions, one with the host's own cross; else two numbers, shares of the picture from its top
/// left corner. A host that refuses the default's coordinates would put it beside the picture.
void describePoint(const HostInfo& host, const Properties& properties, const ParameterDescription& point) {
    const auto x = static_cast<double>(point.defaultValue.point.x);
    const auto y = static_cast<double>(point.defaultValue.point.y);
    if (host.hasPositions() && properties.set(prop::kDefaultCoordinates, value::kCoordinatesNormalised) &&
        properties.set(prop::kDoubleType, value::kDoublePosition)) {
        properties.set(prop::kDefault, x, 0);
        properties.set(prop::kDefault, 1.0 - y, 1);
        return;
    }
    properties.set(prop::kDoubleType, value::kDoublePlain);
    properties.set(prop::kDefault, x, 0);
    properties.set(prop::kDefault, y, 1);
    for (int i = 0; i < 2; ++i) {
        setRange(properties, i, 0.0, 1.0);
        properties.set(prop::kDimensionLabel, i == 0 ? "from left" : "from top", i);
    }
    properties.set(prop::kIncrement, 0.01);
    properties.set(prop::kDigits, 4);
}

void describeColor(const Properties& properties, const ParameterDescription& color) {
    for (int i = 0; i < 3; ++i) {
        properties.set(prop::kDefault, (color.defaultValue.color >> (8 * i) & 0xFFU) / 255.0, i);
        setRange(properties, i, 0.0, 1.0);
    }
}

void describeChoice(const Properties& properties, const std::vector<std::string>& items, int usual) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        properties.set(prop::kChoiceOption, items[i].c_str(), static_cast<int>(i));
    }
    properties.set(prop::kDefault, usual);
}

const char* kindOf(const Effect& effect, const Parameter& parameter) {
    switch (parameter.role) {
        case Role::kGroup:
            return value::kParamGroup;
        case Role::kPreset:
        case Role::kFields:
            return value::kParamChoice;
        case Role::kPresetFile:
            return value::kParamString;
        case Role::kLoadFile:
        case Role::kSaveFile:
            return value::kParamPushButton;
        case Role::kEffect:
            break;
    }
    switch (effect.description.parameters[parameter.source].type) {
        case kParamPoint:
            return value::kParamDouble2D;
        case kParamChoice:
            return value::kParamChoice;
        case kParamColor:
            return value::kParamRgb;
        case kParamBoolean:
            return value::kParamBoolean;
        default:
            return value::kParamDouble;
    }
}

void describeEffectParameter(const HostInfo& host, const Properties& properties, const ParameterDescription& source) {
    switch (source.type) {
        case kParamPoint:
            describePoint(host, properties, source);
            break;
        case kParamChoice:
            describeChoice(properties, source.items, static_cast<int>(source.defaultValue.choice));
            break;
        case kParamColor:
            describeColor(properties, source);
            break;
        case kParamBoolean:
            properties.set(prop::kDefault, source.defaultValue.boolean != 0 ? 1 : 0);
            break;
        default:
            describeSlider(properties, source);
            break;
    }
}

void describeKind(const HostInfo& host, const Effect& effect, const Properties& properties,
                  const Parameter& parameter) {
    switch (parameter.role) {
        case Role::kGroup:
            properties.set(prop::kGroupOpen, parameter.parent.empty() && parameter.label == "Preset File" ? 0 : 1);
            break;
        case Role::kPreset:
            describeChoice(properties, parameter.items, 0);
            properties.set(prop::kAnimates, 0);
            // It falls back at once; what it set is undone in one step.
            properties.set(prop::kCanUndo, 0);
            break;
        case Role::kFields:
            describeChoice(properties, parameter.items, 0);
            properties.set(prop::kAnimates, 0);
            break;
        case Role::kPresetFile:
            properties.set(prop::kStringMode, value::kStringFilePath);
            properties.set(prop::kFilePathExists, 0);  // it may be about to be saved
            properties.set(prop::kDefault, "");
            properties.set(prop::kAnimates, 0);
            properties.set(prop::kEvaluateOnChange, host.tellsNoChanges() ? 1 : 0);
            break;
        case Role::kEffect:
            describeEffectParameter(host, properties, effect.description.parameters[parameter.source]);
            break;
        case Role::kLoadFile:
        case Role::kSaveFile:
            break;
    }
}

void describePage(const HostInfo& host, const Effect& effect, ParamSetHandle set) {
    Props page = nullptr;
    if (host.parameter->define(set, value::kParamPage, "controls", &page) != kOk) {
        return;  // only hosts with panels in pages need one
    }
    const Properties properties = host.properties(page);
    properties.set(prop::kLabel, "Controls");
    int count = 0;
    for (const Parameter& parameter : effect.parameters) {
        if (parameter.role != Role::kGroup && properties.set(prop::kPageChild, parameter.name.c_str(), count)) {
            ++count;
        }
    }
    Props all = nullptr;
    if (host.parameter->setGetPropertySet(set, &all) == kOk) {
        host.properties(all).set(prop::kPageOrder, "controls", 0);
    }
}

}  // namespace

void describe(const HostInfo& host, const Effect& effect, EffectHandle descriptor, MainEntry* overlay) {
    Props handle = nullptr;
    if (host.effect->getPropertySet(descriptor, &handle) != kOk) {
        throw HostError("The host gives an effect no properties.");
    }
    const Properties properties = host.properties(handle);
    properties.set(prop::kLabel, effect.description.name.c_str());
    properties.set(prop::kGrouping, "Lumiset");
    properties.set(prop::kVersionLabel, LUMISET_VERSION);
    properties.set(prop::kDescription, (effect.description.name + ", a video effect of Lumiset").c_str());
    properties.set(prop::kSupportedContexts, value::kFilter, 0);
    properties.set(prop::kSupportedContexts, value::kGeneral, 1);
    describeDepths(host, properties);
    properties.set(prop::kSingleInstance, 0);
    // Any number of frames at once, each of them whole: effects look at the picture around a pixel.
    properties.set(prop::kThreadSafety, value::kFullySafe);
    properties.set(prop::kHostFrameThreading, 0);
    properties.set(prop::kSupportsTiles, 0);
    properties.set(prop::kSupportsMultiResolution, 1);
    properties.set(prop::kTemporalClipAccess, 0);
    properties.set(prop::kMultipleClipDepths, 0);
    properties.set(prop::kMultipleClipPars, 0);
    // Both fields of a frame come in one call where nothing is animated; we part them.
    properties.set(prop::kFieldRenderTwiceAlways, 0);
    if (overlay != nullptr) {
        properties.set(host.draw != nullptr ? prop::kOverlayV2 : prop::kOverlayV1, reinterpret_cast<void*>(overlay));
    }
}

void describeInContext(const HostInfo& host, const Effect& effect, EffectHandle descriptor) {
    defineClip(host, descriptor, value::kClipSource);
    defineClip(host, descriptor, value::kClipOutput);
    ParamSetHandle set = nullptr;
    if (host.effect->getParamSet(descriptor, &set) != kOk) {
        throw HostError("The host gives an effect no parameters.");
    }
    for (const Parameter& parameter : effect.parameters) {
        Props handle = nullptr;
        if (host.parameter->define(set, kindOf(effect, parameter), parameter.name.c_str(), &handle) != kOk) {
            // It has a value all the same, its default.
            continue;
        }
        const Properties properties = host.properties(handle);
        properties.set(prop::kLabel, parameter.label.c_str());
        if (!parameter.hint.empty()) {
            properties.set(prop::kHint, parameter.hint.c_str());
        }
        if (!parameter.parent.empty()) {
            properties.set(prop::kParent, parameter.parent.c_str());
        }
        describeKind(host, effect, properties, parameter);
    }
    describePage(host, effect, set);
}

}  // namespace lumiset::openfx

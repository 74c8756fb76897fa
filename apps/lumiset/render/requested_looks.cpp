// From what a command line says to looks, and from these to what renders.

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/usage_error.h"
#include "hostkit/look_files.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"
#include "hostkit/preset_file.h"
#include "media/media.h"
#include "render/file_render.h"

namespace lumiset::app {
namespace {

using hostkit::EffectCatalogue;
using hostkit::EffectDescription;
using hostkit::Look;
using hostkit::LookEffect;
using hostkit::LookParameter;
using hostkit::ParameterDescription;

/// An effect of a look and one of its parameters.
struct Place {
    LookEffect& effect;
    const ParameterDescription& parameter;
};

/// The effects of a look that `name` means: "Old TV", or where there are several, "Old TV#2" for the second.
std::vector<LookEffect*> effectsCalled(Look& look, std::string_view name) {
    std::vector<LookEffect*> found;
    int number = 0;
    for (LookEffect& each : look.effects) {
        const bool isNext = hostkit::equalIgnoringCase(name.substr(0, name.rfind('#')), each.effect);
        number += isNext ? 1 : 0;
        if (hostkit::equalIgnoringCase(name, each.effect) ||
            (isNext && hostkit::equalIgnoringCase(name, each.effect + '#' + std::to_string(number)))) {
            found.push_back(&each);
        }
    }
    return found;
}

/// What "Old TV/Noise" means in a look. Labels may have slashes, so may effects: the first part that is one counts.
Place placeIn(const EffectCatalogue& catalogue, Look& look, const std::string& label) {
    for (std::size_t slash = label.find('/'); slash != std::string::npos; slash = label.find('/', slash + 1)) {
        const std::vector<LookEffect*> found = effectsCalled(look, hostkit::trimmed(label.substr(0, slash)));
        if (found.size() > 1) {
            const std::string& name = found.front()->effect;
            throw UsageError(fmt::format("The look \"{0}\" has {1} times {2}: say \"{2}#1/...\" to \"{2}#{1}/...\".",
                                         look.name, found.size(), name));
        }
        if (!found.empty()) {
            return {*found.front(), catalogue.effect(found.front()->effect).parameter(label.substr(slash + 1))};
        }
    }
    std::vector<std::string> names;
    for (const LookEffect& each : look.effects) {
        names.push_back(each.effect);
    }
    throw UsageError(fmt::format("\"{}\" names no effect of the look \"{}\", as in \"{}/Label=value\". It has {}.",
                                 label, look.name, names.front(), hostkit::quotedList(names)));
}

/// Sets in a look what a command line says behind it. `placeOf(label)` tells where.
template <class PlaceOf>
void takeValues(const EffectCatalogue& catalogue, const EffectRequest& request, const PlaceOf& placeOf) {
    std::vector<std::pair<const LookEffect*, std::uint32_t>> keyed;
    for (const EffectRequest::Key& key : request.keys) {
        const auto [effect, parameter] = placeOf(key.label);
        const ParamValue value = hostkit::parseValue(parameter, key.value);
        LookParameter& wanted = effect.of(parameter);
        if (std::pair<const LookEffect*, std::uint32_t> place(&effect, parameter.index);
            std::find(keyed.begin(), keyed.end(), place) == keyed.end()) {
            wanted.keys.clear();  // those that a look has
            keyed.push_back(place);
        }
        wanted.keys.push_back({key.time, value});
    }
    for (const EffectRequest::Setting& setting : request.settings) {
        const auto [effect, parameter] = placeOf(setting.label);
        if (std::find(keyed.begin(), keyed.end(), std::pair(&std::as_const(effect), parameter.index)) != keyed.end()) {
            throw UsageError("\"" + catalogue.effect(effect.effect).shortestName(parameter) + "\" of " + effect.effect +
                             " is given both by --set and by --key.");
        }
        LookParameter& wanted = effect.of(parameter);
        wanted.value = hostkit::parseValue(parameter, setting.value);
        wanted.keys.clear();
    }
}

double lengthOf(const std::string& input) {
    const double seconds = input != "-" ? render::clipSeconds(media::openSource(input)->format()) : 0.0;
    if (!(seconds > 0.0)) {
        throw UsageError(fmt::format("Keys in parts of the clip need its length, which \"{}\" does not tell.", input));
    }
    return seconds;
}

std::shared_ptr<const hostkit::Mask> readMask(const std::string& file) {
    media::SourceOptions options;
    options.depth = media::Depth::kFloat;
    media::Picture picture;
    if (file == "-" || !media::openSource(file, options)->read(picture)) {
        throw media::MediaError(fmt::format("'{}' has no picture for a mask.", file));
    }
    auto mask = std::make_shared<hostkit::Mask>(hostkit::Mask{picture.width, picture.height, {}});
    for (int y = 0; y < picture.height; ++y) {
        const auto* row = reinterpret_cast<const float*>(picture.row(y));
        for (int x = 0; x < picture.width; ++x, row += 4) {
            // Luma, which is the grey itself where the three are equal; what is transparent is black.
            const double luma = 0.114 * static_cast<double>(row[0]) + 0.587 * static_cast<double>(row[1]) +
                                0.299 * static_cast<double>(row[2]);
            mask->values.push_back(static_cast<float>(luma) * row[3]);
        }
    }
    return mask;
}

}  // namespace

Look lookOf(IEffectLibrary& library, const EffectCatalogue& catalogue, const EffectRequest& request) {
    Look look;
    if (!request.look.empty()) {
        look = hostkit::findLook(catalogue, request.look).look;
        look.strength = request.strength.value_or(look.strength);
        takeValues(catalogue, request, [&](const std::string& label) { return placeIn(catalogue, look, label); });
        return look;
    }
    const EffectDescription& effect = catalogue.effect(request.name);
    look.name = effect.name;
    LookEffect& wanted = look.effects.emplace_back(LookEffect{effect.name});
    wanted.strength = request.strength.value_or(100.0);
    if (!request.preset.empty()) {
        wanted.preset = effect.preset(request.preset).uniqueName;
    }
    if (!request.presetFile.empty()) {
        hostkit::loadPresetFile(library, effect, request.presetFile, wanted);
    }
    takeValues(catalogue, request, [&](const std::string& label) { return Place{wanted, effect.parameter(label)}; });
    return look;
}

std::vector<std::string> filesRead(const EffectCatalogue& catalogue, const std::vector<EffectRequest>& requests) {
    std::vector<std::string> files;
    for (const EffectRequest& request : requests) {
        files.insert(files.end(), {request.presetFile, request.mask});
        if (!request.look.empty()) {
            files.push_back(hostkit::findLook(catalogue, request.look).file.string());
        }
    }
    return files;
}

hostkit::ParameterStore readParameters(IEffectLibrary& library, const EffectCatalogue& catalogue,
                                       const EffectRequest& request) {
    const Look look = lookOf(library, catalogue, request);
    return hostkit::valuesOf(catalogue.effect(look.effects.front().effect), look.effects.front(), 0.0);
}

std::vector<hostkit::EffectStage> buildChain(IEffectLibrary& library, const EffectCatalogue& catalogue,
                                             const std::vector<EffectRequest>& requests, const std::string& input) {
    std::vector<hostkit::MaskedLook> looks;
    double clipSeconds = 0.0;
    for (const EffectRequest& request : requests) {
        looks.push_back({lookOf(library, catalogue, request), request.mask.empty() ? nullptr : readMask(request.mask)});
        if (!(clipSeconds > 0.0) && hostkit::hasKeysInParts(looks.back().look)) {
            clipSeconds = lengthOf(input);
        }
    }
    return hostkit::buildChain(library, catalogue, looks, clipSeconds);
}

}  // namespace lumiset::app

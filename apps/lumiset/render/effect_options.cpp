#include "apps/lumiset/render/effect_options.h"

#include <map>
#include <new>
#include <utility>

#include "apps/lumiset/usage_error.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"
#include "hostkit/preset_file.h"

namespace lumiset::app {
namespace {

/// The two sides of the first "=". `option` and `form` are for the message.
std::pair<std::string, std::string> splitAssignment(const std::string& text, const std::string& option,
                                                    const std::string& form) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || hostkit::trimmed(text.substr(0, equals)).empty()) {
        throw UsageError(option + " takes \"" + form + "\", not \"" + text + "\".");
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

EffectRequest::Setting parseSetting(const std::string& text) {
    auto [label, value] = splitAssignment(text, "--set", "Label=value");
    return {std::move(label), std::move(value)};
}

EffectRequest::Key parseKey(const std::string& text) {
    constexpr const char* kForm = "Label@TIME=value";
    auto [name, value] = splitAssignment(text, "--key", kForm);
    const std::size_t at = name.rfind('@');
    EffectRequest::Key key{{}, 0.0, std::move(value)};
    if (at == std::string::npos || !hostkit::parseTime(std::string_view(name).substr(at + 1), key.timeSeconds)) {
        throw UsageError(std::string("--key takes \"") + kForm + "\", not \"" + text + "\".");
    }
    key.label = name.substr(0, at);
    return key;
}

}  // namespace

EffectOptions::EffectOptions(CLI::App& command, Kind kind) : m_command(command), m_kind(kind) {
    if (kind == kNamedEffect) {
        command.add_option("EFFECT", m_name, "name of the effect")->required();
    } else {
        m_effect = addRepeated("--effect,-e", m_effects, "NAME",
                               kind == kAnimatedChain  ? "effect to apply; several are applied in turn"
                               : kind == kAlternatives ? "effect to show in a picture of its own; any number"
                                                       : "the effect");
    }
    const bool several = kind == kAnimatedChain || kind == kAlternatives;
    const std::string whose = several ? "the --effect before it" : "the effect";
    m_preset = addRepeated("--preset,-p", m_presets, "NAME", "preset of " + whose);
    m_presetFile = addRepeated("--preset-file", m_presetFiles, "FILE", "preset file for " + whose);
    m_set = addRepeated("--set,-s", m_sets, "\"Label=value\"", "value for " + whose);
    if (kind == kAnimatedChain) {
        m_key = addRepeated("--key,-k", m_keys, "\"Label@TIME=value\"", "keyframe for " + whose);
    }
}

CLI::Option* EffectOptions::addRepeated(const char* names, std::vector<std::string>& values, const char* form,
                                        const std::string& tip) {
    return m_command.add_option(names, values, tip)->allow_extra_args(false)->option_text(form);
}

std::vector<EffectRequest> EffectOptions::requests() const {
    std::vector<EffectRequest> effects;
    if (m_kind == kNamedEffect) {
        effects.push_back({m_name, {}, {}, {}, {}});
    }
    std::map<const CLI::Option*, std::size_t> used;
    for (const CLI::Option* option : m_command.parse_order()) {
        if (option == nullptr) {
            continue;  // as those members are that this command has no options for
        }
        if (option == m_effect) {
            effects.push_back({m_effects[used[option]++], {}, {}, {}, {}});
        } else if (option == m_preset || option == m_presetFile || option == m_set || option == m_key) {
            if (effects.empty()) {
                throw UsageError(option->get_name() + " must stand behind the --effect that it belongs to.");
            }
            addTo(effects.back(), option, used[option]++);
        }
    }
    if (effects.empty() && m_kind != kAlternatives) {
        throw UsageError(m_command.get_name() + " needs at least one --effect; \"lumiset list\" shows them.");
    }
    if (m_kind == kOneEffect && effects.size() > 1) {
        throw UsageError(m_command.get_name() + " takes one --effect.");
    }
    return effects;
}

EffectRequest EffectOptions::request() const {
    return requests().front();
}

void EffectOptions::addTo(EffectRequest& effect, const CLI::Option* option, std::size_t i) const {
    if (option == m_set) {
        effect.settings.push_back(parseSetting(m_sets[i]));
    } else if (option == m_key) {
        effect.keys.push_back(parseKey(m_keys[i]));
    } else if (effect.preset.empty() && effect.presetFile.empty()) {
        (option == m_preset ? effect.preset : effect.presetFile) = (option == m_preset ? m_presets : m_presetFiles)[i];
    } else {
        throw UsageError("The effect \"" + effect.name + "\" is given two presets; one is possible.");
    }
}

hostkit::ParameterStore readParameters(IEffectLibrary& library, const hostkit::EffectDescription& effect,
                                       const EffectRequest& request) {
    hostkit::ParameterStore parameters(effect);
    if (!request.preset.empty()) {
        parameters.apply(effect.preset(request.preset));
    }
    if (!request.presetFile.empty()) {
        hostkit::loadPresetFile(library, request.presetFile, parameters);
    }
    for (const EffectRequest::Key& key : request.keys) {
        parameters.addKey(key.label, key.timeSeconds, key.value);
    }
    for (const EffectRequest::Setting& setting : request.settings) {
        const hostkit::ParameterDescription& parameter = effect.parameter(setting.label);
        if (parameters.hasKeys(parameter)) {
            throw UsageError("\"" + effect.shortestName(parameter) + "\" of " + effect.name +
                             " is given both by --set and by --key.");
        }
        parameters.set(setting.label, setting.value);
    }
    return parameters;
}

std::vector<hostkit::EffectStage> buildChain(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                             const std::vector<EffectRequest>& requests) {
    std::vector<hostkit::EffectStage> chain;
    for (const EffectRequest& request : requests) {
        const hostkit::EffectDescription& effect = catalogue.effect(request.name);
        hostkit::ParameterStore parameters = readParameters(library, effect, request);
        auto object = hostkit::ComPtr<IVideoGPUEffect>::adopt(library.CreateEffect(effect.index));
        if (!object) {
            throw std::bad_alloc();
        }
        chain.push_back({std::move(object), std::move(parameters)});
    }
    return chain;
}

}  // namespace lumiset::app

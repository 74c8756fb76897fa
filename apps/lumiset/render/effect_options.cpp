#include "apps/lumiset/render/effect_options.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "apps/lumiset/usage_error.h"
#include "hostkit/look_json.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

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
    EffectRequest::Key key{{}, {}, std::move(value)};
    if (at == std::string::npos || !hostkit::parseLookTime(std::string_view(name).substr(at + 1), key.time)) {
        throw UsageError(std::string("--key takes \"") + kForm + "\", not \"" + text + "\".");
    }
    key.label = name.substr(0, at);
    return key;
}

double parseStrength(const std::string& text) {
    std::string_view number = hostkit::trimmed(text);
    number.remove_suffix(number.ends_with('%') ? 1 : 0);
    double percent = 0.0;
    if (!hostkit::parseNumber(number, percent) || percent < 0.0 || percent > 100.0) {
        throw UsageError("--strength takes a number from 0 to 100, not \"" + text + "\".");
    }
    return percent;
}

}  // namespace

EffectOptions::EffectOptions(CLI::App& command, Kind kind) : m_command(command), m_kind(kind) {
    const bool isChain = kind == kAnimatedChain || kind == kMaskedChain;
    const bool several = isChain || kind == kAlternatives;
    if (kind == kNamedEffect) {
        command.add_option("EFFECT", m_name, "name of the effect");
    } else {
        add(m_effect, "--effect,-e", "NAME",
            isChain                 ? "effect to apply; several are applied in turn"
            : kind == kAlternatives ? "effect to show in a picture of its own; any number"
                                    : "the effect");
    }
    const std::string whose = several ? "the --effect before it" : "the effect";
    if (kind != kOneEffect) {
        add(m_look, "--look,-l", "FILE|NAME", "look in place of an effect; \"lumiset look list\" shows them");
    }
    add(m_preset, "--preset,-p", "NAME", "preset of " + whose);
    add(m_presetFile, "--preset-file", "FILE", "preset file for " + whose);
    add(m_set, "--set,-s", "\"Label=value\"", "value for " + whose + "; for a look \"Effect/Label=value\"");
    if (isChain) {
        add(m_key, "--key,-k", "\"Label@TIME=value\"",
            "keyframe for " + whose + ", at seconds, h:m:s or a part of the clip as 50%");
        add(m_strength, "--strength", "PERCENT", "how much of the --effect or --look before it shows [100]");
    }
    if (kind == kMaskedChain) {
        add(m_mask, "--mask", "FILE", "grey picture: the --effect or --look before it shows where this is white");
    }
}

void EffectOptions::add(Repeated& repeated, const char* names, const char* form, const std::string& tip) {
    repeated.option = m_command.add_option(names, repeated.values, tip)->allow_extra_args(false)->option_text(form);
}

std::vector<EffectRequest> EffectOptions::requests() const {
    std::vector<EffectRequest> effects;
    if (!m_name.empty()) {
        effects.push_back({m_name});
    }
    const Repeated* const all[] = {&m_effect, &m_look, &m_preset, &m_presetFile, &m_set, &m_key, &m_strength, &m_mask};
    std::map<const Repeated*, std::size_t> used;
    for (const CLI::Option* option : m_command.parse_order()) {
        const auto* const found = std::find_if(std::begin(all), std::end(all),
                                               [option](const Repeated* each) { return each->option == option; });
        if (option == nullptr || found == std::end(all)) {
            continue;  // another option of the command
        }
        const std::string& value = (*found)->values[used[*found]++];
        if (*found == &m_effect) {
            effects.push_back({value});
        } else if (*found == &m_look) {
            effects.push_back({{}, value});
        } else if (effects.empty()) {
            throw UsageError(option->get_name() + " must stand behind the --effect" +
                             (m_kind == kOneEffect ? "" : " or --look") + " that it belongs to.");
        } else {
            addTo(effects.back(), **found, value);
        }
    }
    if (effects.empty() && m_kind == kNamedEffect) {
        throw UsageError(m_command.get_name() + " needs EFFECT; \"lumiset list\" shows them.");
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

void EffectOptions::addTo(EffectRequest& request, const Repeated& repeated, const std::string& value) const {
    const std::string called = request.look.empty() ? "The effect \"" + request.name : "The look \"" + request.look;
    if (&repeated == &m_set) {
        request.settings.push_back(parseSetting(value));
    } else if (&repeated == &m_key) {
        request.keys.push_back(parseKey(value));
    } else if (&repeated == &m_strength) {
        request.strength = parseStrength(value);
    } else if (&repeated == &m_mask) {
        if (!request.mask.empty()) {
            throw UsageError(called + "\" is given two masks; one is possible.");
        }
        request.mask = value;
    } else if (!request.look.empty()) {
        throw UsageError(called + "\" is given a preset; these belong to effects.");
    } else if (request.preset.empty() && request.presetFile.empty()) {
        (&repeated == &m_preset ? request.preset : request.presetFile) = value;
    } else {
        throw UsageError(called + "\" is given two presets; one is possible.");
    }
}

}  // namespace lumiset::app

#include "apps/studio/core/command_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "adapters/frei0r_lines/look_lines.h"
#include "hostkit/names.h"
#include "hostkit/value_json.h"
#include "media/scene_source.h"

namespace lumiset::studio {
namespace {

using hostkit::shellWord;

/// The shortest that reads back to the same number.
std::string numberText(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

/// The value as the command line reads it, to the last bit.
std::string exactText(const hostkit::ParameterDescription& parameter, const ParamValue& value) {
    const hostkit::Json json = hostkit::valueToJson(parameter, value);
    if (json.is_number()) {
        return numberText(json.get<double>());
    }
    if (json.is_array()) {
        return numberText(json[0].get<double>()) + ',' + numberText(json[1].get<double>());
    }
    if (json.is_boolean()) {
        return json.get<bool>() ? "on" : "off";
    }
    if (json.is_string()) {
        return json.get<std::string>();
    }
    throw hostkit::LookError("No command line can say the value of " + parameter.path() +
                             "; save the look and render with --look.");
}

}  // namespace

std::string lumisetCommand(const hostkit::EffectCatalogue& catalogue, const hostkit::Look& look,
                           const render::FileJob& job) {
    if (look.strength < 100.0) {
        throw hostkit::LookError("The strength of the whole look stands in its file; save it and render with --look.");
    }
    std::string line = "lumiset render " + shellWord(job.input) + ' ' + shellWord(job.output);
    const auto add = [&line](const char* option, const std::string& word) {
        line += std::string(" ") + option + ' ' + shellWord(word);
    };
    std::size_t effects = 0;
    for (const hostkit::LookEffect& each : look.effects) {
        if (each.off) {
            continue;
        }
        ++effects;
        const hostkit::EffectDescription& effect = catalogue.effect(each.effect);
        add("--effect", effect.name);
        if (!each.preset.empty()) {
            add("--preset", each.preset);
        }
        if (each.strength < 100.0) {
            add("--strength", numberText(each.strength));
        }
        for (const hostkit::LookParameter& setting : each.parameters) {
            const hostkit::ParameterDescription& parameter = *effect.parameterAt(setting.index);
            const std::string name = effect.shortestName(parameter);
            if (setting.keys.empty()) {
                add("--set", name + '=' + exactText(parameter, setting.value));
            }
            for (const hostkit::LookParameter::Key& key : setting.keys) {
                add("--key", name + '@' + numberText(key.time.at) + (key.time.isPart ? "%" : "") + '=' +
                                 exactText(parameter, key.value));
            }
        }
    }
    if (effects == 0) {
        throw hostkit::LookError("There is no effect to render.");
    }
    if (job.startSeconds > 0.0) {
        add("--start", numberText(job.startSeconds));
    }
    if (std::isfinite(job.durationSeconds)) {
        add("--duration", numberText(job.durationSeconds));
    }
    if (!job.codec.empty()) {
        add("--codec", job.codec);
    }
    if (job.bits != 0) {
        add("--bits", std::to_string(job.bits));
    }
    if (job.width > 0 || job.height > 0) {
        add("--size", std::to_string(job.width) + 'x' + std::to_string(job.height));
    }
    if (job.quality >= 0) {
        add("--quality", std::to_string(job.quality));
    }
    line += job.alpha ? " --alpha" : "";
    line += job.gpu ? " --gpu" : "";
    return line;
}

std::string pluginsCommand(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                           const hostkit::Look& look, const render::FileJob& job, PluginHost host) {
    if (media::isSceneName(job.input)) {
        throw hostkit::LookError("The built-in scene is known to no other program; open a clip first.");
    }
    const std::vector<frei0r::Settings> chain = frei0r::settingsOf(catalogue, look);
    const frei0r::Clip clip = frei0r::clipOf(library, catalogue, look, job.input, job.output);
    return host == PluginHost::kFfmpeg ? frei0r::ffmpegCommand(chain, clip) : frei0r::meltCommand(chain, clip);
}

}  // namespace lumiset::studio

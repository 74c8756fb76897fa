#include "apps/lumiset/chain.h"

#include <new>

#include "hostkit/preset_file.h"

namespace lumiset::app {

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

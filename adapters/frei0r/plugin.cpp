// The entry points of a plug-in. Compiled once for each effect, with its index in the module as LUMISET_FREI0R_EFFECT
// and the name of the plug-in as LUMISET_FREI0R_NAME.

#include <exception>
#include <new>

#include "adapters/frei0r/frei0r_abi.h"
#include "adapters/frei0r/instance.h"
#include "hostkit/report.h"

namespace {

using lumiset::frei0r::Effect;
using lumiset::frei0r::Instance;

/// Null when the module cannot be loaded. Looked for once: a host asks for every plug-in that it finds.
const Effect* effect() noexcept {
    static const Effect* const loaded = Effect::load(LUMISET_FREI0R_EFFECT);
    return loaded;
}

/// Ends what exceptions there are: the host knows none.
template <class Call>
void guarded(const Call& call) noexcept {
    try {
        call();
    } catch (const std::exception& error) {
        lumiset::hostkit::report(error.what());
    }
}

}  // namespace

int f0r_init() {
    return 1;
}

void f0r_deinit() {}

void f0r_get_plugin_info(Frei0rPluginInfo* info) {
    const Effect* known = effect();
    info->name = LUMISET_FREI0R_NAME;
    info->author = "Lumiset";
    info->pluginType = kFrei0rFilter;
    info->colorModel = kFrei0rBgra8888;
    info->frei0rVersion = kFrei0rVersion;
    info->majorVersion = LUMISET_FREI0R_MAJOR;
    info->minorVersion = LUMISET_FREI0R_MINOR;
    info->parameterCount = known != nullptr ? static_cast<int>(known->parameters().size()) : 0;
    info->explanation =
        known != nullptr ? known->explanation().c_str() : "Not usable: the effects module of Lumiset was not found";
}

void f0r_get_param_info(Frei0rParamInfo* info, int index) {
    const Effect* known = effect();
    if (known == nullptr || index < 0 || static_cast<std::size_t>(index) >= known->parameters().size()) {
        *info = {"", kFrei0rDouble, ""};
        return;
    }
    const lumiset::frei0r::Parameter& parameter = known->parameters()[static_cast<std::size_t>(index)];
    *info = {parameter.name.c_str(), parameter.type, parameter.explanation.c_str()};
}

Frei0rInstance f0r_construct(unsigned int width, unsigned int height) {
    Instance* instance = nullptr;
    if (const Effect* known = effect()) {
        guarded([&] { instance = new Instance(*known, width, height); });
    }
    return instance;
}

void f0r_destruct(Frei0rInstance instance) {
    delete static_cast<Instance*>(instance);
}

void f0r_set_param_value(Frei0rInstance instance, void* value, int index) {
    if (instance != nullptr) {
        guarded([&] { static_cast<Instance*>(instance)->set(index, value); });
    }
}

void f0r_get_param_value(Frei0rInstance instance, void* value, int index) {
    if (instance != nullptr) {
        guarded([&] { static_cast<const Instance*>(instance)->get(index, value); });
    }
}

void f0r_update(Frei0rInstance instance, double time, const std::uint32_t* source, std::uint32_t* destination) {
    if (instance != nullptr) {
        // Asked here: only in the function that the host calls is this an address in the host.
        static_cast<Instance*>(instance)->update(time, __builtin_return_address(0), source, destination);
    }
}

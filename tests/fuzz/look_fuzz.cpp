// Whatever bytes a look's file holds: it is refused with a sentence, or read to effects whose values are ready at any
// time, and which are written so that they read back the same.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "hostkit/look_json.h"
#include "hostkit/module.h"
#include "tests/fuzz/memory_file.h"

namespace {

using namespace lumiset;
using fuzz::require;

constexpr double kClipSeconds = 12.5;

void requireReady(const hostkit::EffectDescription& effect, const hostkit::LookEffect& wanted) {
    const hostkit::ParameterStore values = hostkit::valuesOf(effect, wanted, kClipSeconds);
    for (const hostkit::ParameterDescription& parameter : effect.parameters) {
        for (const double seconds : {0.0, 1.0, kClipSeconds}) {
            const ParamValue value = values.valueAt(parameter, seconds);
            require(parameter.type != kParamSlider || std::isfinite(value.slider));
            require(parameter.type != kParamPoint || (std::isfinite(value.point.x) && std::isfinite(value.point.y)));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const hostkit::Module s_module(std::getenv("LUMISET_MODULE"));
    static const hostkit::EffectCatalogue s_catalogue(s_module.effectLibrary());
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const hostkit::Look look = hostkit::lookFromJson(s_catalogue, text, "otherwise");
        require(!look.effects.empty());
        for (const hostkit::LookEffect& each : look.effects) {
            requireReady(s_catalogue.effect(each.effect), each);
        }
        const std::string written = hostkit::lookToJson(s_catalogue, look);
        require(hostkit::lookToJson(s_catalogue, hostkit::lookFromJson(s_catalogue, written, "another")) == written);
    } catch (const hostkit::LookError& error) {
        const std::string sentence = error.what();
        require(!sentence.empty() && sentence.find('\0') == std::string::npos);
    }
    return 0;
}

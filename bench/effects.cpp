#include <fmt/format.h>

#include <memory>

#include "bench/bench_case.h"
#include "bench/frames.h"
#include "hostkit/host_allocator.h"
#include "hostkit/module.h"
#include "hostkit/parameter_store.h"

namespace lumiset::bench {
namespace {

using hostkit::ComPtr;

/// What the effects need as long as they are measured.
struct Stage {
    hostkit::Module module;
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};
    ComPtr<IHostAllocator> allocator;
};

/// One effect with the values of a preset.
struct Subject {
    std::shared_ptr<Stage> stage;
    ComPtr<IVideoGPUEffect> effect;
    hostkit::ParameterStore parameters;

    bool render(const Frame& from, const Frame& to) const {
        constexpr double kTimeSeconds = 1.3;
        VideoFrameDesc source;
        VideoFrameDesc destination;
        from.ToDesc(&source);
        to.ToDesc(&destination);
        FrameRenderInfo info{};
        info.timeSeconds = kTimeSeconds;
        info.field = FrameRenderInfo::kWholeFrame;
        info.pixelAspect = 1;
        hostkit::RenderHost host(parameters, kTimeSeconds, stage->allocator.get());
        return effect->ProcessFrame(&host, &source, nullptr, &destination, &info);
    }
};

}  // namespace

void addEffects(Cases& cases) {
    Frames& f = frames();
    const auto stage = std::make_shared<Stage>();
    stage->allocator = hostkit::PoolAllocator::create();
    for (const hostkit::EffectDescription& effect : stage->catalogue.effects()) {
        hostkit::ParameterStore parameters(effect);
        std::string preset = "defaults";
        for (const hostkit::PresetDescription& candidate : effect.presets) {
            if (!candidate.name.starts_with("Reset")) {  // those do nothing
                parameters.apply(candidate);
                preset = candidate.name;
                break;
            }
        }
        const auto subject = std::make_shared<Subject>(
            stage, ComPtr<IVideoGPUEffect>::adopt(stage->module.effectLibrary().CreateEffect(effect.index)),
            parameters);
        const auto add = [&](const char* format, Base base, const Pool& from, const Pool& to) {
            cases.push_back({fmt::format("{}, {}, {}", effect.name, preset, format), base,
                             [subject, &from, &to](std::size_t n) { return subject->render(from[n], to[n]); }});
        };
        add("8", Base::kFrame8, f.a8, f.out8);
        add("float", Base::kFrameFloat, f.aF, f.outF);
    }
}

}  // namespace lumiset::bench

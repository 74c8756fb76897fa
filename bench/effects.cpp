#include <fmt/format.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_case.h"
#include "bench/frames.h"
#include "hostkit/host_allocator.h"
#include "hostkit/module.h"
#include "hostkit/parameter_store.h"
#include "hostkit/renderer.h"

namespace lumiset::bench {
namespace {

using hostkit::ComPtr;

constexpr double kTimeSeconds = 1.3;

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
        VideoFrameDesc source;
        VideoFrameDesc destination;
        from.ToDesc(&source);
        to.ToDesc(&destination);
        return render(source, destination);
    }
    bool render(const VideoFrameDesc& source, const VideoFrameDesc& destination) const {
        FrameRenderInfo info{};
        info.timeSeconds = kTimeSeconds;
        info.field = FrameRenderInfo::kWholeFrame;
        info.pixelAspect = 1;
        hostkit::RenderHost host(parameters, kTimeSeconds, stage->allocator.get());
        return effect->ProcessFrame(&host, &source, nullptr, &destination, &info);
    }
};

/// All effects with their first presets, one after the other as a look has them; and the same by hand, each effect on
/// the picture that it has there in a frame of its own. What the chain takes beyond that is the host kit's.
void addChains(Cases& cases, const std::shared_ptr<Stage>& stage) {
    const auto chain = std::make_shared<std::vector<hostkit::EffectStage>>();
    const auto subjects = std::make_shared<std::vector<Subject>>();
    for (const hostkit::EffectDescription& effect : stage->catalogue.effects()) {
        const auto object = ComPtr<IVideoGPUEffect>::adopt(stage->module.effectLibrary().CreateEffect(effect.index));
        hostkit::ParameterStore parameters(effect);
        parameters.apply(effect.presets.front().name.starts_with("Reset") ? effect.presets.back()
                                                                          : effect.presets.front());
        chain->push_back({object, parameters});
        subjects->push_back({stage, object, parameters});
    }
    Frames& f = frames();
    const auto addFormat = [&](const char* name, PixelFormat format, Base base, const Pool& from, const Pool& to) {
        const auto renderer = std::make_shared<hostkit::Renderer>(*chain, format, stage->allocator.get());
        cases.push_back({fmt::format("All effects in a chain, {}", name), base,
                         [stage, chain, renderer, &from, &to](std::size_t n) {
                             VideoFrameDesc source;
                             VideoFrameDesc destination;
                             from[n].ToDesc(&source);
                             to[n].ToDesc(&destination);
                             renderer->render(source, destination, {kTimeSeconds, 0.04, 1.0});
                             return true;
                         }});
        const auto pictures = std::make_shared<std::vector<hostkit::FrameBuffer>>();
        for (std::size_t i = 0; i <= chain->size(); ++i) {
            pictures->emplace_back(from[0].Width(), from[0].Height(), format);
        }
        VideoFrameDesc first;
        from[0].ToDesc(&first);
        hostkit::convertFrame(first, pictures->front().desc());
        cases.push_back({fmt::format("All effects, each alone, {}", name), base, [subjects, pictures](std::size_t) {
                             for (std::size_t i = 0; i < subjects->size(); ++i) {
                                 if (!(*subjects)[i].render((*pictures)[i].desc(), (*pictures)[i + 1].desc())) {
                                     return false;
                                 }
                             }
                             return true;
                         }});
    };
    addFormat("8", kFormatBgra8, Base::kFrame8, f.picture8, f.out8);
    addFormat("float", kFormatBgraFloat, Base::kFrameFloat, f.pictureF, f.outF);
}

}  // namespace

void addEffects(Cases& cases) {
    Frames& f = frames();
    const auto stage = std::make_shared<Stage>();
    stage->allocator = hostkit::PoolAllocator::create();
    addChains(cases, stage);
    for (const hostkit::EffectDescription& effect : stage->catalogue.effects()) {
        const auto add = [&](const std::string& name, const hostkit::ParameterStore& parameters) {
            const auto subject = std::make_shared<Subject>(
                stage, ComPtr<IVideoGPUEffect>::adopt(stage->module.effectLibrary().CreateEffect(effect.index)),
                parameters);
            const auto addFormat = [&](const char* format, Base base, const Pool& from, const Pool& to) {
                cases.push_back({fmt::format("{}, {}, {}", effect.name, name, format), base,
                                 [subject, &from, &to](std::size_t n) { return subject->render(from[n], to[n]); }});
            };
            addFormat("8", Base::kFrame8, f.picture8, f.out8);
            addFormat("float", Base::kFrameFloat, f.pictureF, f.outF);
        };
        add("defaults", hostkit::ParameterStore(effect));
        std::map<std::string, int> uses;  // names may be given twice
        for (const hostkit::PresetDescription& preset : effect.presets) {
            if (!preset.name.starts_with("Reset")) {  // those do nothing
                hostkit::ParameterStore parameters(effect);
                parameters.apply(preset);
                const int use = ++uses[preset.name];
                add(use == 1 ? preset.name : fmt::format("{} ({})", preset.name, use), parameters);
            }
        }
    }
}

}  // namespace lumiset::bench

#include <fmt/format.h>

#include <map>

#include "bench/bench_case.h"
#include "bench/effect_subjects.h"
#include "bench/frames.h"
#include "hostkit/host_allocator.h"
#include "hostkit/renderer.h"

namespace lumiset::bench {

namespace {

constexpr double kTimeSeconds = 1.3;

/// All effects with their first presets, one after the other as a look has them; and the same by hand, each effect on
/// the picture that it has there in a frame of its own. What the chain takes beyond that is the host kit's.
void addChains(Cases& cases, const std::shared_ptr<Stage>& stage) {
    const auto chain = std::make_shared<std::vector<hostkit::EffectStage>>();
    const auto subjects = std::make_shared<std::vector<Subject>>();
    for (const hostkit::EffectDescription& effect : stage->catalogue.effects()) {
        const auto object =
            hostkit::ComPtr<IVideoGPUEffect>::adopt(stage->module.effectLibrary().CreateEffect(effect.index));
        hostkit::ParameterStore parameters(effect);
        parameters.apply(effect.presets.front().name.starts_with("Reset") ? effect.presets.back()
                                                                          : effect.presets.front());
        chain->push_back({object, parameters});
        subjects->push_back({effect.name, stage, object, parameters});
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

bool Subject::render(const VideoFrameDesc& source, const VideoFrameDesc& destination, IHostParallel* threads) const {
    FrameRenderInfo info{};
    info.timeSeconds = kTimeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    info.pixelAspect = 1;
    hostkit::RenderHost host(parameters, kTimeSeconds, stage->allocator.get(), threads);
    return effect->ProcessFrame(&host, &source, nullptr, &destination, &info);
}

bool Subject::render(const Frame& from, const Frame& to, IHostParallel* threads) const {
    VideoFrameDesc source;
    VideoFrameDesc destination;
    from.ToDesc(&source);
    to.ToDesc(&destination);
    return render(source, destination, threads);
}

std::vector<std::shared_ptr<const Subject>> effectSubjects() {
    std::vector<std::shared_ptr<const Subject>> subjects;
    const auto stage = std::make_shared<Stage>();
    stage->allocator = hostkit::PoolAllocator::create();
    for (const hostkit::EffectDescription& effect : stage->catalogue.effects()) {
        const auto add = [&](const std::string& preset, const hostkit::ParameterStore& parameters) {
            subjects.push_back(std::make_shared<const Subject>(Subject{
                fmt::format("{}, {}", effect.name, preset), stage,
                hostkit::ComPtr<IVideoGPUEffect>::adopt(stage->module.effectLibrary().CreateEffect(effect.index)),
                parameters}));
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
    return subjects;
}

void addEffects(Cases& cases) {
    Frames& f = frames();
    const auto all = effectSubjects();
    addChains(cases, all.front()->stage);
    for (const auto& subject : all) {
        const auto addFormat = [&](const char* format, Base base, const Pool& from, const Pool& to) {
            cases.push_back({fmt::format("{}, {}", subject->name, format), base,
                             [subject, &from, &to](std::size_t n) { return subject->render(from[n], to[n]); }});
        };
        addFormat("8", Base::kFrame8, f.picture8, f.out8);
        addFormat("float", Base::kFrameFloat, f.pictureF, f.outF);
    }
}

}  // namespace lumiset::bench

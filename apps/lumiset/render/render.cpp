#include "apps/lumiset/render/render.h"

#include <fmt/format.h>

#include <optional>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/interruption.h"
#include "apps/lumiset/render/progress.h"
#include "media/part.h"
#include "render/gpu_refusal.h"

namespace lumiset::app {

void render(const RenderRequest& request, IEffectLibrary& library, const std::vector<hostkit::EffectStage>& chain) {
    const render::FileJob& job = request.job;
    const std::string output = job.part ? media::partFile(job.output, job.part->number, job.part->count) : job.output;
    std::optional<Progress> progress;
    render::FileWatcher watcher;
    watcher.begun = [&](std::int64_t expected) {
        watchForInterruption();
        progress.emplace(request.quiet, expected);
    };
    watcher.progress = [&](std::int64_t frames) { progress->show(frames); };
    watcher.wantsStop = [] { return interruptingSignal() != 0; };
    watcher.stopped = [&] {
        progress->clear();
        endInterrupted(interruptingSignal(), output);
    };
    watcher.noGPU = [](const std::string& why) {
        tell(fmt::format("lumiset: {} The processor renders instead.\n", why));
    };
    watcher.gpu.driver = [](const std::string& sentence) { tell("lumiset: " + sentence + '\n'); };
    watcher.gpu.leftToOthers = [&library](const std::string& effect) {
        tell("lumiset: " + printable(render::refusalInOpenGL(library, effect)) + " The processor renders instead.\n");
    };
    try {
        const std::optional<render::FileResult> result = render::renderFile(request.job, chain, watcher);
        progress->finish(result->frames, output);
        if (!request.quiet) {
            for (const std::string& note : result->notes) {
                tell(note + '\n');
            }
        }
    } catch (...) {
        if (progress) {
            progress->clear();
        }
        throw;
    }
}

}  // namespace lumiset::app

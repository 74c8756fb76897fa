#include "apps/lumiset/render/render.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/gpu_refusal.h"
#include "apps/lumiset/render/interruption.h"
#include "apps/lumiset/render/ordered_pipeline.h"
#include "apps/lumiset/render/picture_frame.h"
#include "apps/lumiset/render/progress.h"
#include "hostkit/gl/gpu_frames.h"
#include "hostkit/host_allocator.h"
#include "media/media.h"

namespace lumiset::app {
namespace {

struct Job {
    media::Picture source;
    media::Picture result;
};

PixelFormat workFormat(const RenderRequest& request) {
    if (request.floatDepth) {
        return request.argb ? kFormatArgbFloat : kFormatBgraFloat;
    }
    return request.argb ? kFormatArgb8 : kFormatBgra8;
}

media::SourceOptions sourceOptions(const RenderRequest& request) {
    media::SourceOptions options;
    options.depth = request.floatDepth ? media::Depth::kFloat : media::Depth::kEightBit;
    options.startSeconds = request.startSeconds;
    options.durationSeconds = request.durationSeconds;
    options.frameRate = {request.frameRate.num, request.frameRate.den};
    options.threads = request.threads;
    return options;
}

int renderThreads(const RenderRequest& request) {
    return request.threads > 0 ? request.threads : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

/// Null, and a sentence on standard error, where there is no OpenGL that effects can use.
std::unique_ptr<hostkit::GPUFrames> openGPU(IEffectLibrary& library) {
    try {
        return std::make_unique<hostkit::GPUFrames>(hostkit::GPUFrames::Listener{
            [](const std::string& sentence) { tell("lumiset: " + sentence + '\n'); },
            [&library](const std::string& effect) {
                tell("lumiset: " + refusalInOpenGL(library, effect) + " The processor renders instead.\n");
            }});
    } catch (const hostkit::GLError& error) {
        tell(fmt::format("lumiset: {} The processor renders instead.\n", error.what()));
        return nullptr;
    }
}

/// The writing end of a render.
class Output {
public:
    Output(const RenderRequest& request, const media::Source& source)
        : m_request(request), m_progress(request.quiet, source.format().frameCount) {
        media::VideoFormat format = source.format();
        format.hasAlpha = format.hasAlpha || request.alpha;
        media::SinkOptions options;
        options.codec = request.codec;
        options.quality = request.quality;
        options.threads = request.threads;
        m_sink = media::openSink(request.output, format, options, &source);
    }

    void write(const media::Picture& picture) {
        m_sink->write(picture);
        ++m_frames;
    }

    /// Shows the progress; ends the program when a signal has come.
    void tick() {
        if (const int signal = interruptingSignal(); signal != 0) {
            m_progress.clear();
            m_sink.reset();
            endInterrupted(signal, m_request.output);
        }
        m_progress.show(m_frames);
    }

    void clearProgress() { m_progress.clear(); }

    void finish() {
        tick();
        if (m_frames == 0) {
            throw media::MediaError(
                fmt::format("\"{}\" has no picture in the time that was asked for.", m_request.input));
        }
        m_sink->finish();
        m_progress.finish(m_frames, m_request.output);
        if (!m_request.quiet) {
            for (const std::string& note : m_sink->notes()) {
                tell(note + '\n');
            }
        }
    }

private:
    const RenderRequest& m_request;
    Progress m_progress;
    std::unique_ptr<media::Sink> m_sink;
    std::int64_t m_frames = 0;
};

}  // namespace

void render(const RenderRequest& request, IEffectLibrary& library, const std::vector<hostkit::EffectStage>& chain) {
    const std::unique_ptr<media::Source> source = media::openSource(request.input, sourceOptions(request));
    watchForInterruption();
    const media::VideoFormat& format = source->format();
    const hostkit::ComPtr<IHostAllocator> allocator = hostkit::PoolAllocator::create();
    const std::unique_ptr<hostkit::GPUFrames> gpu = request.gpu ? openGPU(library) : nullptr;
    const int threads = gpu != nullptr ? 1 : renderThreads(request);
    std::vector<hostkit::Renderer> renderers;
    renderers.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i) {
        renderers.emplace_back(chain, workFormat(request), allocator.get());
    }
    if (gpu != nullptr) {
        gpu->serve(renderers.front());
    }
    Output output(request, *source);
    PipelineSteps<Job> steps;
    steps.read = [&](Job& job) { return source->read(job.source); };
    steps.work = [&](Job& job, int worker) {
        job.result.allocate(job.source.width, job.source.height, job.source.depth);
        job.result.pts = job.source.pts;
        job.result.timeSeconds = job.source.timeSeconds;
        job.result.interlaced = job.source.interlaced;
        job.result.topFieldFirst = job.source.topFieldFirst;
        renderers[static_cast<std::size_t>(worker)].render(frameOf(job.source), frameOf(job.result),
                                                           contextOf(job.source, format));
    };
    steps.write = [&](Job& job) { output.write(job.result); };
    steps.tick = [&] {
        if (gpu != nullptr && interruptingSignal() != 0) {
            gpu->stop();
        }
        output.tick();
    };
    try {
        OrderedPipeline<Job>(threads, std::move(steps)).run();
        output.finish();
    } catch (...) {
        output.clearProgress();
        throw;
    }
}

}  // namespace lumiset::app

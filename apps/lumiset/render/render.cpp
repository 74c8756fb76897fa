#include "apps/lumiset/render/render.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <shared_mutex>
#include <thread>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/gpu_refusal.h"
#include "apps/lumiset/render/interruption.h"
#include "apps/lumiset/render/ordered_pipeline.h"
#include "apps/lumiset/render/picture_frame.h"
#include "apps/lumiset/render/progress.h"
#include "hostkit/gl/gpu_frames.h"
#include "hostkit/host_allocator.h"
#include "hostkit/thread_pool.h"
#include "media/media.h"

namespace lumiset::app {
namespace {

struct Job {
    media::RawPicture raw;
    media::ReadyPicture ready;
    media::Picture result;  ///< where the sink does not take it ready
    bool isReady = false;
};

/// What a worker needs for one picture after another.
struct Worker {
    hostkit::Renderer renderer;
    media::Picture source;
    media::Picture result;
};

PixelFormat workFormat(const RenderRequest& request, media::Depth depth) {
    if (depth == media::Depth::kFloat) {
        return request.argb ? kFormatArgbFloat : kFormatBgraFloat;
    }
    return request.argb ? kFormatArgb8 : kFormatBgra8;
}

media::SourceOptions sourceOptions(const RenderRequest& request) {
    media::SourceOptions options;
    const bool fine = request.bits > 8;
    options.depth = request.depth.value_or(fine ? media::Depth::kFloat : media::Depth::kEightBit);
    options.keepDepth = !request.depth.has_value();
    options.startSeconds = request.startSeconds;
    options.durationSeconds = request.durationSeconds;
    options.frameRate = request.frameRate;
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
        if (request.alpha) {
            format.color.alpha = media::AlphaKind::kStraight;
        }
        media::SinkOptions options;
        options.codec = request.codec;
        options.quality = request.quality;
        options.bits = request.bits;
        if (request.bits == 0 && request.depth == media::Depth::kFloat) {
            options.bits = std::max(10, format.bitDepth);
        }
        options.threads = request.threads;
        m_sink = media::openSink(request.output, format, options, &source);
    }

    /// On any thread: makes a picture ready to be written where the sink can.
    bool prepare(const media::Picture& picture, media::ReadyPicture& ready) {
        const std::shared_lock use(m_use);
        return m_sink->prepare(picture, ready);
    }

    void write(Job& job) {
        if (job.isReady) {
            m_sink->write(job.ready);
            job.ready = {};
        } else {
            m_sink->write(job.result);
        }
        ++m_frames;
    }

    /// Shows the progress; ends the program when a signal has come.
    void tick() {
        if (const int signal = interruptingSignal(); signal != 0) {
            m_progress.clear();
            m_use.lock();  // for ever: who prepares another picture waits for the end of the program
            m_sink.reset();
            endInterrupted(signal, m_request.output);
        }
        m_progress.show(m_frames);
    }

    void clearProgress() { m_progress.clear(); }

    /// `notes` are told before the sink's own.
    void finish(const std::vector<std::string>& notes) {
        tick();
        if (m_frames == 0) {
            throw media::MediaError(
                fmt::format("\"{}\" has no picture in the time that was asked for.", m_request.input));
        }
        m_sink->finish();
        m_progress.finish(m_frames, m_request.output);
        if (!m_request.quiet) {
            for (const std::string& note : notes) {
                tell(note + '\n');
            }
            for (const std::string& note : m_sink->notes()) {
                tell(note + '\n');
            }
        }
    }

private:
    const RenderRequest& m_request;
    Progress m_progress;
    std::unique_ptr<media::Sink> m_sink;
    std::shared_mutex m_use;  ///< shared by those who prepare pictures for the sink
    std::int64_t m_frames = 0;
};

}  // namespace

void render(const RenderRequest& request, IEffectLibrary& library, const std::vector<hostkit::EffectStage>& chain) {
    const std::unique_ptr<media::Source> source = media::openSource(request.input, sourceOptions(request));
    watchForInterruption();
    const media::VideoFormat& format = source->format();
    const hostkit::ComPtr<IHostAllocator> allocator = hostkit::PoolAllocator::create();
    const std::unique_ptr<hostkit::GPUFrames> gpu = request.gpu ? openGPU(library) : nullptr;
    const int threads = renderThreads(request);
    // Renders one frame on the threads that have no frame of their own: a still, a pipe, a clip's first and last.
    const auto pool = hostkit::ThreadPool::create(static_cast<std::uint32_t>(threads));
    std::vector<Worker> workers;
    workers.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i) {
        workers.push_back(
            {hostkit::Renderer(chain, workFormat(request, format.depth), allocator.get(), pool.get()), {}, {}});
        if (gpu != nullptr) {
            gpu->serve(workers.back().renderer);
        }
    }
    Output output(request, *source);
    PipelineSteps<Job> steps;
    steps.read = [&](Job& job) { return source->fetch(job.raw); };
    steps.work = [&](Job& job, int number) {
        const hostkit::ThreadPool::Turn turn(*pool.get());
        Worker& worker = workers[static_cast<std::size_t>(number)];
        media::Picture& from = worker.source;
        media::Picture& to = worker.result;
        source->convert(job.raw, from);
        to.allocate(from.width, from.height, from.depth);
        to.pts = from.pts;
        to.timeSeconds = from.timeSeconds;
        to.interlaced = from.interlaced;
        to.topFieldFirst = from.topFieldFirst;
        worker.renderer.render(frameOf(from), frameOf(to), contextOf(from, format));
        job.isReady = output.prepare(to, job.ready);
        if (!job.isReady) {
            std::swap(job.result, to);
        }
    };
    steps.write = [&](Job& job) { output.write(job); };
    steps.tick = [&] {
        if (gpu != nullptr && interruptingSignal() != 0) {
            gpu->stop();
        }
        output.tick();
    };
    try {
        OrderedPipeline<Job>(threads, std::move(steps)).run();
        output.finish(source->notes());
    } catch (...) {
        output.clearProgress();
        throw;
    }
}

}  // namespace lumiset::app

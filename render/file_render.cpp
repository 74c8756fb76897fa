#include "render/file_render.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <thread>

#include "hostkit/host_allocator.h"
#include "hostkit/thread_pool.h"
#include "media/resize.h"
#include "render/ordered_pipeline.h"
#include "render/part_cut.h"
#include "render/picture_frame.h"

namespace lumiset::render {
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
    media::Picture resized;
    std::optional<media::Resizer> resizer;  ///< none: the size stays
};

/// Ends the pipeline from its own thread.
struct Stop {};

PixelFormat workFormat(const FileJob& job, media::Depth depth) {
    if (depth == media::Depth::kFloat) {
        return job.argb ? kFormatArgbFloat : kFormatBgraFloat;
    }
    return job.argb ? kFormatArgb8 : kFormatBgra8;
}

media::SourceOptions sourceOptions(const FileJob& job) {
    media::SourceOptions options;
    const bool fine = job.bits > 8;
    options.depth = job.depth.value_or(fine ? media::Depth::kFloat : media::Depth::kEightBit);
    options.keepDepth = !job.depth.has_value();
    options.startSeconds = job.startSeconds;
    options.durationSeconds = job.durationSeconds;
    options.frameRate = job.frameRate;
    options.threads = job.threads;
    return options;
}

int renderThreads(const FileJob& job) {
    return job.threads > 0 ? job.threads : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

std::unique_ptr<hostkit::GPUFrames> openGPU(const FileWatcher& watcher) {
    try {
        return std::make_unique<hostkit::GPUFrames>(watcher.gpu);
    } catch (const hostkit::GLError& error) {
        watcher.noGPU(error.what());
        return nullptr;
    }
}

media::SinkOptions sinkOptions(const FileJob& job, const media::VideoFormat& format) {
    media::SinkOptions options;
    options.codec = job.codec;
    options.quality = job.quality;
    options.bits = job.bits;
    if (job.bits == 0 && job.depth == media::Depth::kFloat) {
        options.bits = std::max(10, format.bitDepth);
    }
    options.threads = job.threads;
    return options;
}

media::VideoFormat writtenFormat(const FileJob& job, const media::VideoFormat& format) {
    return job.width > 0 || job.height > 0 ? media::resized(format, job.width, job.height) : format;
}

/// The writing end of a render.
class Output {
public:
    Output(const FileJob& job, media::VideoFormat format, const media::SinkOptions& options,
           const media::Source* source, const FileWatcher& watcher)
        : m_job(job), m_watcher(watcher) {
        if (job.alpha) {
            format.color.alpha = media::AlphaKind::kStraight;
        }
        m_sink = media::openSink(job.output, format, options, source);
    }

    /// On any thread: makes a picture ready to be written where the sink can.
    bool prepare(const media::Picture& picture, media::ReadyPicture& ready) {
        const std::shared_lock use(m_use);
        return m_sink != nullptr && m_sink->prepare(picture, ready);
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

    /// Throws `Stop` when the watcher wants it.
    void tick() {
        if (m_watcher.wantsStop()) {
            {
                const std::lock_guard use(m_use);  // who prepares another picture finds no sink
                m_sink.reset();
            }
            m_watcher.stopped();
            throw Stop();
        }
        m_watcher.progress(m_frames);
    }

    FileResult finish() {
        tick();
        if (m_frames == 0 && !m_job.part) {
            throw media::MediaError(fmt::format("\"{}\" has no picture in the time that was asked for.", m_job.input));
        }
        m_sink->finish();
        return {m_frames, m_sink->notes()};
    }

private:
    const FileJob& m_job;
    const FileWatcher& m_watcher;
    std::unique_ptr<media::Sink> m_sink;
    std::shared_mutex m_use;  ///< shared by those who prepare pictures for the sink
    std::int64_t m_frames = 0;
};

}  // namespace

std::optional<FileResult> renderFile(const FileJob& request, const std::vector<hostkit::EffectStage>& chain,
                                     const FileWatcher& watcher) {
    const media::SourceOptions reading = sourceOptions(request);
    const std::unique_ptr<media::Source> whole = media::openSource(request.input, reading);
    const media::VideoFormat& format = whole->format();
    const media::VideoFormat written = writtenFormat(request, format);
    media::SinkOptions writing = sinkOptions(request, format);
    std::optional<PartCut> part;
    if (request.part) {
        part.emplace(request, *whole, reading, writing);
        writing.part = part->options();
    }
    media::Source* const source = part ? part->source() : whole.get();
    watcher.begun(part ? part->expected() : format.frameCount);
    const hostkit::ComPtr<IHostAllocator> allocator = hostkit::PoolAllocator::create();
    const std::unique_ptr<hostkit::GPUFrames> gpu = request.gpu ? openGPU(watcher) : nullptr;
    if (part) {
        part->options()->record.traits.emplace_back("renderer", gpu != nullptr ? "OpenGL" : "processor");
    }
    const int threads = renderThreads(request);
    // Renders one frame on the threads that have no frame of their own: a still, a pipe, a clip's first and last.
    const auto pool = hostkit::ThreadPool::create(static_cast<std::uint32_t>(threads));
    std::vector<Worker> workers;
    workers.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i) {
        workers.push_back(
            {hostkit::Renderer(chain, workFormat(request, format.depth), allocator.get(), pool.get()), {}, {}, {}, {}});
        if (written.width != format.width || written.height != format.height) {
            workers.back().resizer.emplace(written.width, written.height);
        }
        if (gpu != nullptr) {
            gpu->serve(workers.back().renderer);
        }
    }
    const auto render = [&](media::Source& from, media::RawPicture& raw, Worker& worker) {
        media::Picture& input = worker.source;
        media::Picture& result = worker.result;
        from.convert(raw, input);
        result.allocate(input.width, input.height, input.depth);
        result.pts = input.pts;
        result.timeSeconds = input.timeSeconds;
        result.interlaced = input.interlaced;
        result.topFieldFirst = input.topFieldFirst;
        worker.renderer.render(frameOf(input), frameOf(result), contextOf(input, format));
        if (worker.resizer) {
            worker.resizer->resize(result, worker.resized);
            std::swap(result, worker.resized);
        }
    };
    if (part) {
        const hostkit::ThreadPool::Turn turn(*pool.get());
        writing.alpha = request.alpha || format.color.hasAlpha();
        if (!*writing.alpha) {
            render(*whole, part->filmFirst(), workers.front());
            writing.alpha = !media::isOpaque(workers.front().result);
        }
    }
    Output output(request, written, writing, whole.get(), watcher);
    PipelineSteps<Job> steps;
    steps.read = [&](Job& job) { return part ? part->fetch(job.raw) : source->fetch(job.raw); };
    steps.work = [&](Job& job, int number) {
        const hostkit::ThreadPool::Turn turn(*pool.get());
        Worker& worker = workers[static_cast<std::size_t>(number)];
        render(*source, job.raw, worker);
        job.isReady = output.prepare(worker.result, job.ready);
        if (!job.isReady) {
            std::swap(job.result, worker.result);
        }
    };
    steps.write = [&](Job& job) { output.write(job); };
    steps.tick = [&] {
        if (gpu != nullptr && watcher.wantsStop()) {
            gpu->stop();
        }
        output.tick();
    };
    try {
        OrderedPipeline<Job>(threads, std::move(steps)).run();
        FileResult result = output.finish();
        std::vector<std::string> notes = source != nullptr ? source->notes() : std::vector<std::string>();
        result.notes.insert(result.notes.begin(), notes.begin(), notes.end());
        return result;
    } catch (const Stop&) {
        return std::nullopt;
    }
}

double clipSeconds(const media::VideoFormat& format) {
    return format.frameCount == 1 ? 1.0 : std::max(0.0, format.durationSeconds);
}

}  // namespace lumiset::render

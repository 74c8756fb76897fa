#include "apps/studio/core/engine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <new>
#include <utility>

#include "hostkit/host_allocator.h"
#include "hostkit/look_json.h"
#include "hostkit/renderer.h"
#include "render/file_render.h"
#include "render/gpu_refusal.h"
#include "render/picture_frame.h"

namespace lumiset::studio {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kScratchBytes = std::size_t{256} << 20;
constexpr int kThumbnailWorkWidth = 640;

std::size_t bytesOf(const media::Picture& picture) {
    return picture.data.size() + sizeof picture;
}

/// Of a picture that effects work on at a part of its size.
Size partOf(const media::VideoFormat& format, int divisor) {
    return {std::max(1, (format.width + divisor / 2) / divisor), std::max(1, (format.height + divisor / 2) / divisor)};
}

template <class Do>
std::string errorOf(const Do& what) {
    try {
        what();
        return {};
    } catch (const std::bad_alloc&) {
        return "There is not enough memory.";
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace

Engine::Engine(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, std::size_t cacheBytes)
    : m_library(library),
      m_catalogue(catalogue),
      m_threads(hostkit::ThreadPool::create(hostkit::wantedThreads())),
      m_allocator(hostkit::PoolAllocator::create(kScratchBytes)),
      m_cache(cacheBytes) {}

Engine::~Engine() = default;

void Engine::stop() {
    for (std::size_t lane = 0; lane < Scheduler::kLanes; ++lane) {
        m_scheduler.clear(static_cast<Scheduler::Lane>(lane));
    }
    m_scheduler.waitUntilIdle();
}

void Engine::open(const std::string& path, std::function<void(const ClipInfo*, const std::string&)> done) {
    m_scheduler.replace(Scheduler::kOpening, [this, path, done = std::move(done)] {
        std::optional<ClipInfo> info;
        const std::string error = errorOf([&] {
            auto clip = std::make_unique<ClipReader>(path);
            (void)clip->read(0);  // a file without a picture is no clip
            info = {path, clip->format(), clip->frameCount(), clip->origin()};
            m_clip = std::move(clip);
            ++m_clipNumber;
            m_cache.clear();
        });
        done(info ? &*info : nullptr, error);
    });
}

void Engine::show(const FrameWish& wish, Take take) {
    m_scheduler.replace(Scheduler::kShown, [this, wish, take = std::move(take)] { take(make(wish)); });
}

void Engine::refine(const FrameWish& wish, Take take) {
    m_scheduler.replace(Scheduler::kRefinement, [this, wish, take = std::move(take)] { take(make(wish)); });
}

void Engine::readAhead(const std::vector<FrameWish>& wishes, Take take) {
    m_scheduler.clear(Scheduler::kReadAhead);
    for (const FrameWish& wish : wishes) {
        m_scheduler.add(Scheduler::kReadAhead, [this, wish, take] { take(make(wish)); });
    }
}

void Engine::addThumbnail(const FrameWish& wish, Take take) {
    m_scheduler.add(Scheduler::kThumbnails, [this, wish, take = std::move(take)] {
        FrameWish small = wish;
        if (m_clip != nullptr) {
            small.divisor = std::max(1, (m_clip->format().width + kThumbnailWorkWidth - 1) / kThumbnailWorkWidth);
            small.size = shownSize(m_clip->format(), wish.size);
        }
        take(make(small));
    });
}

void Engine::pick(const FrameWish& wish, double x, double y, std::function<void(std::optional<std::uint32_t>)> take) {
    m_scheduler.add(Scheduler::kOpening, [this, wish, x, y, take = std::move(take)] {
        std::optional<std::uint32_t> color;
        (void)errorOf([&] {
            if (m_clip == nullptr) {
                return;
            }
            double seconds = 0.0;
            const PicturePtr from = source(wish.frame, partOf(m_clip->format(), 1), 1);
            const PicturePtr picture = rendered(wish, wish.look, from, seconds);
            const int centreX = std::clamp(static_cast<int>(x * picture->width), 0, picture->width - 1);
            const int centreY = std::clamp(static_cast<int>(y * picture->height), 0, picture->height - 1);
            double sums[3] = {};
            double count = 0.0;
            for (int row = std::max(0, centreY - 2); row <= std::min(picture->height - 1, centreY + 2); ++row) {
                for (int column = std::max(0, centreX - 2); column <= std::min(picture->width - 1, centreX + 2);
                     ++column) {
                    for (std::size_t c = 0; c < 3; ++c) {
                        const std::size_t at = 4 * static_cast<std::size_t>(column) + c;
                        sums[c] += picture->depth == media::Depth::kFloat
                                       ? 255.0 * static_cast<double>(media::samples<float>(*picture, row)[at])
                                       : static_cast<double>(picture->row(row)[at]);
                    }
                    count += 1.0;
                }
            }
            const auto byteOf = [count](double sum) {
                return static_cast<std::uint32_t>(std::clamp(std::lround(sum / count), 0L, 255L));
            };
            color = byteOf(sums[0]) << 16U | byteOf(sums[1]) << 8U | byteOf(sums[2]);
        });
        take(color);
    });
}

std::string Engine::sourceSeries(int divisor) const {
    return std::to_string(m_clipNumber) + '/' + std::to_string(divisor) + '/';
}

std::string Engine::series(const FrameWish& wish, const LookSnapshot& look) const {
    const std::string size = std::to_string(wish.size.width) + 'x' + std::to_string(wish.size.height);
    return sourceSeries(wish.divisor) + size + (wish.gpu ? "/gpu/" : "/") +
           std::to_string(static_cast<int>(wish.fields)) +
           (look == nullptr || look->effects.empty() ? "" : hostkit::lookToJson(m_catalogue, *look));
}

std::vector<std::int64_t> Engine::cachedFrames(const FrameWish& wish) const {
    return m_cache.framesOf(series(wish, wish.look));
}

FrameShot Engine::make(const FrameWish& wish) {
    FrameShot shot{wish, {}, {}, 0.0, 0.0, {}};
    shot.error = errorOf([&] {
        if (m_clip == nullptr) {
            throw media::MediaError("No clip is open.");
        }
        shot.timeSeconds = secondsOf(wish.frame, m_clip->format());
        std::shared_ptr<const DisplayPicture> picture = display(wish, wish.look, shot);
        if (wish.compares) {
            FrameShot ignored;
            shot.before = display(wish, wish.before, ignored);
        }
        shot.picture = std::move(picture);
    });
    return shot;
}

std::shared_ptr<const DisplayPicture> Engine::display(const FrameWish& wish, const LookSnapshot& look,
                                                      FrameShot& shot) {
    const FrameKey key{series(wish, look), wish.frame};
    if (auto kept = m_cache.find<DisplayPicture>(key)) {
        return kept;
    }
    const PicturePtr from = source(wish.frame, partOf(m_clip->format(), wish.divisor), wish.divisor);
    const PicturePtr result = rendered(wish, look, from, shot.effectSeconds);
    auto made = std::make_shared<const DisplayPicture>(
        displayOf(*asShown(result, *from, wish.fields), wish.size, m_threads.get()));
    m_cache.put(key, made, made->bytes.size() + sizeof *made);
    return made;
}

/// What of an interlaced picture is shown. Reduced pictures are means of both fields, which no view takes apart.
Engine::PicturePtr Engine::asShown(const PicturePtr& picture, const media::Picture& source, Fields fields) {
    if (fields == Fields::kWoven || !source.interlaced) {
        return picture;
    }
    auto field = std::make_shared<media::Picture>();
    fieldOf(*picture, source.topFieldFirst == (fields == Fields::kFirst), *field);
    return field;
}

Engine::PicturePtr Engine::source(std::int64_t frame, Size size, int divisor) {
    const FrameKey key{sourceSeries(divisor) + "source", frame};
    if (auto kept = m_cache.find<media::Picture>(key)) {
        return kept;
    }
    auto made = std::make_shared<media::Picture>();
    if (divisor == 1) {
        *made = m_clip->read(frame);
    } else {
        reduce(*source(frame, partOf(m_clip->format(), 1), 1), size, *made, m_threads.get());
    }
    m_cache.put(key, PicturePtr(made), bytesOf(*made));
    return made;
}

Engine::PicturePtr Engine::rendered(const FrameWish& wish, const LookSnapshot& look, const PicturePtr& source,
                                    double& seconds) {
    if (look == nullptr || look->effects.empty()) {
        return source;
    }
    const media::VideoFormat& format = m_clip->format();
    const std::vector<hostkit::EffectStage> chain =
        hostkit::buildChain(m_library, m_catalogue, {{*look, nullptr}}, render::clipSeconds(format));
    if (chain.empty()) {
        return source;
    }
    const media::Picture& from = *source;
    auto to = std::make_shared<media::Picture>();
    to->allocate(from.width, from.height, from.depth);
    to->timeSeconds = from.timeSeconds;
    const PixelFormat work = from.depth == media::Depth::kFloat ? kFormatBgraFloat : kFormatBgra8;
    hostkit::Renderer renderer(chain, work, m_allocator.get(), m_threads.get());
    if (hostkit::GPUFrames* frames = wish.gpu ? gpu() : nullptr; frames != nullptr) {
        frames->serve(renderer);
    }
    const Clock::time_point begin = Clock::now();
    renderer.render(render::frameOf(from), render::frameOf(*to), render::contextOf(from, format));
    seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return to;
}

hostkit::GPUFrames* Engine::gpu() {
    if (!m_gpuTried) {
        m_gpuTried = true;
        try {
            m_gpu = std::make_unique<hostkit::GPUFrames>(hostkit::GPUFrames::Listener{
                [this](const std::string& sentence) { tell(sentence); },
                [this](const std::string& effect) {
                    tell(render::refusalInOpenGL(m_library, effect) + " The processor renders it instead.");
                }});
        } catch (const hostkit::GLError& error) {
            tell(std::string(error.what()) + " The processor renders instead.");
        }
    }
    return m_gpu.get();
}

void Engine::forgetGpu() {
    run([this] {
        m_gpu.reset();
        m_gpuTried = false;
        m_cache.clear();
    });
}

void Engine::tell(const std::string& sentence) {
    const std::lock_guard lock(m_messagesMutex);
    m_messages.push_back(sentence);
}

std::vector<std::string> Engine::takeMessages() {
    const std::lock_guard lock(m_messagesMutex);
    return std::exchange(m_messages, {});
}

}  // namespace lumiset::studio

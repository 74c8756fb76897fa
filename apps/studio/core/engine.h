#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/studio/core/clip_reader.h"
#include "apps/studio/core/frame_cache.h"
#include "apps/studio/core/frame_wish.h"
#include "apps/studio/core/scheduler.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/gl/gpu_frames.h"
#include "hostkit/thread_pool.h"

namespace lumiset::studio {

/// Makes the pictures of a window: opens clips, reads their frames, renders looks and scales what comes of it, all on a
/// thread of its own that has the others' help, the most urgent first. What it has made it keeps, as long as there is
/// room. Its functions are called on one thread and return at once; answers come on the engine's own.
class Engine {
public:
    /// `catalogue` must outlive the engine.
    Engine(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, std::size_t cacheBytes = cacheLimit());
    ~Engine();

    /// Takes the place of the clip that is open; where it cannot be opened that one stays.
    void open(const std::string& path, std::function<void(const ClipInfo*, const std::string& error)> done);

    using Take = std::function<void(FrameShot&&)>;
    /// The next picture to show, in place of the one that waits.
    void show(const FrameWish& wish, Take take);
    /// The same once nothing more urgent waits.
    void refine(const FrameWish& wish, Take take);
    /// Renders into the cache what is not there.
    void readAhead(const std::vector<FrameWish>& wishes, Take take);
    void stopReadAhead() { m_scheduler.clear(Scheduler::kReadAhead); }
    /// One of many small pictures, when there is nothing else to do. The look is rendered on a frame at most 640 wide.
    void addThumbnail(const FrameWish& wish, Take take);
    void clearThumbnails() { m_scheduler.clear(Scheduler::kThumbnails); }

    /// The mean colour 0x00BBGGRR of 5 x 5 pixels of what `look` makes, `x` and `y` in 0..1 of the picture.
    void pick(const FrameWish& wish, double x, double y, std::function<void(std::optional<std::uint32_t>)> take);

    /// Something else that takes too long for a window's thread; it throws nothing.
    void run(std::function<void()> work) { m_scheduler.add(Scheduler::kOpening, std::move(work)); }
    /// Makes a new start with OpenGL, which tells anew what it cannot do.
    void forgetGpu();

    /// The frames that are ready to be shown as in this wish. On any thread.
    [[nodiscard]] std::vector<std::int64_t> cachedFrames(const FrameWish& wish) const;
    [[nodiscard]] std::size_t cachedBytes() const { return m_cache.bytes(); }
    /// What OpenGL told, a sentence each, since the last call. On any thread.
    [[nodiscard]] std::vector<std::string> takeMessages();

    void waitUntilIdle() { m_scheduler.waitUntilIdle(); }
    [[nodiscard]] bool isIdle() const { return m_scheduler.isIdle(); }
    /// Forgets what waits and returns when nothing is in flight.
    void stop();

private:
    using PicturePtr = std::shared_ptr<const media::Picture>;

    /// What stands in front of every series: which clip, and which size effects work at.
    [[nodiscard]] std::string sourceSeries(int divisor) const;
    [[nodiscard]] std::string series(const FrameWish& wish, const LookSnapshot& look) const;
    // On the engine's thread:
    FrameShot make(const FrameWish& wish);
    std::shared_ptr<const DisplayPicture> display(const FrameWish& wish, const LookSnapshot& look, FrameShot& shot);
    PicturePtr source(std::int64_t frame, Size size, int divisor);
    PicturePtr rendered(const FrameWish& wish, const LookSnapshot& look, const PicturePtr& source, double& seconds);
    hostkit::GPUFrames* gpu();
    static PicturePtr asShown(const PicturePtr& picture, const media::Picture& source, Fields fields);
    void tell(const std::string& sentence);

    IEffectLibrary& m_library;
    const hostkit::EffectCatalogue& m_catalogue;
    hostkit::ComPtr<hostkit::ThreadPool> m_threads;
    hostkit::ComPtr<IHostAllocator> m_allocator;
    FrameCache m_cache;
    std::unique_ptr<ClipReader> m_clip;  ///< the engine's thread's own
    std::atomic<std::uint64_t> m_clipNumber{0};
    std::unique_ptr<hostkit::GPUFrames> m_gpu;
    bool m_gpuTried = false;
    std::mutex m_messagesMutex;
    std::vector<std::string> m_messages;
    Scheduler m_scheduler;  // last: its thread uses the others
};

}  // namespace lumiset::studio

#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host/video_effect.h"
#include "hostkit/com_ptr.h"
#include "hostkit/frame_buffer.h"
#include "hostkit/mix.h"
#include "hostkit/parameter_store.h"

namespace lumiset::hostkit {

/// One effect in a chain. The object may be shared by any number of renderers.
struct EffectStage {
    /// What mixes the picture behind some stages with the picture in front of them.
    struct GroupMix {
        std::size_t stages = 1;  ///< how many, this one the last
        Mix mix;
    };

    ComPtr<IVideoGPUEffect> effect;
    ParameterStore parameters;
    std::vector<GroupMix> mixes{};  ///< done behind this stage, in turn
};

/// Of an interlaced frame the field that comes first; or the one field that a frame is, of half the picture's rows.
enum class FieldOrder { kProgressive, kTopFirst, kBottomFirst, kTopFieldAlone, kBottomFieldAlone };

/// What is known about the frame to render.
struct FrameContext {
    double timeSeconds = 0.0;      ///< from the start of the clip; of an interlaced frame, its first field's
    double durationSeconds = 0.0;  ///< of the frame; the second field comes half of it later
    double pixelAspect = 0.0;      ///< width of a pixel divided by its height; 0 when it is not known
    FieldOrder fields = FieldOrder::kProgressive;
};

/// An effect refused to render; the text is a whole sentence.
class RenderError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One effect's turn at a frame.
struct EffectCall {
    IVideoGPUEffect& effect;
    IEffectHost& host;
};

/// Renders one frame through effects in turn in another way than `IVideoEffect::ProcessFrame`, and answers how many of
/// them it did, from the first on: the destination holds the last one's picture. On 0 it is as it was.
using RunRenderer = std::function<std::size_t(std::span<const EffectCall> calls, const VideoFrameDesc& source,
                                              const VideoFrameDesc& destination, const FrameRenderInfo& info)>;

/// Renders frames through effects, one after the other, on the processor. A renderer keeps its buffers from
/// frame to frame and is used by one thread at a time; renderers on one chain may work at the same time.
class Renderer {
public:
    /// The effects see frames of `format`. `chain` must outlive the renderer; `allocator` and `threads` may be null.
    Renderer(const std::vector<EffectStage>& chain, PixelFormat format, IHostAllocator* allocator = nullptr,
             IHostParallel* threads = nullptr)
        : m_chain(chain), m_format(format), m_allocator(allocator), m_threads(threads) {}

    /// Tries `first` before the processor, for as many effects at once as have nothing to be done between them.
    void setFirstChoice(RunRenderer first) { m_firstChoice = std::move(first); }

    /// Renders `source` to `destination`, frames of one size in any of the host formats. The frames must not
    /// overlap. An interlaced frame's fields are rendered each on its own at their own times. Throws
    /// `RenderError`, std::bad_alloc.
    void render(const VideoFrameDesc& source, const VideoFrameDesc& destination, const FrameContext& context);

private:
    /// A frame or a field with what its effects are told of it.
    struct Part {
        VideoFrameDesc source;
        VideoFrameDesc destination;
        FrameRenderInfo info;
    };
    [[nodiscard]] static std::vector<Part> partsOf(const VideoFrameDesc& source, const VideoFrameDesc& destination,
                                                   const FrameContext& context);
    void process(const EffectStage& stage, const Part& part) const;
    /// Renders stages from `first` on by the first choice, `count` of them or fewer, and answers how many.
    [[nodiscard]] std::size_t chooseFirst(std::size_t first, std::size_t count, const std::vector<Part>& parts) const;
    /// How many stages from this one on have nothing to be done between them, and no frame that is needed again.
    [[nodiscard]] std::size_t runLength(std::size_t stage) const;
    /// An unused frame of the source's size and the chain's format.
    [[nodiscard]] std::size_t takeScratch(const VideoFrameDesc& like);
    /// The last stage whose result is mixed with the frame in front of this one; the largest number for none.
    [[nodiscard]] std::size_t lastMix(std::size_t stage) const;
    /// The last stage that reads the frame in front of this one.
    [[nodiscard]] std::size_t lastReader(std::size_t stage) const;

    const std::vector<EffectStage>& m_chain;
    PixelFormat m_format;
    IHostAllocator* m_allocator;
    IHostParallel* m_threads;
    RunRenderer m_firstChoice;
    std::vector<FrameBuffer> m_scratch;
    std::vector<std::size_t> m_freeAfter;  ///< for each of `m_scratch` the stage that needs it last
};

}  // namespace lumiset::hostkit

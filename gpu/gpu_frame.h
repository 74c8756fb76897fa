#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "gpu/gpu_helper.h"
#include "host/frame_processor.h"

namespace lumiset {

/// The two texts of a program.
struct GPUProgramSource {
    const ProgramText& vertex;
    const ProgramText& fragment;
};

/// What a pass reads: up to four textures, which the program knows as Texture0 to Texture3.
class PassInputs {
public:
    template <class... Textures>
    PassInputs(const GPUTexture& first, const Textures&... rest) noexcept : m_textures{&first, &rest...} {}

    [[nodiscard]] const GPUTexture& first() const noexcept { return *m_textures[0]; }
    /// Null for a stage that the pass does not read.
    [[nodiscard]] const GPUTexture* operator[](std::size_t stage) const noexcept { return m_textures[stage]; }

    static constexpr std::size_t kMost = 4;

private:
    std::array<const GPUTexture*, kMost> m_textures{};
};

/// One frame on its way through an effect's passes: the records cropped to their common size, the temporary
/// textures and the programs, and one flag that ends the frame at the first failure. Whatever was made is given
/// back when the object goes, and the destination's record is as the host left it. Nothing but `finish` draws into the
/// destination, in one last step, so a frame that fails, wherever that is, leaves it as it was.
///
/// Every temporary holds the plain channel order, and each pass tells its program so: "SwapChannels",
/// "SwapChannelsSrc" and "SwapChannelsSrc0" are 1 where its first texture has the other order, "SwapChannelsSrc1" and
/// "SwapChannelsSrc2" where the second and the third have. For an effect that knows up from down the source is turned
/// as it is read, so that row 0 of every temporary is the picture's top; such an effect reads the source in passes of
/// one texture only.
///
/// Passes name their program by its place in the list that `create` was given.
class GPUFrame {
public:
    static constexpr std::size_t kMaxTemporaries = 5;
    static constexpr std::size_t kMaxPrograms = 24;

    GPUFrame(GPUHelper& gpu, const GPUTexture& source, GPUTexture& destination, bool topDown) noexcept;
    ~GPUFrame();
    GPUFrame(const GPUFrame&) = delete;
    GPUFrame& operator=(const GPUFrame&) = delete;

    [[nodiscard]] std::int32_t width() const noexcept { return m_source.width; }
    [[nodiscard]] std::int32_t height() const noexcept { return m_source.height; }

    /// Makes the temporaries (of the frame's size, in the source's plain format) and the programs, and begins to
    /// draw. On false nothing has been drawn.
    bool create(std::size_t temporaries, std::span<const GPUProgramSource> programs) noexcept {
        return create(temporaries, programs, width(), height());
    }
    /// The same with temporaries of another size.
    bool create(std::size_t temporaries, std::span<const GPUProgramSource> programs, std::int32_t temporaryWidth,
                std::int32_t temporaryHeight) noexcept;

    [[nodiscard]] const GPUTexture& source() const noexcept { return m_source; }
    [[nodiscard]] GPUTexture& temporary(std::size_t index) noexcept { return m_temporaries[index]; }
    [[nodiscard]] bool ok() const noexcept { return m_ok; }

    /// Draws `from` into `to` after `setUniforms(ShaderProgram&)`. Does nothing once a step has failed.
    template <class SetUniforms>
    bool pass(std::size_t program, const PassInputs& from, const GPUTexture& to, SetUniforms&& setUniforms) {
        if (ShaderProgram* shader = begin(program, from, to)) {
            setUniforms(*shader);
            draw(from, nullptr);
        }
        return m_ok;
    }
    bool pass(std::size_t program, const PassInputs& from, const GPUTexture& to) {
        return pass(program, from, to, [](ShaderProgram&) {});
    }
    /// The same into rectangles of whole texels of `to`, which should not overlap: the quad's texture coordinates 0..1
    /// span each of them, and what lies outside keeps what it holds.
    template <class SetUniforms>
    bool passRects(std::size_t program, const GPUTexture& from, const GPUTexture& to, std::span<const PixelRect> rects,
                   SetUniforms&& setUniforms) {
        if (ShaderProgram* shader = begin(program, from, to)) {
            setUniforms(*shader);
            drawRects(from, to, rects);
        }
        return m_ok;
    }
    /// A separable blur by two programs, of so many taps in each direction.
    bool blur(std::size_t vertical, std::size_t horizontal, std::int32_t columns, std::int32_t rows,
              const GPUTexture& from, const GPUTexture& between, const GPUTexture& to) noexcept;

    /// Presents the finished picture in the destination.
    bool finish(GPUTexture& result) noexcept;

private:
    /// The program, ready to draw into `to`; null once a step has failed.
    ShaderProgram* begin(std::size_t program, const PassInputs& from, const GPUTexture& to) noexcept;
    void draw(const PassInputs& from, const QuadRect* rect) noexcept;
    void drawRects(const GPUTexture& from, const GPUTexture& to, std::span<const PixelRect> rects) noexcept;

    GPUHelper& m_gpu;
    GPUTexture m_source;
    GPUTexture& m_destination;
    const GPUTexture m_given;  // the destination's record as the host gave it
    const bool m_turnSource;
    const bool m_resultFlipped;
    bool m_ok = true;
    bool m_begun = false;
    std::size_t m_temporaryCount = 0;
    std::size_t m_programCount = 0;
    std::array<GPUTexture, kMaxTemporaries> m_temporaries{};
    std::array<ShaderProgram, kMaxPrograms> m_programs;
};

}  // namespace lumiset

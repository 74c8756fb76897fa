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

/// One frame on its way through an effect's passes: the records cropped to their common size, the temporary
/// textures and the programs, and one flag that ends the frame at the first failure. Whatever was made is given
/// back when the object goes, and the destination's record is as the host left it.
///
/// Every texture holds the plain channel order. The pass that reads the source has its "SwapChannels" uniform set.
/// For an effect that knows up from down the source is turned as it is read, so that row 0 of every temporary is
/// the picture's top; such an effect reads the source in passes of one texture only.
class GPUFrame {
public:
    static constexpr std::size_t kMaxTemporaries = 4;
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
    /// Free to be used as one more temporary until `finish`.
    [[nodiscard]] GPUTexture& destination() noexcept { return m_destination; }
    [[nodiscard]] GPUTexture& temporary(std::size_t index) noexcept { return m_temporaries[index]; }
    [[nodiscard]] ShaderProgram& program(std::size_t index) noexcept { return m_programs[index]; }
    [[nodiscard]] bool ok() const noexcept { return m_ok; }

    /// Draws `from` into `to` after `setUniforms(ShaderProgram&)`. Does nothing once a step has failed.
    template <class SetUniforms>
    bool pass(ShaderProgram& shader, const GPUTexture& from, const GPUTexture& to, SetUniforms&& setUniforms) {
        if (begin(shader, to)) {
            setUniforms(shader);
            m_ok = m_gpu.DrawQuad(from, m_turnSource && &from == &m_source, nullptr);
        }
        return m_ok;
    }
    bool pass(ShaderProgram& shader, const GPUTexture& from, const GPUTexture& to) {
        return pass(shader, from, to, [](ShaderProgram&) {});
    }
    /// The same into a rectangle of `to`, in fractions of it: the quad's texture coordinates 0..1 span the rectangle,
    /// and what lies outside keeps what it holds.
    template <class SetUniforms>
    bool passRect(ShaderProgram& shader, const GPUTexture& from, const GPUTexture& to, const QuadRect& rect,
                  SetUniforms&& setUniforms) {
        if (begin(shader, to)) {
            setUniforms(shader);
            m_ok = m_gpu.DrawQuad(from, false, &rect);
        }
        return m_ok;
    }
    /// The same into many rectangles of whole texels of `to`, which should not overlap.
    template <class SetUniforms>
    bool passRects(ShaderProgram& shader, const GPUTexture& from, const GPUTexture& to,
                   std::span<const PixelRect> rects, SetUniforms&& setUniforms) {
        if (begin(shader, to)) {
            setUniforms(shader);
            drawRects(from, to, rects);
        }
        return m_ok;
    }
    /// The same with two textures.
    template <class SetUniforms>
    bool pass2(ShaderProgram& shader, const GPUTexture& from0, const GPUTexture& from1, const GPUTexture& to,
               SetUniforms&& setUniforms) {
        if (begin(shader, to)) {
            setUniforms(shader);
            m_ok = m_gpu.DrawQuad2(from0, from1, false, nullptr);
        }
        return m_ok;
    }
    /// A separable blur by two programs, of so many taps in each direction.
    bool blur(ShaderProgram& vertical, ShaderProgram& horizontal, std::int32_t columns, std::int32_t rows,
              const GPUTexture& from, const GPUTexture& between, const GPUTexture& to) noexcept;

    /// Presents the finished picture in the destination.
    bool finish(GPUTexture& result) noexcept;

private:
    bool begin(ShaderProgram& shader, const GPUTexture& to) noexcept;
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

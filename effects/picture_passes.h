#pragma once

#include <utility>

#include "gpu/gpu_frame.h"

namespace lumiset {

/// The picture of an effect of many steps in OpenGL: it goes from one of the frame's first two temporaries to the
/// other, pass by pass.
class PicturePasses {
public:
    explicit PicturePasses(GPUFrame& frame) : m_frame(frame) {}

    [[nodiscard]] GPUTexture& picture() { return *m_current; }

    /// A first pass: draws the source.
    void take(std::size_t program) { m_frame.pass(program, m_frame.source(), *m_current); }

    /// Another: draws the source through the colour matrix of `color_matrix.frag`.
    void adjustColor(std::size_t program, const float (&matrix)[3][4]) {
        m_frame.pass(program, m_frame.source(), *m_current, [&](ShaderProgram& shader) {
            constexpr const char* kNames[] = {"matrixRow0", "matrixRow1", "matrixRow2"};
            for (std::size_t i = 0; i < 3; ++i) {
                shader.SetFloat4(kNames[i], matrix[i][0], matrix[i][1], matrix[i][2], matrix[i][3]);
            }
        });
    }

    template <class SetUniforms>
    void draw(std::size_t program, SetUniforms&& setUniforms) {
        m_frame.pass(program, *m_current, *m_other, setUniforms);
        swap();
    }
    /// The same with the source as the program's first texture and the picture as its second.
    template <class SetUniforms>
    void drawWithSource(std::size_t program, SetUniforms&& setUniforms) {
        m_frame.pass(program, {m_frame.source(), *m_current}, *m_other, setUniforms);
        swap();
    }
    /// A separable blur as `GPUFrame::blur`.
    void blur(std::size_t vertical, std::size_t horizontal, std::int32_t columns, std::int32_t rows) {
        m_frame.blur(vertical, horizontal, columns, rows, *m_current, *m_other, *m_current);
    }

protected:
    void swap() { std::swap(m_current, m_other); }

    GPUFrame& m_frame;
    GPUTexture* m_current = &m_frame.temporary(0);
    GPUTexture* m_other = &m_frame.temporary(1);
};

}  // namespace lumiset

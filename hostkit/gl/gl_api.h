#pragma once

// The OpenGL functions that the host kit uses, resolved from a context at run time: a program that links this
// starts on a machine without OpenGL too.

#include "host/platform_call.h"

// Windows' gl.h wants two words of windows.h, whose other macros would spread from here.
#ifndef APIENTRY
#define LUMISET_GL_WORDS
#define APIENTRY LUMISET_CALL
#define WINGDIAPI
#endif
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#ifdef LUMISET_GL_WORDS
#undef LUMISET_GL_WORDS
#undef APIENTRY
#undef WINGDIAPI
#endif

#include <stdexcept>

#include "hostkit/gl/gl_context.h"

namespace lumiset::hostkit {

// clang-format off
#define LUMISET_GL_FUNCTIONS(F)                                                                          \
    F(ActiveTexture) F(AttachShader) F(BindFramebuffer) F(BindTexture) F(BlendColor)                     \
    F(BlendEquationSeparate) F(BlendFuncSeparate) F(CheckFramebufferStatus) F(CompileShader)             \
    F(CreateProgram) F(CreateShader) F(DeleteFramebuffers) F(DeleteProgram) F(DeleteShader)              \
    F(DeleteTextures) F(Disable) F(Enable) F(Finish) F(FramebufferTexture2D) F(GenFramebuffers)          \
    F(GenTextures) F(GetActiveUniform) F(GetError) F(GetFloatv) F(GetIntegerv) F(GetProgramInfoLog)      \
    F(GetProgramiv) F(GetShaderInfoLog) F(GetShaderiv) F(GetString) F(GetUniformLocation)                \
    F(LinkProgram) F(PixelStorei) F(ReadPixels) F(ShaderSource) F(TexImage2D) F(TexParameteri)           \
    F(TexSubImage2D) F(Uniform1f) F(Uniform1i) F(Uniform2f) F(Uniform3f) F(Uniform4f) F(UseProgram)      \
    F(Viewport)
// clang-format on

struct GLApi {
#define LUMISET_GL_MEMBER(name) decltype(&::gl##name) name = nullptr;  // NOLINT(bugprone-macro-parentheses)
    LUMISET_GL_FUNCTIONS(LUMISET_GL_MEMBER)
#undef LUMISET_GL_MEMBER

    /// Resolves all of them in the current context. Throws `GLError` when one is missing.
    explicit GLApi(const GLContext& context);
};

}  // namespace lumiset::hostkit

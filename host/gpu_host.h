#pragma once

// What the module asks of a host that renders in OpenGL. The host owns the context, every texture and every
// program, and lends them for the length of one call. All calls come on the thread that called the module, with
// the host's context current; a compatibility profile with GLSL 1.20 is needed. Booleans are one byte.

#include <cstdint>

#include "host/arb_table.h"
#include "host/records.h"

namespace lumiset {

/// The text of one shader stage as the module hands it to `GPUResources::CreateProgram`. The module's texts
/// are plain: `storedSize` is the length in bytes and the other words are 0.
struct ProgramText {
    const char* text;          ///< not terminated by the host's needs: read `storedSize` bytes
    std::uint32_t storedSize;  ///< bytes at `text`
    std::uint32_t plainSize;   ///< 0 for a plain text
    std::uint32_t reserved;
    std::uint32_t key;   ///< 0 for a plain text
    std::uint32_t kind;  ///< 0 for a plain text
};
static_assert(sizeof(void*) != 4 || sizeof(ProgramText) == 24);

/// Filled by `IVideoGPUEffect::InitGPU`.
struct GPUProgramSet {
    std::uint32_t reserved0;  ///< always 0
    std::uint32_t compiled;   ///< bit 0: the effect's main program compiles in this context
    std::uint32_t filled;     ///< low byte 1
};
static_assert(sizeof(GPUProgramSet) == 12);

/// A texture of the host that can be rendered to. The module asks nothing but its validity; the eight operations
/// before that are the host's own.
class IHostTexture : public IUnknown {
public:
    virtual void LUMISET_CALL Reserved3() noexcept = 0;
    virtual void LUMISET_CALL Reserved4() noexcept = 0;
    virtual void LUMISET_CALL Reserved5() noexcept = 0;
    virtual void LUMISET_CALL Reserved6() noexcept = 0;
    virtual void LUMISET_CALL Reserved7() noexcept = 0;
    virtual void LUMISET_CALL Reserved8() noexcept = 0;
    virtual void LUMISET_CALL Reserved9() noexcept = 0;
    virtual void LUMISET_CALL Reserved10() noexcept = 0;
    /// True while there is an OpenGL texture behind the object.
    virtual bool LUMISET_CALL IsValid() noexcept = 0;

protected:
    ~IHostTexture() = default;
};

/// One active uniform of a linked program.
struct UniformRecord {
    char name[64];  ///< terminated; a member of a structure is named as `Texture0.vScale`
    std::uint32_t reserved;
};
static_assert(sizeof(UniformRecord) == 68);

/// A linked program of the host. The setters concern the program in use and answer false for a uniform that it
/// does not have.
class IHostProgram : public IUnknown {
public:
    /// Makes it the program that draws.
    virtual void LUMISET_CALL Use() noexcept = 0;
    virtual bool LUMISET_CALL SetInt(const char* name, std::int32_t value) noexcept = 0;
    virtual bool LUMISET_CALL SetFloat(const char* name, float x) noexcept = 0;
    virtual bool LUMISET_CALL SetFloat2(const char* name, float x, float y) noexcept = 0;
    virtual bool LUMISET_CALL SetFloat3(const char* name, float x, float y, float z) noexcept = 0;
    virtual bool LUMISET_CALL SetFloat4(const char* name, float x, float y, float z, float w) noexcept = 0;
    /// Binds the texture to a unit of its own and gives that unit to the sampler.
    virtual bool LUMISET_CALL SetTexture(const char* name, IHostTexture* texture) noexcept = 0;
    /// The number of active uniforms; fills as many records unless `records` is null.
    virtual std::uint32_t LUMISET_CALL GetUniforms(UniformRecord* records) noexcept = 0;
    /// True when the program is linked.
    virtual bool LUMISET_CALL IsValid() noexcept = 0;

protected:
    ~IHostProgram() = default;
};

/// The host's OpenGL state, asked of the `IEffectHost` by `QueryInterface`.
class IHostGL : public IUnknown {
public:
    static constexpr Guid kId{0x3C31DE30, 0x7F89, 0x4A56, {0xAB, 0x76, 0xB0, 0x50, 0xB2, 0x9F, 0x29, 0xCB}};

    /// The record of extension entry points for the current context, filled by the host. Never null.
    virtual const ARBTable* LUMISET_CALL GetARBTable() noexcept = 0;
    /// As `glGetIntegerv`; `count` is the number of values that `values` has room for.
    virtual void LUMISET_CALL GetIntegerv(std::uint32_t name, std::int32_t* values, std::uint32_t count) noexcept = 0;
    /// As `glGetFloatv`; `count` as above.
    virtual void LUMISET_CALL GetFloatv(std::uint32_t name, float* values, std::uint32_t count) noexcept = 0;
    /// As `glEnable`. A host that caches state keeps its cache right.
    virtual void LUMISET_CALL Enable(std::uint32_t capability) noexcept = 0;
    /// As `glDisable`.
    virtual void LUMISET_CALL Disable(std::uint32_t capability) noexcept = 0;
    /// As `glBlendColor`.
    virtual void LUMISET_CALL BlendColor(float r, float g, float b, float a) noexcept = 0;
    /// As `glBlendEquationSeparate`.
    virtual void LUMISET_CALL BlendEquationSeparate(std::uint32_t color, std::uint32_t alpha) noexcept = 0;
    /// As `glBlendFuncSeparate`.
    virtual void LUMISET_CALL BlendFuncSeparate(std::uint32_t srcColor, std::uint32_t dstColor, std::uint32_t srcAlpha,
                                                std::uint32_t dstAlpha) noexcept = 0;
    /// Called once by every render before its last step, always with 0.
    virtual void LUMISET_CALL SetTargetState(std::uint32_t value) noexcept = 0;

protected:
    ~IHostGL() = default;
};

using IHostGPUContext = IHostGL;

/// The host's store of textures and programs. A frame creates what it needs and gives all of it back before it
/// ends, so a host keeps programs by their texts and textures by their sizes.
class GPUResources : public IUnknown {
public:
    /// Fills `texture` with a texture of at least `width` by `height` texels whose contents are undefined: 8-bit
    /// RGBA for formats 0 and 1, float RGBA for 3 and 4. Edges clamp. `a`, `b` and the reserved words are 0.
    virtual bool LUMISET_CALL CreateTexture(IHostGL* gl, GPUTexture* texture, std::uint32_t reserved0,
                                            std::int32_t width, std::int32_t height, std::int32_t format,
                                            std::uint32_t a, std::uint32_t b, std::uint32_t reserved1) noexcept = 0;
    /// Compiles and links a vertex and a fragment text, the words of two `ProgramText`s. There is never a
    /// geometry stage. Stores the program or null.
    virtual bool LUMISET_CALL CreateProgram(IHostGL* gl, IHostProgram** program, const char* vertexText,
                                            const char* fragmentText, const char* geometryText,
                                            std::uint32_t vertexStoredSize, std::uint32_t fragmentStoredSize,
                                            std::uint32_t geometryStoredSize, std::uint32_t vertexPlainSize,
                                            std::uint32_t fragmentPlainSize, std::uint32_t geometryPlainSize,
                                            std::uint32_t vertexKey, std::uint32_t vertexKind,
                                            std::uint32_t fragmentKey, std::uint32_t fragmentKind,
                                            std::uint32_t geometryKey, std::uint32_t geometryKind) noexcept = 0;
    /// Takes back what `CreateTexture` filled; a record without a texture is passed too and means nothing.
    virtual void LUMISET_CALL ReleaseTexture(GPUTexture* texture) noexcept = 0;
    virtual void LUMISET_CALL ReleaseProgram(IHostProgram* program) noexcept = 0;
    /// Directs drawing to the picture's rectangle of `texture` (its offsets and size become the viewport), or
    /// to the host's own framebuffer for null. `a` and `b` are 0.
    virtual bool LUMISET_CALL SetRenderTarget(IHostGL* gl, const GPUTexture* texture, std::uint32_t samples,
                                              std::uint32_t a, std::uint32_t b) noexcept = 0;

protected:
    ~GPUResources() = default;
};

}  // namespace lumiset

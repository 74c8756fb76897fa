#pragma once

// OpenGL extension entry points as one record that host and module share: a host fills it once for its context
// and hands out its address, and the module copies it. Both fill it by `loadArbTable`.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/platform_call.h"

namespace lumiset {

/// An entry point of any signature; cast it to its own before the call.
using GLProc = void(LUMISET_CALL*)();

/// The record. `entries` follow `kArbEntryNames`; what lies behind them is reserved.
struct ARBTable {
    static constexpr std::size_t kSlots = 150;

    GLProc entries[kSlots];
    std::uint8_t reserved600;
    // Without these six OpenGL extensions nothing can be rendered.
    bool hasShaderObjects;
    bool hasFramebufferObject;
    bool hasMultitexture;
    bool hasBlendColor;
    bool hasBlendMinmax;
    bool hasBlendFuncSeparate;
    bool hasBlendEquationSeparate;
    // These are noted for whoever wants to know; the module works without them.
    bool hasFramebufferBlit;
    bool hasFramebufferMultisample;
    bool hasOcclusionQuery;
    bool hasTimerQuery;
    bool hasPixelBufferObject;
    bool hasVertexBufferObject;
    bool hasVertexProgram;
    bool hasATIMeminfo;
    bool hasNVXGpuMemoryInfo;
    bool hasDrawInstanced;
    bool hasGeometryShader4;
    bool hasAMDGPUAssociation;
    bool hasHalfFloatVertex;
    std::uint8_t reserved621[43];
};
static_assert(sizeof(void*) != 4 ||
              (sizeof(ARBTable) == 664 && offsetof(ARBTable, hasShaderObjects) == 601 &&
               offsetof(ARBTable, hasFramebufferBlit) == 608 && offsetof(ARBTable, hasPixelBufferObject) == 612 &&
               offsetof(ARBTable, hasHalfFloatVertex) == 620));

/// Names of the entry points, in the order of the record.
inline constexpr auto kArbEntryNames = std::to_array<const char*>({
    "glCreateShaderObjectARB",
    "glCreateProgramObjectARB",
    "glShaderSourceARB",
    "glCompileShaderARB",
    "glGetObjectParameterivARB",
    "glAttachObjectARB",
    "glDeleteObjectARB",
    "glLinkProgramARB",
    "glDeleteProgramsARB",
    "glGetActiveUniformARB",
    "glGetInfoLogARB",
    "glUseProgramObjectARB",
    "glGetUniformLocationARB",
    "glUniform1fARB",
    "glUniform2fARB",
    "glUniform3fARB",
    "glUniform4fARB",
    "glUniform1iARB",
    "glUniform2iARB",
    "glUniform3iARB",
    "glUniform4iARB",
    "glUniformMatrix2fvARB",
    "glUniformMatrix3fvARB",
    "glUniformMatrix4fvARB",
    "glGetAttribLocationARB",
    "glGenFramebuffersEXT",
    "glBindFramebufferEXT",
    "glFramebufferTexture2DEXT",
    "glCheckFramebufferStatusEXT",
    "glDeleteFramebuffersEXT",
    "glGenRenderbuffersEXT",
    "glBindRenderbufferEXT",
    "glRenderbufferStorageEXT",
    "glFramebufferRenderbufferEXT",
    "glDeleteRenderbuffersEXT",
    "glBlitFramebufferEXT",
    "glRenderbufferStorageMultisampleEXT",
    "glActiveTextureARB",
    "glMultiTexCoord2fARB",
    "glBlendColorEXT",
    "glBlendEquationEXT",
    "glBlendFuncSeparateEXT",
    "glBlendEquationSeparateEXT",
    "glGenQueriesARB",
    "glDeleteQueriesARB",
    "glBeginQueryARB",
    "glEndQueryARB",
    "glGetQueryObjectivARB",
    "glGetQueryObjecti64vEXT",
    "glGenBuffersARB",
    "glBindBufferARB",
    "glBufferDataARB",
    "glBufferSubDataARB",
    "glGetBufferSubDataARB",
    "glMapBufferARB",
    "glUnmapBufferARB",
    "glDeleteBuffersARB",
    "glVertexAttribPointerARB",
    "glEnableVertexAttribArrayARB",
    "glDisableVertexAttribArrayARB",
    "glBindAttribLocationARB",
    "glGetProgramivARB",
    "glDrawArraysInstancedEXT",
    "glDrawElementsInstancedEXT",
    "glProgramParameteriEXT",
    "wglGetGPUIDsAMD",
    "wglGetGPUInfoAMD",
});

/// Place of an entry point in the record.
consteval std::size_t arbEntry(std::string_view name) {
    std::size_t index = 0;
    while (kArbEntryNames[index] != name) {  // an unknown name does not compile
        ++index;
    }
    return index;
}

/// Entry points that come together with an extension.
struct ArbGroup {
    bool ARBTable::*flag;
    std::size_t first;  ///< index of the group's first entry point
    std::size_t count;
    const char* extension;  ///< must be in the extension string too; null for a group without one
};

/// All groups in the order in which they are loaded: three that are required one by one, the required blend
/// family of four, and the optional ones.
inline constexpr auto kArbGroups = std::to_array<ArbGroup>({
    {&ARBTable::hasShaderObjects, arbEntry("glCreateShaderObjectARB"), 25, "GL_ARB_shader_objects"},
    {&ARBTable::hasFramebufferObject, arbEntry("glGenFramebuffersEXT"), 10, "GL_EXT_framebuffer_object"},
    {&ARBTable::hasMultitexture, arbEntry("glActiveTextureARB"), 2, "GL_ARB_multitexture"},
    {&ARBTable::hasBlendColor, arbEntry("glBlendColorEXT"), 1, "GL_EXT_blend_color"},
    {&ARBTable::hasBlendMinmax, arbEntry("glBlendEquationEXT"), 1, "GL_EXT_blend_minmax"},
    {&ARBTable::hasBlendFuncSeparate, arbEntry("glBlendFuncSeparateEXT"), 1, "GL_EXT_blend_func_separate"},
    {&ARBTable::hasBlendEquationSeparate, arbEntry("glBlendEquationSeparateEXT"), 1, "GL_EXT_blend_equation_separate"},
    {&ARBTable::hasFramebufferBlit, arbEntry("glBlitFramebufferEXT"), 1, "GL_EXT_framebuffer_blit"},
    {&ARBTable::hasFramebufferMultisample, arbEntry("glRenderbufferStorageMultisampleEXT"), 1,
     "GL_EXT_framebuffer_multisample"},
    {&ARBTable::hasOcclusionQuery, arbEntry("glGenQueriesARB"), 5, "GL_ARB_occlusion_query"},
    {&ARBTable::hasTimerQuery, arbEntry("glGetQueryObjecti64vEXT"), 1, "GL_EXT_timer_query"},
    {&ARBTable::hasPixelBufferObject, 0, 0, "GL_ARB_pixel_buffer_object"},
    {&ARBTable::hasVertexBufferObject, arbEntry("glGenBuffersARB"), 8, "GL_ARB_vertex_buffer_object"},
    {&ARBTable::hasVertexProgram, arbEntry("glVertexAttribPointerARB"), 5, "GL_ARB_vertex_program"},
    {&ARBTable::hasATIMeminfo, 0, 0, "GL_ATI_meminfo"},
    {&ARBTable::hasNVXGpuMemoryInfo, 0, 0, "GL_NVX_gpu_memory_info"},
    {&ARBTable::hasDrawInstanced, arbEntry("glDrawArraysInstancedEXT"), 2, "GL_EXT_draw_instanced"},
    {&ARBTable::hasGeometryShader4, arbEntry("glProgramParameteriEXT"), 1, "GL_EXT_geometry_shader4"},
    {&ARBTable::hasAMDGPUAssociation, arbEntry("wglGetGPUIDsAMD"), 2, nullptr},
    {&ARBTable::hasHalfFloatVertex, 0, 0, "GL_ARB_half_float_vertex"},
});
inline constexpr std::size_t kArbSingleGroups = 3;    ///< the first ones: each must load before the next is tried
inline constexpr std::size_t kArbRequiredGroups = 7;  ///< those and the blend family

/// True when `name` is one of the words of a list parted by blanks.
constexpr bool hasExtensionWord(std::string_view list, std::string_view name) {
    for (std::size_t at = list.find(name); at != std::string_view::npos; at = list.find(name, at + 1)) {
        const std::size_t end = at + name.size();
        if ((at == 0 || list[at - 1] == ' ') && (end == list.size() || list[end] == ' ')) {
            return true;
        }
    }
    return false;
}

/// Stores a group's entry points, `resolve(const char*)` for each, and answers whether all are there and
/// `isSupported(const char*)` knows the extension. The first missing one ends it.
template <class Resolve, class IsSupported>
bool loadArbGroup(ARBTable& table, const ArbGroup& group, Resolve&& resolve, IsSupported&& isSupported) {
    for (std::size_t i = group.first; i < group.first + group.count; ++i) {
        table.entries[i] = resolve(kArbEntryNames[i]);
        if (table.entries[i] == nullptr) {
            return false;
        }
    }
    return group.extension == nullptr || isSupported(group.extension);
}

/// Fills the record for the current context. A record that has its first entry counts as filled. False when
/// a required group is missing.
template <class Resolve, class IsSupported>
bool loadArbTable(ARBTable& table, Resolve&& resolve, IsSupported&& isSupported) {
    if (table.entries[0] != nullptr) {
        return true;
    }
    bool blendFamily = true;
    for (std::size_t i = 0; i < kArbGroups.size(); ++i) {
        const ArbGroup& group = kArbGroups[i];
        const bool loaded = loadArbGroup(table, group, resolve, isSupported);
        table.*group.flag = loaded;
        if (i < kArbSingleGroups && !loaded) {
            return false;
        }
        if (i >= kArbSingleGroups && i < kArbRequiredGroups) {
            blendFamily = blendFamily && loaded;
        }
        if (i + 1 == kArbRequiredGroups && !blendFamily) {
            return false;
        }
    }
    return true;
}

}  // namespace lumiset

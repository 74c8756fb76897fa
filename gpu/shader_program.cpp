#include "gpu/shader_program.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/message_box.h"

namespace lumiset {
namespace {

struct ScaleShift {
    double scale;
    double shift;
};

/// How positions map in one direction between the render target and a stage's rectangle. TEX is a position in the
/// rectangle as a fraction of its edges, TEXi the same in texels, NORM a fraction from the first to the last
/// texel's centre, RT a position on the render target as a fraction of its edges.
struct StageMapping {
    double length;  ///< texels from the first to the last texel's centre
    double start;   ///< the first texel's centre in the allocation
    ScaleShift norm2alloc;
    ScaleShift texi2alloc;
    ScaleShift rt2tex;
    ScaleShift rt2texi;
    ScaleShift tex2norm;
    ScaleShift tex2texi;
    ScaleShift texi2norm;
};

StageMapping mapStage(std::int32_t offset, std::int32_t size, std::int32_t textureSize, std::int32_t targetSize,
                      float from, float to) {
    const double allocated = textureSize;
    const double target = targetSize;
    StageMapping map{};
    map.start = offset + static_cast<double>(size) * static_cast<double>(from) + 0.5;
    map.length = static_cast<double>(size) * (static_cast<double>(to) - static_cast<double>(from)) - 1.0;
    map.norm2alloc = {map.length / allocated, map.start / allocated};
    if (target > 1.5) {
        const double spread = target / (target - 1.0);
        map.rt2tex = {spread * map.length / (map.length + 1.0),
                      0.5 / (map.length + 1.0) * (1.0 - map.length / (target - 1.0))};
        map.rt2texi = {spread * map.length, map.length * -0.5 / (target - 1.0)};
    } else {
        map.rt2tex = {0.0, 0.5};
        map.rt2texi = {0.0, 0.0};
    }
    // A picture of one texel has no length to divide by, however large its allocation.
    if (allocated > 1.5 && map.length != 0.0) {
        map.tex2norm = {(map.length + 1.0) / map.length, -0.5 / map.length};
        map.texi2norm = {1.0 / map.length, 0.0};
    } else {
        map.tex2norm = {0.0, 0.5};
        map.texi2norm = {0.0, 0.5};
    }
    map.texi2alloc = {map.texi2norm.scale * map.norm2alloc.scale,
                      map.texi2norm.shift * map.norm2alloc.scale + map.norm2alloc.shift};
    map.tex2texi = {map.length + 1.0, -0.5};
    return map;
}

ScaleShift targetToNorm(std::int32_t size) {
    return size > 1 ? ScaleShift{static_cast<double>(size) / (size - 1), -0.5 / (size - 1)} : ScaleShift{0.0, 0.5};
}

}  // namespace

void ShaderProgram::Attach(GPUResources* resources, IHostProgram* program) noexcept {
    Detach();
    if (program == nullptr || !program->IsValid()) {
        return;
    }
    m_resources = resources;
    m_program = program;
    m_resources->AddRef();
    if (m_regular) {
        listUniforms();
    }
}

void ShaderProgram::listUniforms() noexcept {
    const std::uint32_t count = m_program->GetUniforms(nullptr);
    m_uniforms.reset(new (std::nothrow) UniformRecord[count]{});
    m_uniformSet.reset(new (std::nothrow) bool[count]{});
    if (m_uniforms == nullptr || m_uniformSet == nullptr) {
        return;  // without the list no name counts as known
    }
    m_program->GetUniforms(m_uniforms.get());
    m_uniformCount = count;
}

void ShaderProgram::Detach() noexcept {
    if (m_program != nullptr) {
        m_resources->ReleaseProgram(m_program);
        m_resources->Release();
    }
    m_resources = nullptr;
    m_program = nullptr;
    m_uniformCount = 0;
    m_uniforms.reset();
    m_uniformSet.reset();
}

bool ShaderProgram::Begin(std::int32_t width, std::int32_t height) noexcept {
    if (m_resources == nullptr || m_program == nullptr) {
        return false;
    }
    m_program->Use();
    if (m_regular) {
        std::fill(std::begin(m_stageUsed), std::end(m_stageUsed), false);
        std::fill_n(m_uniformSet.get(), m_uniformCount, false);
    }
    m_rtWidth = std::max(width, 1);
    m_rtHeight = std::max(height, 1);
    if (m_regular) {
        const ScaleShift x = targetToNorm(m_rtWidth);
        const ScaleShift y = targetToNorm(m_rtHeight);
        SetFloat2("vRTSize", static_cast<float>(m_rtWidth), static_cast<float>(m_rtHeight));
        SetFloat2("vRT2NORM_Scale", static_cast<float>(x.scale), static_cast<float>(y.scale));
        SetFloat2("vRT2NORM_Shift", static_cast<float>(x.shift), static_cast<float>(y.shift));
    }
    return true;
}

bool ShaderProgram::HasUniform(const char* name) noexcept {
    if (!m_regular) {
        return true;
    }
    if (name == nullptr) {
        return false;
    }
    for (std::uint32_t i = 0; i < m_uniformCount; ++i) {
        if (std::strncmp(m_uniforms[i].name, name, sizeof m_uniforms[i].name) == 0) {
            m_uniformSet[i] = true;
            return true;
        }
    }
    return false;
}

bool ShaderProgram::SetInt(const char* name, std::int32_t value) noexcept {
    return m_program != nullptr && HasUniform(name) && m_program->SetInt(name, value);
}

bool ShaderProgram::SetFloat(const char* name, float x) noexcept {
    return m_program != nullptr && HasUniform(name) && m_program->SetFloat(name, x);
}

bool ShaderProgram::SetFloat2(const char* name, float x, float y) noexcept {
    return m_program != nullptr && HasUniform(name) && m_program->SetFloat2(name, x, y);
}

bool ShaderProgram::SetFloat3(const char* name, float x, float y, float z) noexcept {
    return m_program != nullptr && HasUniform(name) && m_program->SetFloat3(name, x, y, z);
}

bool ShaderProgram::SetFloat4(const char* name, float x, float y, float z, float w) noexcept {
    return m_program != nullptr && HasUniform(name) && m_program->SetFloat4(name, x, y, z, w);
}

bool ShaderProgram::SetTexture(const char* name, const GPUTexture& texture) noexcept {
    return m_program != nullptr && HasUniform(name) && m_program->SetTexture(name, texture.handle);
}

bool ShaderProgram::SetTextureStage(std::uint32_t stage, const GPUTexture& texture, float left, float top, float right,
                                    float bottom) noexcept {
    if (!m_regular) {
        platform::showMessageBox("Error", "You can't provide texture stage info when use not regular shader");
    }
    if (m_program == nullptr || stage >= kStages || m_stageUsed[stage]) {
        return false;
    }
    m_stageUsed[stage] = true;

    const StageMapping x = mapStage(texture.xOffset, texture.width, texture.textureWidth, m_rtWidth, left, right);
    const StageMapping y = mapStage(texture.yOffset, texture.height, texture.textureHeight, m_rtHeight, top, bottom);

    char name[32];
    std::snprintf(name, sizeof name, "Texture%u_texture", stage);
    SetTexture(name, texture);
    const auto set = [&](const char* member, double valueX, double valueY) {
        std::snprintf(name, sizeof name, "Texture%u.%s", stage, member);
        SetFloat2(name, static_cast<float>(valueX), static_cast<float>(valueY));
    };
    set("vScale", x.norm2alloc.scale, y.norm2alloc.scale);
    set("vShift", x.norm2alloc.shift, y.norm2alloc.shift);
    set("vScaleTEXi", x.texi2alloc.scale, y.texi2alloc.scale);
    set("vShiftTEXi", x.texi2alloc.shift, y.texi2alloc.shift);
    set("vRT2TEX_Scale", x.rt2tex.scale, y.rt2tex.scale);
    set("vRT2TEX_Shift", x.rt2tex.shift, y.rt2tex.shift);
    set("vRT2TEXi_Scale", x.rt2texi.scale, y.rt2texi.scale);
    set("vRT2TEXi_Shift", x.rt2texi.shift, y.rt2texi.shift);
    set("vTEX2NORM_Scale", x.tex2norm.scale, y.tex2norm.scale);
    set("vTEX2NORM_Shift", x.tex2norm.shift, y.tex2norm.shift);
    set("vTEX2TEXi_Scale", x.tex2texi.scale, y.tex2texi.scale);
    set("vTEX2TEXi_Shift", x.tex2texi.shift, y.tex2texi.shift);
    set("vTEXi2NORM_Scale", x.texi2norm.scale, y.texi2norm.scale);
    set("vTEXi2NORM_Shift", x.texi2norm.shift, y.texi2norm.shift);
    set("vNORM2TEXi_Scale", x.length, y.length);
    set("texelSize", 1.0 / x.length, 1.0 / y.length);
    set("roiLeftTop", x.norm2alloc.shift, y.norm2alloc.shift);
    set("roiWH", x.norm2alloc.scale, y.norm2alloc.scale);
    return false;
}

void ShaderProgram::SetVerification(bool first, bool second, bool third) noexcept {
    if (!m_regular) {
        platform::showMessageBox("Error", "Verification possible only with regular shaders");
    }
    m_verifyFlags[0] = !first;
    m_verifyFlags[1] = !second;
    m_verifyFlags[2] = !third;
}

void ShaderProgram::GetVerification(bool& first, bool& second, bool& third) const noexcept {
    first = !m_verifyFlags[0];
    second = !m_verifyFlags[1];
    third = !m_verifyFlags[2];
}

}  // namespace lumiset

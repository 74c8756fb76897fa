#pragma once

// A host that renders nothing: it hands out numbered textures and programs, fails when told to, and notes every call
// in the fake OpenGL's list.

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "host/gpu_host.h"
#include "host/video_effect.h"
#include "platform/gl_proc.h"
#include "tests/gpu/fake_gl.h"
#include "tests/support/host.h"

namespace lumiset::test {

class FakeTexture final : public IHostTexture {
public:
    explicit FakeTexture(std::string name) : m_name(std::move(name)) {}
    [[nodiscard]] const std::string& name() const { return m_name; }
    Result LUMISET_CALL QueryInterface(const Guid&, void**) noexcept override { return kResultNoInterface; }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 2; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    void LUMISET_CALL Reserved3() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved4() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved5() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved6() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved7() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved8() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved9() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved10() noexcept override { ADD_FAILURE(); }
    bool LUMISET_CALL IsValid() noexcept override { return true; }

private:
    std::string m_name;
};

/// So many of the next arrays that may be refused are; see failures_test.cpp.
inline int arraysToRefuse = 0;

class FakeProgram final : public IHostProgram {
public:
    FakeProgram(std::string name, const std::vector<std::string>& uniforms)
        : m_name(std::move(name)), m_uniforms(uniforms) {}
    Result LUMISET_CALL QueryInterface(const Guid&, void**) noexcept override { return kResultNoInterface; }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 2; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    void LUMISET_CALL Use() noexcept override { fakeGL().note("Use", m_name); }
    bool LUMISET_CALL SetInt(const char* name, std::int32_t value) noexcept override { return set(name, value); }
    bool LUMISET_CALL SetFloat(const char* name, float x) noexcept override { return set(name, x); }
    bool LUMISET_CALL SetFloat2(const char* name, float x, float y) noexcept override { return set(name, x, y); }
    bool LUMISET_CALL SetFloat3(const char* name, float x, float y, float z) noexcept override {
        return set(name, x, y, z);
    }
    bool LUMISET_CALL SetFloat4(const char* name, float x, float y, float z, float w) noexcept override {
        return set(name, x, y, z, w);
    }
    bool LUMISET_CALL SetTexture(const char* name, IHostTexture* texture) noexcept override {
        fakeGL().note("Set", name, static_cast<FakeTexture*>(texture)->name());
        return true;
    }
    bool exhaustsMemory = false;  ///< its uniforms cannot be listed
    std::uint32_t LUMISET_CALL GetUniforms(UniformRecord* records) noexcept override {
        arraysToRefuse += exhaustsMemory ? 1 : 0;
        for (std::size_t i = 0; records != nullptr && i < m_uniforms.size(); ++i) {
            m_uniforms[i].copy(records[i].name, sizeof records[i].name - 1);
        }
        return static_cast<std::uint32_t>(m_uniforms.size());
    }
    bool LUMISET_CALL IsValid() noexcept override { return true; }

private:
    template <class... Values>
    bool set(const char* name, Values... values) {
        fakeGL().note("Set", name, static_cast<double>(values)...);
        return true;
    }
    std::string m_name;
    std::vector<std::string> m_uniforms;
};

/// The names that a program's text declares as uniforms, structures and arrays left out.
inline std::vector<std::string> declaredUniforms(const std::string& text) {
    static const std::regex declaration(R"(uniform (?:int|float|vec[234]|sampler2D) (\w+);)");
    std::vector<std::string> names;
    for (std::sregex_iterator each(text.begin(), text.end(), declaration), end; each != end; ++each) {
        names.push_back((*each)[1]);
    }
    return names;
}

class FakeGPUHost final : public IHostGL, public GPUResources {
public:
    static constexpr int kNever = -1;

    FakeGPUHost() {
        loadArbTable(m_table, platform::glExtensionProc, [](const char*) { return true; });
        fakeGL().lookedUp.clear();
    }

    /// How a creation fails: by its answer, by handing out nothing in spite of it, or, of a program, because there is
    /// no memory to list its uniforms.
    enum class Refusal { kFalse, kNothingMade, kNoMemory };

    int failAt = kNever;  ///< creation, counted from 0, that fails
    Refusal refusal = Refusal::kFalse;
    int creations = 0;
    int live = 0;        ///< textures and programs that are out
    int references = 0;  ///< that the module holds
    std::int32_t maxSamples = 32;
    int refuseTargetsFrom = 0;  ///< call of SetRenderTarget, counted from 0
    int refusedTargets = 0;     ///< so many calls from that one on fail
    int targetCalls = 0;
    std::vector<std::string> uniforms;   ///< of every program; those that its text declares where this is empty
    std::vector<std::string> fragments;  ///< texts of the programs made, in order

    /// A texture for a frame; P1 is a program, T1 a texture made for the module.
    [[nodiscard]] GPUTexture texture(const std::string& name, std::int32_t width, std::int32_t height,
                                     std::int32_t format = 0) {
        m_textures.push_back(std::make_unique<FakeTexture>(name));
        return {m_textures.back().get(), format, width, height, width, height, 0, 0, 0};
    }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = iid == IHostGL::kId ? static_cast<IHostGL*>(this) : nullptr;
        references += *out != nullptr ? 1 : 0;
        return *out != nullptr ? kResultOk : kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t LUMISET_CALL Release() noexcept override { return static_cast<std::uint32_t>(--references); }

    [[nodiscard]] bool refusesTarget(int call) const {
        return call >= refuseTargetsFrom && call - refuseTargetsFrom < refusedTargets;
    }
    /// Takes an extension's function out of the table.
    void withoutEntry(std::size_t place) { m_table.entries[place] = nullptr; }

    const ARBTable* LUMISET_CALL GetARBTable() noexcept override { return &m_table; }
    void LUMISET_CALL GetIntegerv(std::uint32_t name, std::int32_t* values, std::uint32_t) noexcept override {
        constexpr std::uint32_t kMaxSamples = 0x8D57;
        *values =
            name == kMaxSamples ? maxSamples : static_cast<std::int32_t>(name);  // every other state is its own name
    }
    void LUMISET_CALL GetFloatv(std::uint32_t, float* values, std::uint32_t count) noexcept override {
        for (std::uint32_t i = 0; i < count; ++i) {
            values[i] = 0.25F * static_cast<float>(i + 1);
        }
    }
    void LUMISET_CALL Enable(std::uint32_t capability) noexcept override { fakeGL().note("Enable", capability); }
    void LUMISET_CALL Disable(std::uint32_t capability) noexcept override { fakeGL().note("Disable", capability); }
    void LUMISET_CALL BlendColor(float r, float g, float b, float a) noexcept override {
        fakeGL().note("BlendColor", r, g, b, a);
    }
    void LUMISET_CALL BlendEquationSeparate(std::uint32_t color, std::uint32_t alpha) noexcept override {
        fakeGL().note("BlendEquation", color, alpha);
    }
    void LUMISET_CALL BlendFuncSeparate(std::uint32_t srcColor, std::uint32_t dstColor, std::uint32_t srcAlpha,
                                        std::uint32_t dstAlpha) noexcept override {
        fakeGL().note("BlendFunc", srcColor, dstColor, srcAlpha, dstAlpha);
    }
    void LUMISET_CALL SetTargetState(std::uint32_t value) noexcept override { fakeGL().note("TargetState", value); }

    bool LUMISET_CALL CreateTexture(IHostGL*, GPUTexture* out, std::uint32_t, std::int32_t width, std::int32_t height,
                                    std::int32_t format, std::uint32_t, std::uint32_t,
                                    std::uint32_t) noexcept override {
        if (creations++ == failAt && refusal != Refusal::kNoMemory) {
            return refusal != Refusal::kFalse;
        }
        *out = texture(std::string("T").append(std::to_string(m_textureCount++)), width, height, format);
        ++live;
        fakeGL().note("CreateTexture", width, height, format);
        return true;
    }
    bool LUMISET_CALL CreateProgram(IHostGL*, IHostProgram** out, const char* vertexText, const char* fragmentText,
                                    const char* geometryText, std::uint32_t vertexSize, std::uint32_t fragmentSize,
                                    std::uint32_t geometrySize, std::uint32_t vertexPlain, std::uint32_t fragmentPlain,
                                    std::uint32_t geometryPlain, std::uint32_t vertexKey, std::uint32_t vertexKind,
                                    std::uint32_t fragmentKey, std::uint32_t fragmentKind, std::uint32_t geometryKey,
                                    std::uint32_t geometryKind) noexcept override {
        EXPECT_EQ(geometryText, nullptr);
        EXPECT_EQ(geometrySize + vertexPlain + fragmentPlain + geometryPlain + vertexKey + vertexKind + fragmentKey +
                      fragmentKind + geometryKey + geometryKind,
                  0U);
        EXPECT_EQ(std::string(vertexText).size(), vertexSize);
        const bool fails = creations++ == failAt;
        if (fails && refusal != Refusal::kNoMemory) {
            *out = nullptr;
            return refusal != Refusal::kFalse;
        }
        fragments.emplace_back(fragmentText, fragmentSize);
        m_programs.push_back(
            std::make_unique<FakeProgram>(std::string("P").append(std::to_string(m_programs.size())),
                                          uniforms.empty() ? declaredUniforms(fragments.back()) : uniforms));
        m_programs.back()->exhaustsMemory = fails;
        *out = m_programs.back().get();
        ++live;
        return true;
    }
    void LUMISET_CALL ReleaseTexture(GPUTexture* out) noexcept override {
        live -= out->handle != nullptr ? 1 : 0;
        out->handle = nullptr;
    }
    void LUMISET_CALL ReleaseProgram(IHostProgram*) noexcept override { --live; }
    bool LUMISET_CALL SetRenderTarget(IHostGL*, const GPUTexture* target, std::uint32_t samples, std::uint32_t,
                                      std::uint32_t) noexcept override {
        fakeGL().note("Target", target != nullptr ? static_cast<FakeTexture*>(target->handle)->name() : "none",
                      samples);
        return !refusesTarget(targetCalls++);
    }

private:
    ARBTable m_table{};
    std::vector<std::unique_ptr<FakeTexture>> m_textures;
    std::vector<std::unique_ptr<FakeProgram>> m_programs;
    int m_textureCount = 0;
};

/// A host of the Outline effect that offers OpenGL.
inline test::ValueHost outlineHost(IHostGL* gpu) {
    test::ValueHost host;
    host.offers = gpu;
    host.values[0].slider = 1.0F;
    host.values[1].slider = 1.0F;
    host.values[2].color = 0x0000CC33U;
    host.values[3].slider = 0.75F;
    return host;
}

}  // namespace lumiset::test

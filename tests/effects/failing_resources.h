#pragma once

#include "host/gpu_host.h"

namespace lumiset::test {

/// Another store of textures and programs that refuses one call, counted from 0: a creation or a target.
class FailingResources final : public GPUResources {
public:
    FailingResources(GPUResources& inner, int failAt) : m_inner(inner), m_failAt(failAt) {}

    [[nodiscard]] bool hasFailed() const { return m_calls > m_failAt; }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        return m_inner.QueryInterface(iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return m_inner.AddRef(); }
    std::uint32_t LUMISET_CALL Release() noexcept override { return m_inner.Release(); }

    bool LUMISET_CALL CreateTexture(IHostGL* gl, GPUTexture* texture, std::uint32_t r0, std::int32_t width,
                                    std::int32_t height, std::int32_t format, std::uint32_t a, std::uint32_t b,
                                    std::uint32_t r1) noexcept override {
        return m_calls++ != m_failAt && m_inner.CreateTexture(gl, texture, r0, width, height, format, a, b, r1);
    }
    bool LUMISET_CALL CreateProgram(IHostGL* gl, IHostProgram** program, const char* vertex, const char* fragment,
                                    const char* geometry, std::uint32_t vertexSize, std::uint32_t fragmentSize,
                                    std::uint32_t geometrySize, std::uint32_t vertexPlain, std::uint32_t fragmentPlain,
                                    std::uint32_t geometryPlain, std::uint32_t vertexKey, std::uint32_t vertexKind,
                                    std::uint32_t fragmentKey, std::uint32_t fragmentKind, std::uint32_t geometryKey,
                                    std::uint32_t geometryKind) noexcept override {
        return m_calls++ != m_failAt &&
               m_inner.CreateProgram(gl, program, vertex, fragment, geometry, vertexSize, fragmentSize, geometrySize,
                                     vertexPlain, fragmentPlain, geometryPlain, vertexKey, vertexKind, fragmentKey,
                                     fragmentKind, geometryKey, geometryKind);
    }
    void LUMISET_CALL ReleaseTexture(GPUTexture* texture) noexcept override { m_inner.ReleaseTexture(texture); }
    void LUMISET_CALL ReleaseProgram(IHostProgram* program) noexcept override { m_inner.ReleaseProgram(program); }
    bool LUMISET_CALL SetRenderTarget(IHostGL* gl, const GPUTexture* texture, std::uint32_t samples, std::uint32_t a,
                                      std::uint32_t b) noexcept override {
        return m_calls++ != m_failAt && m_inner.SetRenderTarget(gl, texture, samples, a, b);
    }

private:
    GPUResources& m_inner;
    int m_failAt;
    int m_calls = 0;
};

}  // namespace lumiset::test

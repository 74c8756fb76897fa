#include "hostkit/gl/gl_host.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "host/pixel_format.h"

namespace lumiset::hostkit {
namespace {

/// Unused textures kept for the next frame.
constexpr std::int64_t kKeptBytes = std::int64_t{512} << 20;

std::unique_ptr<GLContext> makeCurrentContext() {
    std::unique_ptr<GLContext> context = createGLContext();
    context->makeCurrent();
    return context;
}

/// How a frame's rows lie in memory for OpenGL, which walks them forwards.
struct RowLayout {
    std::uint8_t* first;
    std::int64_t stride;
    bool flipped;
};

RowLayout rowsOf(const VideoFrameDesc& frame) {
    auto* data = static_cast<std::uint8_t*>(frame.data);
    const std::int64_t stride = frame.stride;
    if (stride >= 0) {
        return {data, stride, frame.flipped != 0};
    }
    return {data + stride * (frame.height - 1), -stride, frame.flipped == 0};
}

GLenum sampleType(std::uint32_t format) {
    return isFloatFormat(format) ? GL_FLOAT : GL_UNSIGNED_BYTE;
}

}  // namespace

GLHost::GLHost(Report report) : m_report(std::move(report)), m_context(makeCurrentContext()), m_gl(*m_context) {
    const auto* list = reinterpret_cast<const char*>(m_gl.GetString(GL_EXTENSIONS));
    const bool complete =
        list != nullptr && loadArbTable(
                               m_table, [this](const char* name) { return m_context->procAddress(name); },
                               [list](const char* name) { return hasExtensionWord(list, name); });
    if (!complete) {
        throw GLError("The OpenGL of this machine (" + text(GL_RENDERER) + ", " + text(GL_VERSION) +
                      ") has no compatibility profile with shader, framebuffer, multitexture and blend extensions.");
    }
    m_gl.Disable(GL_DITHER);
    checkErrors("starting OpenGL");
}

GLHost::~GLHost() {
    try {
        takeThread();  // what goes now needs the context
    } catch (const GLError&) {
        // Then the driver frees all of it with the context.
    }
}

std::string GLHost::text(GLenum name) const {
    const auto* found = reinterpret_cast<const char*>(m_gl.GetString(name));
    return found != nullptr ? found : "unknown";
}

GLHost::Info GLHost::info() const {
    Info info{text(GL_VENDOR), text(GL_RENDERER), text(GL_VERSION), text(GL_SHADING_LANGUAGE_VERSION), 0};
    m_gl.GetIntegerv(GL_MAX_TEXTURE_SIZE, &info.largestTexture);
    return info;
}

bool GLHost::checkErrors(const char* doing) {
    constexpr int kMostErrors = 16;  // a lost context may report errors for ever
    bool clean = true;
    for (int i = 0; i < kMostErrors; ++i) {
        const GLenum error = m_gl.GetError();
        if (error == GL_NO_ERROR) {
            break;
        }
        clean = false;
        char code[16];
        std::snprintf(code, sizeof code, "0x%04X", error);
        m_report(std::string("OpenGL error ") + code + " while " + doing + ".");
    }
    return clean;
}

GPUTexture GLHost::makeTexture(std::int32_t width, std::int32_t height, std::int32_t format) {
    const bool isFloat = isFloatFormat(format);
    const auto fitting = std::find_if(m_free.begin(), m_free.end(),
                                      [&](const auto& held) { return held->fits(width, height, isFloat); });
    if (fitting != m_free.end()) {
        m_used.push_back(std::move(*fitting));
        m_free.erase(fitting);
    } else {
        m_used.push_back(std::make_unique<GLTexture>(m_gl, width, height, isFloat));
    }
    ++m_liveObjects;
    return {m_used.back().get(), format, width, height, width, height, 0, 0, 0};
}

void GLHost::upload(const VideoFrameDesc& frame, GPUTexture& texture) {
    const RowLayout rows = rowsOf(frame);
    const GLenum type = sampleType(frame.format);
    m_gl.ActiveTexture(GL_TEXTURE0);
    m_gl.BindTexture(GL_TEXTURE_2D, static_cast<GLTexture*>(texture.handle)->name());
    m_gl.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (rows.stride % frame.bytesPerPixel == 0) {
        m_gl.PixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(rows.stride / frame.bytesPerPixel));
        m_gl.TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, frame.width, frame.height, GL_BGRA, type, rows.first);
        m_gl.PixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    } else {
        for (std::int32_t y = 0; y < frame.height; ++y) {
            m_gl.TexSubImage2D(GL_TEXTURE_2D, 0, 0, y, frame.width, 1, GL_BGRA, type, rows.first + rows.stride * y);
        }
    }
    texture.flipped = rows.flipped ? 1 : 0;
}

void GLHost::download(const GPUTexture& texture, const VideoFrameDesc& frame) {
    const RowLayout rows = rowsOf(frame);
    const GLenum type = sampleType(frame.format);
    m_gl.BindFramebuffer(GL_FRAMEBUFFER, static_cast<GLTexture*>(texture.handle)->framebuffer());
    m_gl.PixelStorei(GL_PACK_ALIGNMENT, 1);
    if (rows.stride % frame.bytesPerPixel == 0) {
        m_gl.PixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(rows.stride / frame.bytesPerPixel));
        m_gl.ReadPixels(0, 0, frame.width, frame.height, GL_BGRA, type, rows.first);
        m_gl.PixelStorei(GL_PACK_ROW_LENGTH, 0);
    } else {
        for (std::int32_t y = 0; y < frame.height; ++y) {
            m_gl.ReadPixels(0, y, frame.width, 1, GL_BGRA, type, rows.first + rows.stride * y);
        }
    }
    m_gl.BindFramebuffer(GL_FRAMEBUFFER, 0);
}

Result GLHost::QueryInterface(const Guid& iid, void** out) noexcept {
    if (iid != IUnknown::kId && iid != IHostGL::kId) {
        *out = nullptr;
        return kResultNoInterface;
    }
    AddRef();
    *out = static_cast<IHostGL*>(this);
    return kResultOk;
}

void GLHost::GetIntegerv(std::uint32_t name, std::int32_t* values, std::uint32_t /*count*/) noexcept {
    m_gl.GetIntegerv(name, values);
}

void GLHost::GetFloatv(std::uint32_t name, float* values, std::uint32_t /*count*/) noexcept {
    m_gl.GetFloatv(name, values);
}

bool GLHost::CreateTexture(IHostGL* /*gl*/, GPUTexture* texture, std::uint32_t /*reserved0*/, std::int32_t width,
                           std::int32_t height, std::int32_t format, std::uint32_t /*a*/, std::uint32_t /*b*/,
                           std::uint32_t /*reserved1*/) noexcept {
    *texture = {};
    if (!isHostFormat(format)) {
        return false;
    }
    try {
        *texture = makeTexture(width, height, format);
        return true;
    } catch (const std::exception& error) {
        m_report(error.what());
        return false;
    }
}

void GLHost::ReleaseTexture(GPUTexture* texture) noexcept {
    const auto found =
        std::find_if(m_used.begin(), m_used.end(), [&](const auto& held) { return held.get() == texture->handle; });
    texture->handle = nullptr;
    if (found == m_used.end()) {
        return;
    }
    --m_liveObjects;
    try {
        m_free.push_back(std::move(*found));
    } catch (const std::bad_alloc&) {
        // Then the texture goes with its place in the list.
    }
    m_used.erase(found);
    std::int64_t kept = 0;
    for (const auto& held : m_free) {
        kept += held->bytes();
    }
    while (kept > kKeptBytes) {
        kept -= m_free.front()->bytes();
        m_free.erase(m_free.begin());
    }
}

bool GLHost::CreateProgram(IHostGL* /*gl*/, IHostProgram** program, const char* vertexText, const char* fragmentText,
                           const char* geometryText, std::uint32_t vertexStoredSize, std::uint32_t fragmentStoredSize,
                           std::uint32_t /*geometryStoredSize*/, std::uint32_t vertexPlainSize,
                           std::uint32_t fragmentPlainSize, std::uint32_t /*geometryPlainSize*/,
                           std::uint32_t /*vertexKey*/, std::uint32_t /*vertexKind*/, std::uint32_t /*fragmentKey*/,
                           std::uint32_t /*fragmentKind*/, std::uint32_t /*geometryKey*/,
                           std::uint32_t /*geometryKind*/) noexcept {
    *program = nullptr;
    if (vertexText == nullptr || fragmentText == nullptr || geometryText != nullptr || vertexPlainSize != 0 ||
        fragmentPlainSize != 0) {
        return false;  // only plain texts of two stages are understood
    }
    try {
        std::pair key(std::string(vertexText, vertexStoredSize), std::string(fragmentText, fragmentStoredSize));
        auto found = m_programs.find(key);
        if (found == m_programs.end()) {
            auto made = std::make_unique<GLProgram>(m_gl, key.first, key.second);
            found = m_programs.emplace(std::move(key), std::move(made)).first;
        }
        *program = found->second.get();
        ++m_liveObjects;
        return true;
    } catch (const std::exception& error) {
        m_report(error.what());
        return false;
    }
}

void GLHost::ReleaseProgram(IHostProgram* program) noexcept {
    if (program != nullptr) {
        --m_liveObjects;  // the program itself is kept for the next frame
    }
}

bool GLHost::SetRenderTarget(IHostGL* /*gl*/, const GPUTexture* texture, std::uint32_t samples, std::uint32_t /*a*/,
                             std::uint32_t /*b*/) noexcept {
    if (samples > 0) {
        return false;  // textures have one sample a pixel
    }
    if (texture == nullptr) {
        m_gl.BindFramebuffer(GL_FRAMEBUFFER, 0);
        return true;
    }
    if (texture->handle == nullptr) {
        return false;
    }
    m_gl.BindFramebuffer(GL_FRAMEBUFFER, static_cast<GLTexture*>(texture->handle)->framebuffer());
    m_gl.Viewport(texture->xOffset, texture->yOffset, texture->width, texture->height);
    return true;
}

}  // namespace lumiset::hostkit

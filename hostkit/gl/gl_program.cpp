#include "hostkit/gl/gl_program.h"

#include <cstring>

#include "hostkit/gl/gl_texture.h"

namespace lumiset::hostkit {
namespace {

/// The log of a shader or program.
template <class GetParameter, class GetLog>
std::string readLog(GLuint object, GetParameter getParameter, GetLog getLog) {
    GLint length = 0;
    getParameter(object, GL_INFO_LOG_LENGTH, &length);
    std::string log(static_cast<std::size_t>(length > 0 ? length : 0), '\0');
    GLsizei written = 0;
    getLog(object, length, &written, log.data());
    log.resize(static_cast<std::size_t>(written));
    return log;
}

/// A shader object for as long as it is needed.
class Shader {
public:
    Shader(const GLApi& gl, GLenum type, std::string_view text) : m_gl(gl), m_name(gl.CreateShader(type)) {
        const char* start = text.data();
        const auto length = static_cast<GLint>(text.size());
        m_gl.ShaderSource(m_name, 1, &start, &length);
        m_gl.CompileShader(m_name);
        GLint compiled = GL_FALSE;
        m_gl.GetShaderiv(m_name, GL_COMPILE_STATUS, &compiled);
        if (compiled == GL_FALSE) {
            const std::string log = readLog(m_name, m_gl.GetShaderiv, m_gl.GetShaderInfoLog);
            m_gl.DeleteShader(m_name);
            throw GLError((type == GL_VERTEX_SHADER ? "A vertex" : "A fragment") +
                          (" shader does not compile:\n" + log) + "\nIts text:\n" + std::string(text));
        }
    }
    ~Shader() { m_gl.DeleteShader(m_name); }
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;
    [[nodiscard]] GLuint name() const { return m_name; }

private:
    const GLApi& m_gl;
    GLuint m_name;
};

}  // namespace

GLProgram::GLProgram(const GLApi& gl, std::string_view vertexText, std::string_view fragmentText) : m_gl(gl) {
    const Shader vertex(gl, GL_VERTEX_SHADER, vertexText);
    const Shader fragment(gl, GL_FRAGMENT_SHADER, fragmentText);
    m_name = m_gl.CreateProgram();
    m_gl.AttachShader(m_name, vertex.name());
    m_gl.AttachShader(m_name, fragment.name());
    m_gl.LinkProgram(m_name);
    GLint linked = GL_FALSE;
    m_gl.GetProgramiv(m_name, GL_LINK_STATUS, &linked);
    if (linked == GL_FALSE) {
        const std::string log = readLog(m_name, m_gl.GetProgramiv, m_gl.GetProgramInfoLog);
        m_gl.DeleteProgram(m_name);
        throw GLError("A shader program does not link:\n" + log);
    }

    GLint count = 0;
    m_gl.GetProgramiv(m_name, GL_ACTIVE_UNIFORMS, &count);
    GLenum samplers = 0;
    for (GLint i = 0; i < count; ++i) {
        UniformRecord record{};
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        m_gl.GetActiveUniform(m_name, static_cast<GLuint>(i), sizeof record.name, &length, &size, &type, record.name);
        const GLint location = m_gl.GetUniformLocation(m_name, record.name);
        if (location >= 0) {  // the built-in matrices have none
            m_uniforms.push_back({record.name, location, type == GL_SAMPLER_2D ? samplers++ : 0});
        }
    }
}

GLProgram::~GLProgram() {
    m_gl.DeleteProgram(m_name);
}

Result GLProgram::QueryInterface(const Guid& iid, void** out) noexcept {
    if (iid != IUnknown::kId) {
        *out = nullptr;
        return kResultNoInterface;
    }
    AddRef();
    *out = this;
    return kResultOk;
}

const GLProgram::Uniform* GLProgram::find(const char* name) const noexcept {
    for (const Uniform& uniform : m_uniforms) {
        if (uniform.name == name) {
            return &uniform;
        }
    }
    return nullptr;
}

template <class Set>
bool GLProgram::set(const char* name, Set&& setAt) noexcept {
    const Uniform* uniform = find(name);
    if (uniform == nullptr) {
        return false;
    }
    setAt(uniform->location);
    return true;
}

bool GLProgram::SetInt(const char* name, std::int32_t value) noexcept {
    return set(name, [&](GLint at) { m_gl.Uniform1i(at, value); });
}

bool GLProgram::SetFloat(const char* name, float x) noexcept {
    return set(name, [&](GLint at) { m_gl.Uniform1f(at, x); });
}

bool GLProgram::SetFloat2(const char* name, float x, float y) noexcept {
    return set(name, [&](GLint at) { m_gl.Uniform2f(at, x, y); });
}

bool GLProgram::SetFloat3(const char* name, float x, float y, float z) noexcept {
    return set(name, [&](GLint at) { m_gl.Uniform3f(at, x, y, z); });
}

bool GLProgram::SetFloat4(const char* name, float x, float y, float z, float w) noexcept {
    return set(name, [&](GLint at) { m_gl.Uniform4f(at, x, y, z, w); });
}

bool GLProgram::SetTexture(const char* name, IHostTexture* texture) noexcept {
    const Uniform* uniform = find(name);
    if (uniform == nullptr || texture == nullptr) {
        return false;
    }
    m_gl.ActiveTexture(GL_TEXTURE0 + uniform->unit);
    m_gl.BindTexture(GL_TEXTURE_2D, static_cast<GLTexture*>(texture)->name());
    m_gl.Uniform1i(uniform->location, static_cast<GLint>(uniform->unit));
    return true;
}

std::uint32_t GLProgram::GetUniforms(UniformRecord* records) noexcept {
    if (records != nullptr) {
        for (const Uniform& uniform : m_uniforms) {
            *records = {};
            std::strncpy(records->name, uniform.name.c_str(), sizeof records->name - 1);
            ++records;
        }
    }
    return static_cast<std::uint32_t>(m_uniforms.size());
}

}  // namespace lumiset::hostkit

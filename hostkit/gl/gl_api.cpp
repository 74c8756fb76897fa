#include "hostkit/gl/gl_api.h"

#include <string>

namespace lumiset::hostkit {

GLApi::GLApi(const GLContext& context) {
    const auto resolve = [&context]<class Function>(Function& out, const char* name) {
        out = reinterpret_cast<Function>(context.procAddress(name));
        if (out == nullptr) {
            throw GLError("The OpenGL driver has no " + std::string(name) + ".");
        }
    };
#define LUMISET_GL_RESOLVE(name) resolve(name, "gl" #name);
    LUMISET_GL_FUNCTIONS(LUMISET_GL_RESOLVE)
#undef LUMISET_GL_RESOLVE
}

}  // namespace lumiset::hostkit

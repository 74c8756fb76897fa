#include "gpu/gl_core.h"

#include "platform/gl_proc.h"

namespace lumiset {
namespace {

template <class Function>
bool resolve(Function& out, const char* name) noexcept {
    out = reinterpret_cast<Function>(platform::glCoreProc(name));
    return out != nullptr;
}

}  // namespace

bool GLCore::load() noexcept {
    if (Clear != nullptr) {  // the last one
        return true;
    }
    return resolve(ClearDepth, "glClearDepth") && resolve(DepthFunc, "glDepthFunc") && resolve(Color3f, "glColor3f") &&
           resolve(MatrixMode, "glMatrixMode") && resolve(LoadIdentity, "glLoadIdentity") &&
           resolve(Ortho, "glOrtho") && resolve(Translated, "glTranslated") && resolve(Begin, "glBegin") &&
           resolve(End, "glEnd") && resolve(TexCoord2f, "glTexCoord2f") && resolve(Vertex3f, "glVertex3f") &&
           resolve(ClearColor, "glClearColor") && resolve(Clear, "glClear");
}

}  // namespace lumiset

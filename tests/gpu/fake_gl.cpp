#include "tests/gpu/fake_gl.h"

#include <cstdio>
#include <cstring>

#include "host/arb_table.h"
#include "platform/gl_proc.h"

namespace lumiset::test {
namespace {

FakeGL theGL;

// Each of these functions notes its name and arguments.
constexpr const char* kNames[] = {"ClearDepth",
                                  "DepthFunc",
                                  "Color3f",
                                  "MatrixMode",
                                  "LoadIdentity",
                                  "Ortho",
                                  "Translated",
                                  "Begin",
                                  "End",
                                  "TexCoord2f",
                                  "Vertex3f",
                                  "ClearColor",
                                  "Clear",
                                  "MultiTexCoord2fARB",
                                  "UseProgramObjectARB"};

template <std::size_t Name, class... Args>
void LUMISET_CALL noting(Args... args) {
    theGL.note(kNames[Name], static_cast<double>(args)...);
}

template <class Function>
GLProc proc(Function* function) {
    return reinterpret_cast<GLProc>(function);
}

using Code = std::uint32_t;
const std::map<std::string, GLProc> kFunctions = {
    {"glClearDepth", proc(noting<0, double>)},
    {"glDepthFunc", proc(noting<1, Code>)},
    {"glColor3f", proc(noting<2, float, float, float>)},
    {"glMatrixMode", proc(noting<3, Code>)},
    {"glLoadIdentity", proc(noting<4>)},
    {"glOrtho", proc(noting<5, double, double, double, double, double, double>)},
    {"glTranslated", proc(noting<6, double, double, double>)},
    {"glBegin", proc(noting<7, Code>)},
    {"glEnd", proc(noting<8>)},
    {"glTexCoord2f", proc(noting<9, float, float>)},
    {"glVertex3f", proc(noting<10, float, float, float>)},
    {"glClearColor", proc(noting<11, float, float, float, float>)},
    {"glClear", proc(noting<12, Code>)},
    {"glMultiTexCoord2fARB", proc(noting<13, Code, float, float>)},
    {"glUseProgramObjectARB", proc(noting<14, Code>)},
};

const char* LUMISET_CALL getString(Code name) {
    constexpr Code kExtensions = 0x1F03;
    return theGL.hasContext && name == kExtensions ? theGL.extensions.c_str() : nullptr;
}

void LUMISET_CALL anyFunction() {}

}  // namespace

std::string FakeGL::format(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

FakeGL& fakeGL() {
    return theGL;
}

void resetFakeGL() {
    theGL = FakeGL{};
    theGL.extensions = everyExtension();
}

std::string everyExtension() {
    std::string list = "GL_OES_first";
    for (const ArbGroup& group : kArbGroups) {
        if (group.extension != nullptr) {
            list += std::string(" ") + group.extension;
        }
    }
    return list;
}

}  // namespace lumiset::test

namespace lumiset::platform {

GLProc glCoreProc(const char* name) noexcept {
    if (std::strcmp(name, "glGetString") == 0) {
        return reinterpret_cast<GLProc>(test::getString);
    }
    const auto found = test::kFunctions.find(name);
    return found != test::kFunctions.end() && !test::theGL.missing.contains(name) ? found->second : nullptr;
}

GLProc glExtensionProc(const char* name) noexcept {
    test::theGL.lookedUp.emplace_back(name);
    if (test::theGL.missing.contains(name)) {
        return nullptr;
    }
    const auto found = test::kFunctions.find(name);
    return found != test::kFunctions.end() ? found->second : test::anyFunction;
}

}  // namespace lumiset::platform

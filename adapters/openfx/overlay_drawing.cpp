#include "adapters/openfx/overlay_drawing.h"

#include <memory>
#include <stdexcept>

#include "adapters/openfx/abi/names.h"
#include "host/platform_call.h"
#include "hostkit/dynamic_library.h"

namespace lumiset::openfx {
namespace {

/// The few functions of OpenGL 1.1 that lines need. Hosts that draw by OpenGL have the library loaded; nothing is
/// linked with it, so that the plug-ins load where there is none.
struct Gl {
    static constexpr unsigned kLineLoop = 0x0002;
    static constexpr unsigned kCurrentLineAndEnableBits = 0x00000001 | 0x00000004 | 0x00002000;
    static constexpr unsigned kTexture2D = 0x0DE1;
    static constexpr unsigned kLighting = 0x0B50;

    void(LUMISET_CALL* pushAttrib)(unsigned) = nullptr;
    void(LUMISET_CALL* popAttrib)() = nullptr;
    void(LUMISET_CALL* disable)(unsigned) = nullptr;
    void(LUMISET_CALL* lineWidth)(float) = nullptr;
    void(LUMISET_CALL* color4f)(float, float, float, float) = nullptr;
    void(LUMISET_CALL* begin)(unsigned) = nullptr;
    void(LUMISET_CALL* vertex2d)(double, double) = nullptr;
    void(LUMISET_CALL* end)() = nullptr;

    explicit Gl(const hostkit::DynamicLibrary& library) {
        const auto resolve = [&library]<class Function>(Function& function, const char* name) {
            function = reinterpret_cast<Function>(library.symbol(name));
            if (function == nullptr) {
                throw std::runtime_error(name);
            }
        };
        resolve(pushAttrib, "glPushAttrib");
        resolve(popAttrib, "glPopAttrib");
        resolve(disable, "glDisable");
        resolve(lineWidth, "glLineWidth");
        resolve(color4f, "glColor4f");
        resolve(begin, "glBegin");
        resolve(vertex2d, "glVertex2d");
        resolve(end, "glEnd");
    }

    /// Null where there is no OpenGL. Loaded for good: the host uses it too.
    static const Gl* get() {
        static const Gl* const loaded = []() -> const Gl* {
            try {
                auto library = std::make_unique<hostkit::DynamicLibrary>(hostkit::openGLLibraryName());
                library->keepLoaded();
                return new Gl(*library);
            } catch (const std::runtime_error&) {
                return nullptr;
            }
        }();
        return loaded;
    }
};

}  // namespace

OverlayDrawing::OverlayDrawing(const HostInfo& host, const Properties& inArgs) : m_suite(host.draw) {
    if (m_suite != nullptr) {
        m_context = static_cast<DrawHandle>(inArgs.getPointer(prop::kDrawContext));
    }
    m_hasGl = m_context == nullptr && Gl::get() != nullptr;
}

void OverlayDrawing::loop(std::span<const PointD> points, bool selected) const {
    constexpr ColourF kRim{0.0F, 0.0F, 0.0F, 1.0F};
    constexpr ColourF kLine{1.0F, 1.0F, 1.0F, 1.0F};
    constexpr ColourF kSelected{1.0F, 0.8F, 0.2F, 1.0F};
    drawLoop(points, kRim, 3.0F);
    drawLoop(points, selected ? kSelected : kLine, 1.0F);
}

void OverlayDrawing::drawLoop(std::span<const PointD> points, const ColourF& colour, float width) const {
    if (m_context != nullptr) {
        m_suite->setColour(m_context, &colour);
        m_suite->setLineWidth(m_context, width);
        m_suite->draw(m_context, kDrawLineLoop, points.data(), static_cast<int>(points.size()));
    } else if (const Gl* gl = Gl::get()) {
        gl->pushAttrib(Gl::kCurrentLineAndEnableBits);
        gl->disable(Gl::kTexture2D);
        gl->disable(Gl::kLighting);
        gl->lineWidth(width);
        gl->color4f(colour.r, colour.g, colour.b, colour.a);
        gl->begin(Gl::kLineLoop);
        for (const PointD& point : points) {
            gl->vertex2d(point.x, point.y);
        }
        gl->end();
        gl->popAttrib();
    }
}

}  // namespace lumiset::openfx

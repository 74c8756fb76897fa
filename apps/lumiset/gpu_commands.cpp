#include <fmt/format.h>

#include "apps/lumiset/commands.h"
#include "hostkit/gl/gl_host.h"

namespace lumiset::app {
namespace {

/// What the OpenGL of this machine is and which extensions it has, in lines. Throws `hostkit::GLError`.
std::string gpuInfoText() {
    std::string text;
    const hostkit::GLHost gl([&text](const std::string& message) { text += message + '\n'; });
    const hostkit::GLHost::Info info = gl.info();
    const auto line = [&text](const char* name, const std::string& value) {
        text += fmt::format("{:<20}{}\n", name, value);
    };
    line("Renderer", info.renderer);
    line("Vendor", info.vendor);
    line("OpenGL", info.version);
    line("Shading language", info.shadingLanguage);
    line("Largest side", fmt::format("{} pixels", info.largestTexture));
    text += "\nExtensions that effects need or hosts may use:\n";
    for (std::size_t i = 0; i < kArbGroups.size(); ++i) {
        const ArbGroup& group = kArbGroups[i];
        text += fmt::format("  {:<36}{}{}\n", group.extension != nullptr ? group.extension : "WGL_AMD_gpu_association",
                            gl.extensions().*group.flag ? "yes" : "no", i < kArbRequiredGroups ? "  needed" : "");
    }
    return text;
}

}  // namespace

void addGPUCommands(CLI::App& app, Program& program) {
    CLI::App& gpu = addCommand(app, "gpu", "Tells about rendering in OpenGL");
    gpu.require_subcommand(1);
    CLI::App& info = addCommand(gpu, "info", "The OpenGL of this machine and its extensions");
    program.onChosen(info, [] {
        printText(gpuInfoText());
        return kDone;
    });
}

}  // namespace lumiset::app

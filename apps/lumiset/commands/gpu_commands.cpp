#include <fmt/format.h>

#include <stdexcept>
#include <system_error>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/messages.h"
#include "hostkit/gl/gl_host.h"
#include "platform/crash_reports.h"

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

/// Throws `std::runtime_error` for reports that cannot be read.
std::string reportsText() {
    std::vector<platform::CrashReport> reports;
    try {
        reports = platform::crashReports();
    } catch (const std::system_error& error) {
        throw std::runtime_error(
            std::string("The reports of crashes cannot be read, so all effects stay off OpenGL: ") + error.what() +
            ". \"lumiset gpu reset\" removes them.");
    }
    if (reports.empty()) {
        return "No crash in OpenGL is reported.\n";
    }
    std::string text = fmt::format("{:<36}  {:<22}{:<22}{}\n", "Report", "Effect", "Library", "Host");
    for (const platform::CrashReport& report : reports) {
        text += fmt::format("{:<36}  {:<22}{:<22}{}\n", printable(report.guid), printable(report.effect),
                            printable(report.effectLibrary), printable(report.host));
    }
    return text;
}

/// Throws `std::runtime_error` for reports that stay.
std::string resetText() {
    std::string text = "All reports removed; they could not be read.\n";
    try {
        const std::size_t count = platform::crashReports().size();
        text = count == 0 ? "No crash in OpenGL was reported.\n"
                          : fmt::format("{} report{} removed.\n", count, count == 1 ? "" : "s");
    } catch (const std::system_error&) {  // told by the text
    }
    if (!platform::removeCrashReports()) {
        throw std::runtime_error("The reports cannot be removed: " + platform::crashReportsProblem() + '.');
    }
    return text;
}

}  // namespace

void addGPUCommands(CLI::App& app, Program& program) {
    CLI::App& gpu = addCommand(app, "gpu", "Tells about rendering in OpenGL, and about crashes there");
    gpu.require_subcommand(1);
    CLI::App& info = addCommand(gpu, "info", "The OpenGL of this machine and its extensions");
    program.onChosen(info, [] {
        printText(gpuInfoText());
        return kDone;
    });
    CLI::App& reports = addCommand(gpu, "reports", "Lists the crashes that keep effects off OpenGL",
                                   "Lists the frames in which a program crashed while an effect rendered in OpenGL. "
                                   "As long as such a report stands hosts render the effect on the processor.");
    program.onChosen(reports, [] {
        printText(reportsText());
        return kDone;
    });
    CLI::App& reset = addCommand(gpu, "reset", "Removes the reports of crashes, so that effects try OpenGL again");
    program.onChosen(reset, [] {
        printText(resetText());
        return kDone;
    });
}

}  // namespace lumiset::app

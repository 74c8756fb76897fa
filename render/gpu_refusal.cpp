#include "render/gpu_refusal.h"

#include <fmt/format.h>

#include <system_error>

#include "host/host_services.h"
#include "hostkit/com_ptr.h"
#include "platform/crash_reports.h"

namespace lumiset::render {

std::string refusalInOpenGL(IEffectLibrary& library, const std::string& effect) {
    if (hostkit::ComPtr<IHostServices>::adopt(library.GetHostServices()).get()->GetForcedCpu()) {
        return "The option \"Forced CPU\" keeps all effects off OpenGL.";
    }
    try {
        for (const platform::CrashReport& report : platform::crashReports()) {
            if (report.effectLibrary == library.GetLibraryName() && report.effect == effect) {
                return fmt::format(
                    "The effect \"{}\" stays off OpenGL since \"{}\" crashed while it rendered there; "
                    "\"lumiset gpu reset\" lets it try again.",
                    effect, report.host);
            }
        }
    } catch (const std::system_error&) {
        return "All effects stay off OpenGL, for the reports of crashes cannot be read; \"lumiset gpu reset\" removes "
               "them.";
    }
    return fmt::format("The effect \"{}\" does not render in OpenGL here.", effect);
}

bool crashesAreReported() {
    try {
        return !platform::crashReports().empty();
    } catch (const std::system_error&) {
        return true;
    }
}

bool letEffectsTryOpenGL() {
    return platform::removeCrashReports();
}

}  // namespace lumiset::render

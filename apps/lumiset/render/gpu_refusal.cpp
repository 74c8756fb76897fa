#include "apps/lumiset/render/gpu_refusal.h"

#include <fmt/format.h>

#include <system_error>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/user_options.h"
#include "platform/crash_reports.h"

namespace lumiset::app {

std::string refusalInOpenGL(IEffectLibrary& library, const std::string& effect) {
    if (servicesOf(library).get()->GetForcedCpu()) {
        return "The option \"Forced CPU\" keeps all effects off OpenGL.";
    }
    try {
        for (const platform::CrashReport& report : platform::crashReports()) {
            if (report.effectLibrary == library.GetLibraryName() && report.effect == effect) {
                return fmt::format(
                    "The effect \"{}\" stays off OpenGL since \"{}\" crashed while it rendered there; "
                    "\"lumiset gpu reset\" lets it try again.",
                    effect, printable(report.host));
            }
        }
    } catch (const std::system_error&) {
        return "All effects stay off OpenGL, for the reports of crashes cannot be read; \"lumiset gpu reset\" removes "
               "them.";
    }
    return fmt::format("The effect \"{}\" does not render in OpenGL here.", effect);
}

}  // namespace lumiset::app

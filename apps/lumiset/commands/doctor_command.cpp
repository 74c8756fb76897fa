#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/commands/doctor.h"

namespace lumiset::app {
namespace {

bool usable(const std::vector<Finding>& findings) {
    return std::none_of(findings.begin(), findings.end(), [](const Finding& each) { return each.fatal; });
}

std::string reportText(const std::vector<Finding>& findings) {
    std::string text;
    for (const Finding& each : findings) {
        text += fmt::format("{:<16}{}\n", each.name, each.found);
        if (!each.remedy.empty()) {
            text += fmt::format("{:<16}! {}\n", "", each.remedy);
        }
    }
    return text + (usable(findings) ? "\nEffects can be rendered.\n" : "\nEffects cannot be rendered.\n");
}

std::string reportJson(const std::vector<Finding>& findings) {
    nlohmann::ordered_json json{{"usable", usable(findings)}, {"findings", nlohmann::ordered_json::array()}};
    for (const Finding& each : findings) {
        json["findings"].push_back({{"name", each.name}, {"found", each.found}, {"remedy", each.remedy}});
    }
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

}  // namespace

void addDoctorCommand(CLI::App& app, Program& program) {
    CLI::App& command =
        addCommand(app, "doctor", "Tells what of an installation is there",
                   "Tells what of an installation is there, and what to do about what is not.\n\n"
                   "Looks for the module, its monitor, OpenGL, the folders of frei0r plug-ins and the programs that "
                   "use them.\nThe exit status is 0 when effects can be rendered.\n");
    const auto json = std::make_shared<bool>(false);
    command.add_flag("--json", *json, "as JSON");
    program.onChosen(command, [json, &program] {
        const std::vector<Finding> findings = examine(program);
        printText(*json ? reportJson(findings) : reportText(findings));
        return usable(findings) ? kDone : kFailed;
    });
}

}  // namespace lumiset::app

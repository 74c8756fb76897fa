#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/usage_error.h"
#include "apps/lumiset/validate/run.h"
#include "hostkit/names.h"

namespace lumiset::app {
namespace {

using validate::Check;
using validate::Subject;
using validate::Verdict;

struct Request {
    Subject subject;
    std::vector<std::string> names;
    bool json = false;
    bool inThisProcess = false;
};

/// All, or those that were asked for. Throws `UsageError`.
std::vector<const Check*> chosenChecks(const std::vector<std::string>& names) {
    std::vector<const Check*> all = validate::allChecks();
    if (names.empty()) {
        return all;
    }
    std::vector<std::string> known;
    known.reserve(all.size());
    for (const Check* check : all) {
        known.emplace_back(check->name);
    }
    std::vector<const Check*> chosen;
    for (const std::string& name : names) {
        const auto found = std::find(known.begin(), known.end(), name);
        if (found == known.end()) {
            throw UsageError("There is no check \"" + name + "\"." + hostkit::didYouMean(name, known));
        }
        chosen.push_back(all[static_cast<std::size_t>(found - known.begin())]);
    }
    return chosen;
}

std::string jsonOf(const Request& request, const std::vector<Verdict>& verdicts) {
    nlohmann::ordered_json json{{"module", request.subject.module.string()},
                                {"seed", request.subject.seed},
                                {"holds", validate::allHold(verdicts)},
                                {"checks", nlohmann::ordered_json::array()}};
    for (const Verdict& each : verdicts) {
        json["checks"].push_back({{"name", each.check->name},
                                  {"sentence", each.check->sentence},
                                  {"holds", each.finding.empty()},
                                  {"finding", each.finding}});
    }
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

int validateModule(Request request) {
    const std::vector<const Check*> checks = chosenChecks(request.names);
    if (request.inThisProcess) {
        const std::string finding = validate::findingHere(*checks.front(), request.subject);
        printText(finding);
        return finding.empty() ? kDone : kFailed;
    }
    request.subject.module = std::filesystem::absolute(request.subject.module);
    const std::vector<Verdict> verdicts =
        validate::runChecks(checks, request.subject, {"validate"}, [&](const Verdict& verdict) {
            if (!request.json) {
                printText(validate::lineOf(verdict));
            }
        });
    printText(request.json ? jsonOf(request, verdicts) : validate::summaryOf(verdicts, request.subject));
    return validate::allHold(verdicts) ? kDone : kFailed;
}

std::string introduction() {
    std::string text =
        "Holds any module of effects against what hosts rely on.\n\n"
        "Each check runs in a process of its own, so a crash is a finding like any other. The exit status is 0 when "
        "all "
        "hold and 1 when one is broken. The checks:\n\n";
    for (const Check* check : validate::allChecks()) {
        text += fmt::format("{}: {}\n", check->name, check->sentence);
    }
    return text;
}

}  // namespace

void addValidateCommand(CLI::App& app, Program& program) {
    CLI::App& command =
        addCommand(app, "validate", "Holds a module of effects against what hosts rely on", introduction());
    const auto request = std::make_shared<Request>();
    command.add_option("MODULE", request->subject.module, "the module's file")->required()->check(CLI::ExistingFile);
    command.add_option("--check", request->names, "only this check; may be given several times")
        ->option_text("NAME")
        ->allow_extra_args(false);
    command.add_option("--seed", request->subject.seed, "what frames and damage are drawn from (1)")->option_text("N");
    command.add_flag("--json", request->json, "as JSON");
    command.add_flag("--in-this-process", request->inThisProcess)->group("");
    program.onChosen(command, [request] { return validateModule(*request); });
}

}  // namespace lumiset::app

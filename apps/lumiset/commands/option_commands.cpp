#include <fmt/format.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/usage_error.h"
#include "apps/lumiset/user_options.h"
#include "hostkit/names.h"
#include "platform/settings_store.h"

namespace lumiset::app {
namespace {

const UserOption& optionNamed(const std::string& name) {
    std::vector<std::string> names;
    for (const UserOption& option : kUserOptions) {
        if (hostkit::equalIgnoringCase(option.name, name)) {
            return option;
        }
        names.emplace_back(option.name);
    }
    throw UsageError("There is no option \"" + name + "\"." + hostkit::didYouMean(name, names));
}

/// A line each.
std::string optionsText(IEffectLibrary& library) {
    const auto services = servicesOf(library);
    std::string text;
    for (const UserOption& option : kUserOptions) {
        text +=
            fmt::format("{:<23}{:<5}{}\n", option.name, (services.get()->*option.get)() ? "yes" : "no", option.meaning);
    }
    return text;
}

/// `name` in any case of letters.
void setOption(IEffectLibrary& library, const std::string& name, const std::string& value) {
    const UserOption& option = optionNamed(name);
    const bool yes = hostkit::equalIgnoringCase(value, "yes");
    if (!yes && !hostkit::equalIgnoringCase(value, "no")) {
        throw UsageError(std::string("\"") + option.name + "\" is yes or no, not \"" + value + "\".");
    }
    const auto services = servicesOf(library);
    if (!(services.get()->*option.set)(yes)) {
        const std::string reason = platform::storingProblem("Common");
        throw std::runtime_error(
            fmt::format("The option \"{}\" cannot be stored{}{}.", option.name, reason.empty() ? "" : ": ", reason));
    }
}

}  // namespace

void addOptionsCommand(CLI::App& app, Program& program) {
    struct Request {
        std::string name;  // empty: all are listed
        std::string value;
    };
    CLI::App& command = addCommand(app, "options", "Lists the user's options, or sets one");
    const auto request = std::make_shared<Request>();
    CLI::Option* name = command.add_option("NAME", request->name, "the option to set");
    name->needs(command.add_option("VALUE", request->value, "yes or no"));
    program.onChosen(command, [request, &program] {
        if (request->name.empty()) {
            printText(optionsText(program.effectLibrary()));
        } else {
            setOption(program.effectLibrary(), request->name, request->value);
        }
        return kDone;
    });
}

}  // namespace lumiset::app

#include <memory>
#include <string>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/commands/show.h"

namespace lumiset::app {

void addListCommand(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "list", "Lists the effects");
    const auto json = std::make_shared<bool>(false);
    command.add_flag("--json", *json, "as JSON");
    program.onChosen(command, [json, &program] {
        printText(*json ? listJson(program.catalogue()) : listText(program.catalogue()));
        return kDone;
    });
}

void addShowCommand(CLI::App& app, Program& program) {
    struct Request {
        std::string effect;
        bool json = false;
    };
    CLI::App& command = addCommand(app, "show", "Shows an effect's parameters and presets");
    const auto request = std::make_shared<Request>();
    command.add_option("EFFECT", request->effect, "name of the effect")->required();
    command.add_flag("--json", request->json, "as JSON");
    program.onChosen(command, [request, &program] {
        const hostkit::EffectDescription& effect = program.catalogue().effect(request->effect);
        printText(request->json ? showJson(effect) : showText(effect));
        return kDone;
    });
}

}  // namespace lumiset::app

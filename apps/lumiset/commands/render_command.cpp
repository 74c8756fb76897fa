#include <memory>

#include "apps/lumiset/cluster/part_request.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/output_guard.h"
#include "apps/lumiset/render/render_options.h"

namespace lumiset::app {
namespace {

struct RenderCommand {
    explicit RenderCommand(CLI::App& app) : options(app), guard(app) {
        app.add_option("--part", part, "render one of N parts, for \"lumiset join\"; a part that is finished is left")
            ->option_text("K/N");
    }
    RenderOptions options;
    OutputGuard guard;
    std::string part;
};

}  // namespace

void addRenderCommand(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "render", "Renders images or video through effects", help::kRender);
    command.footer(help::kRenderFooter);
    const auto given = std::make_shared<RenderCommand>(command);
    program.onChosen(command, [given, &program] {
        RenderRequest request = given->options.request();
        const std::vector<hostkit::EffectStage> chain =
            buildChain(program.effectLibrary(), program.catalogue(), request.effects, request.job.input);
        std::vector<std::string> inputs = filesRead(program.catalogue(), request.effects);
        inputs.push_back(request.job.input);
        if (given->part.empty()) {
            given->guard.check(request.job.output, inputs);
        } else if (!takePart(program, request, given->part, inputs, given->guard)) {
            return kDone;
        }
        render(request, program.effectLibrary(), chain);
        return kDone;
    });
}

}  // namespace lumiset::app

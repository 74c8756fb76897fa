#include <fmt/format.h>

#include <memory>
#include <optional>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/interruption.h"
#include "apps/lumiset/render/output_guard.h"
#include "apps/lumiset/render/progress.h"
#include "media/join.h"

namespace lumiset::app {
namespace {

struct JoinCommand {
    explicit JoinCommand(CLI::App& app) : guard(app) {
        app.add_option("OUTPUT", request.output, "the film, as the parts were rendered for")->required();
        app.add_option("PART", request.parts, "the files of all of its parts, in any order")->required();
        app.add_option("--input,-i", request.input, "where the film is that the parts were made of [where it was]")
            ->option_text("FILE");
        app.add_flag("--quiet,-q", quiet, "no progress and no summary");
    }
    media::JoinRequest request;
    OutputGuard guard;
    bool quiet = false;
};

int joinParts(const JoinCommand& given) {
    const std::string& output = given.request.output;
    media::Join join(given.request);
    std::vector<std::string> inputs = given.request.parts;
    inputs.push_back(join.input());
    if (join.isFile()) {
        given.guard.check(output, inputs);
    }
    watchForInterruption();
    Progress progress(given.quiet, join.pictures());
    const bool whole = join.write([&](std::int64_t pictures) {
        progress.show(pictures);
        return interruptingSignal() == 0;
    });
    if (!whole) {
        progress.clear();
        endInterrupted(interruptingSignal(), output);
    }
    progress.finish(join.pictures(), output);
    for (const std::string& note : join.notes()) {
        tell(given.quiet ? "" : note + '\n');
    }
    return kDone;
}

}  // namespace

void addJoinCommand(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "join", "Puts the parts of a film together", help::kJoin);
    const auto given = std::make_shared<JoinCommand>(command);
    program.onChosen(command, [given] { return joinParts(*given); });
}

}  // namespace lumiset::app

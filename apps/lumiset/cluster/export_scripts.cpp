#include <filesystem>
#include <memory>

#include "apps/lumiset/cluster/command_words.h"
#include "apps/lumiset/cluster/scripts.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/render/render_options.h"
#include "apps/lumiset/usage_error.h"
#include "media/part.h"

namespace lumiset::app {
namespace {

struct ExportRequest {
    explicit ExportRequest(CLI::App& command) : render(command) {
        command.add_option("--parts,-n", plan.parts, "how many parts to render the film in")
            ->required()
            ->check(CLI::Range(1, 9999))
            ->option_text("N");
        command.add_option("--retries", plan.retries, "how often a part that failed is tried again [2]")
            ->check(CLI::Range(0, 1000))
            ->option_text("R");
        command.add_flag("--overwrite,-y", plan.overwrite, "the film replaces what stands there in the end");
    }
    RenderOptions render;
    FilmPlan plan;
};

/// The plan, once the arguments have been read and found to be a film that can be cut.
FilmPlan planOf(Program& program, const CLI::App& command, const ExportRequest& given) {
    const RenderRequest request = given.render.request();
    const render::FileJob& job = request.job;
    if (job.input == "-") {
        throw UsageError("Standard input cannot be cut into parts.");
    }
    (void)media::joinableKind(job.output);  // throws
    // What is wrong with the effects and the input is better told now than by every part.
    (void)buildChain(program.effectLibrary(), program.catalogue(), request.effects, job.input);
    const std::unique_ptr<media::Source> source = media::openSource(job.input);
    if (!(source->format().durationSeconds > 0.0)) {
        throw UsageError("\"" + job.input + "\" does not tell how long it is, so it cannot be cut into parts.");
    }
    FilmPlan plan = given.plan;
    plan.program = std::filesystem::read_symlink("/proc/self/exe").string();
    plan.folder = std::filesystem::current_path().string();
    plan.input = job.input;
    plan.output = job.output;
    plan.threads = job.threads;
    if (!program.modulePath.empty()) {
        plan.words = {"--module=" + std::filesystem::absolute(program.modulePath).string()};
    }
    plan.words.emplace_back("render");
    for (std::string& word : optionWords(command, {"parts", "retries", "partition", "jobs", "threads", "overwrite"})) {
        plan.words.push_back(std::move(word));
    }
    return plan;
}

}  // namespace

void addScriptCommands(CLI::App& exports, Program& program) {
    CLI::App& slurm =
        addCommand(exports, "slurm", "Prints a script that renders a film in parts by Slurm", help::kExportSlurm);
    const auto slurmGiven = std::make_shared<ExportRequest>(slurm);
    slurm.add_option("--partition", slurmGiven->plan.partition, "partition of the cluster [its usual one]")
        ->option_text("NAME");
    program.onChosen(slurm, [slurmGiven, &slurm, &program] {
        printText(slurmScript(planOf(program, slurm, *slurmGiven)));
        return kDone;
    });

    CLI::App& parallel = addCommand(exports, "parallel", "Prints a script that renders a film in parts by GNU parallel",
                                    help::kExportParallel);
    const auto parallelGiven = std::make_shared<ExportRequest>(parallel);
    parallel.add_option("--jobs", parallelGiven->plan.jobs, "parts at the same time [by the machine's cores]")
        ->check(CLI::Range(1, 1024))
        ->option_text("N");
    program.onChosen(parallel, [parallelGiven, &parallel, &program] {
        printText(parallelScript(planOf(program, parallel, *parallelGiven)));
        return kDone;
    });
}

}  // namespace lumiset::app

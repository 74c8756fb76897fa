#include "apps/lumiset/cluster/scripts.h"

#include <string_view>
#include <utility>

#include "hostkit/names.h"
#include "media/part.h"

namespace lumiset::app {
namespace {

using hostkit::shellWord;
using Values = std::vector<std::pair<std::string_view, std::string>>;

/// What both scripts begin with. Names of any kind stand in quotes of their own, and nothing of them is read twice: the
/// engines are given this very file to run, never a command as text.
constexpr std::string_view kCommon = R"(set -euo pipefail
script=$(realpath -- "${BASH_SOURCE[0]}")
cd -- @FOLDER@

render_part() {
    @PROGRAM@@WORDS@ --part "$1/@COUNT@" --threads @THREADS@ --@FILES@
}

join_parts() {
    @PROGRAM@ join@OVERWRITE@ -- @OUTPUT@@PARTS@
}

# Better told before hours of work than behind them.
look_for_film() {
    if [ -z '@OVERWRITE@' ] && [ -e @OUTPUT@ ]; then
        printf '%s exists; --overwrite replaces it.\n' @OUTPUT@ >&2
        exit 1
    fi
}

)";

constexpr std::string_view kSlurm = R"(case "${1:-submit}" in
submit)
    look_for_film
    parts=$(sbatch --parsable --job-name=lumiset-part --array=1-@COUNT@@CORES@@PARTITION@ --requeue \
        --open-mode=append --output=lumiset-%A-%a.log -- "$script" part)
    parts=${parts%%;*}
    film=$(sbatch --parsable --job-name=lumiset-join@PARTITION@ --dependency=afterok:"$parts" \
        --kill-on-invalid-dep=yes --open-mode=append --output=lumiset-%j.log -- "$script" join)
    echo "$parts ${film%%;*}"
    ;;
part)
    status=0
    render_part "$SLURM_ARRAY_TASK_ID" || status=$?
    # A command that cannot be understood fails anywhere; anything else may do on another machine.
    if [ "$status" -ne 0 ] && [ "$status" -ne 2 ] && [ "${SLURM_RESTART_COUNT:-0}" -lt @RETRIES@ ]; then
        scontrol requeue "${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID" && sleep 60
    fi
    exit "$status"
    ;;
join)
    join_parts
    ;;
esac
)";

constexpr std::string_view kParallel = R"(if [ "${1:-}" = part ]; then
    render_part "$2"
    exit
fi
look_for_film
# It fails where a part did in each of its attempts.
seq @COUNT@ | parallel --quote --jobs "@JOBS@" --retries @ATTEMPTS@ --line-buffer --tagstring 'part {}' \
    bash -- "$script" part
join_parts
)";

/// The text with what stands for its marks, which is not searched for marks again.
std::string filled(std::string_view text, const Values& values) {
    std::string out;
    while (!text.empty()) {
        const std::size_t mark = text.find('@');
        const std::size_t end = mark == std::string_view::npos ? mark : text.find('@', mark + 1);
        out += text.substr(0, mark);
        if (end == std::string_view::npos) {
            break;
        }
        for (const auto& [name, value] : values) {
            out += name == text.substr(mark + 1, end - mark - 1) ? value : "";
        }
        text.remove_prefix(end + 1);
    }
    return out;
}

std::string line(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += ' ' + shellWord(word);
    }
    return text;
}

std::string script(const char* about, const FilmPlan& plan, std::string_view engine, Values values) {
    std::vector<std::string> parts;
    for (int number = 1; number <= plan.parts; ++number) {
        parts.push_back(media::partFile(plan.output, number, plan.parts));
    }
    values.insert(values.end(), {{"FOLDER", shellWord(plan.folder)},
                                 {"PROGRAM", shellWord(plan.program)},
                                 {"WORDS", line(plan.words)},
                                 {"FILES", line({plan.input, plan.output})},
                                 {"OUTPUT", shellWord(plan.output)},
                                 {"OVERWRITE", plan.overwrite ? " --overwrite" : ""},
                                 {"PARTS", line(parts)},
                                 {"COUNT", std::to_string(plan.parts)}});
    return std::string(about) + filled(kCommon, values) + filled(engine, values);
}

}  // namespace

std::string slurmScript(const FilmPlan& plan) {
    constexpr const char* kAbout =
        R"(#!/bin/bash
# Renders a film in parts by jobs of Slurm, and joins them when all are there: bash THIS_FILE
# Run once more it renders what is missing alone. Limits, accounts and the like are taken from sbatch's environment:
# SBATCH_TIMELIMIT=2:00:00 SBATCH_ACCOUNT=film bash THIS_FILE
)";
    return script(kAbout, plan, kSlurm,
                  {{"THREADS", "\"${SLURM_CPUS_PER_TASK:-1}\""},
                   {"CORES", plan.threads > 0 ? " --cpus-per-task=" + std::to_string(plan.threads) : ""},
                   {"PARTITION", plan.partition.empty() ? "" : ' ' + shellWord("--partition=" + plan.partition)},
                   {"RETRIES", std::to_string(plan.retries)}});
}

std::string parallelScript(const FilmPlan& plan) {
    constexpr const char* kAbout =
        R"(#!/bin/bash
# Renders a film in parts by GNU parallel, and joins them when all are there: bash THIS_FILE
# Run once more it renders what is missing alone.
)";
    const std::string threads = std::to_string(plan.threads > 0 ? plan.threads : 2);
    const std::string byCores = "$(($(nproc) < " + threads + " ? 1 : $(nproc) / " + threads + "))";
    return script(kAbout, plan, kParallel,
                  {{"THREADS", threads},
                   {"JOBS", plan.jobs > 0 ? std::to_string(plan.jobs) : byCores},
                   {"ATTEMPTS", std::to_string(plan.retries + 1)}});
}

}  // namespace lumiset::app

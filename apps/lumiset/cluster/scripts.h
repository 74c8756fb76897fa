#pragma once

#include <string>
#include <vector>

namespace lumiset::app {

/// A film to be rendered in parts by other processes, each part by the same command.
struct FilmPlan {
    std::string program;             ///< this one, absolute
    std::string folder;              ///< that names are taken from
    std::vector<std::string> words;  ///< the arguments behind `program`, without files, --part and --threads
    std::string input;
    std::string output;
    int parts = 1;
    bool overwrite = false;  ///< the film may replace what stands there
    int retries = 2;         ///< of a part that fails
    int threads = 0;         ///< of a part; 0: as the engine gives them
    std::string partition;   ///< of Slurm; empty: its usual one
    int jobs = 0;            ///< parts at the same time; 0: by the machine's cores
};

/// A script that renders and joins the film by jobs of Slurm when it is run with bash, again only what is missing.
[[nodiscard]] std::string slurmScript(const FilmPlan& plan);

/// The same with GNU parallel, on one machine.
[[nodiscard]] std::string parallelScript(const FilmPlan& plan);

}  // namespace lumiset::app

#pragma once

#include <cstdint>
#include <string>

namespace lumiset::bench {

struct ThreadsOptions {
    std::uint32_t threads;
    std::string filter;  ///< regular expression for the names
    bool ultraHD;        ///< 3840 x 2160 instead of 1920 x 1080
    int repetitions;
    bool markdown;
};

/// Times every effect on one thread and on several, in turn, and prints both with the gain: the best of the
/// repetitions, in time of the clock on the wall. False when an effect refuses or none has such a name.
bool measureThreads(const ThreadsOptions& options);

}  // namespace lumiset::bench

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

/// Times every effect, and a memcpy, on one thread and on several, in turn, and prints both with the gain: the best of
/// the repetitions, in time of the clock on the wall. Beside it stands what bounds the gain: that of as many whole
/// frames at the same time, the share of one thread's time that others cannot help with, what cutting costs, the
/// memcpys of a frame that the effect takes, and the most that the frame's parts allow on more threads, however fast
/// their memory is. False when an effect refuses or none has such a name.
bool measureThreads(const ThreadsOptions& options);

}  // namespace lumiset::bench

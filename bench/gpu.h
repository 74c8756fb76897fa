#pragma once

#include <string>

namespace lumiset::bench {

struct GPUOptions {
    std::string filter;  ///< regular expression for the names
    int repetitions;
    bool markdown;
};

/// Times every effect's OpenGL renderer, on frames that are textures already and on frames in memory, 1920 x 1080 and
/// 3840 x 2160 of 8 bits, and prints both with the names of driver and card: the best of the repetitions, in time of
/// the clock on the wall until the card has done its work. False when an effect refuses or none has such a name. Throws
/// `hostkit::GLError` where there is no OpenGL.
bool measureGPU(const GPUOptions& options);

}  // namespace lumiset::bench

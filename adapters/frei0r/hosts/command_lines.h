#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/frei0r/hosts/settings.h"

namespace lumiset::frei0r {

/// What a command line reads and writes.
struct Clip {
    std::string input;
    std::string output;
    int width = 0;  ///< 0: nothing is known about the pictures, and what follows says nothing
    int height = 0;
    double pixelAspect = 1.0;
    hostkit::FieldOrder fields = hostkit::FieldOrder::kProgressive;
    bool alpha = false;  ///< the results have transparent parts
    int matrix = 1;      ///< from R'G'B' to Y'CbCr, as ITU-T H.273 numbers them; of the output where the input is RGB
    double sequenceRate = 0.0;  ///< pictures a second of a numbered sequence; 0: the input is none
    int firstNumber = 0;        ///< of a numbered sequence
};

/// Another program cannot be given this name; the text is a whole sentence.
class NameError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A line for a POSIX shell that renders a clip through these plug-ins in turn, as ffmpeg 5.1 and melt 7 need it.
/// Parameters that are at their default are left out where the program allows it. Throws `NameError`.
[[nodiscard]] std::string ffmpegCommand(const std::vector<Settings>& chain, const Clip& clip);
[[nodiscard]] std::string meltCommand(const std::vector<Settings>& chain, const Clip& clip);

}  // namespace lumiset::frei0r

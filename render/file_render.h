#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/gl/gpu_frames.h"
#include "hostkit/renderer.h"
#include "media/media.h"

namespace lumiset::render {

/// One of the parts that a clip is rendered in, to be joined.
struct FilmPart {
    int number = 1;
    int count = 1;
    std::vector<std::pair<std::string, std::string>> traits;  ///< as in media::PartRecord
    bool replace = false;  ///< pictures of a sequence that stand there, as an attempt before may have left them
};

/// A clip to render from file to file, and how.
struct FileJob {
    std::string input;
    std::string output;
    std::optional<media::Depth> depth;  ///< of the samples that effects work in; none: the input's
    int bits = 0;  ///< a sample that are written; 0: the input's, or 10 and more of asked-for floats
    bool argb = false;
    int threads = 0;  ///< 0: one a core
    double startSeconds = 0.0;
    double durationSeconds = std::numeric_limits<double>::infinity();
    std::string codec;               ///< empty: the usual one for the extension
    int quality = -1;                ///< -1: the encoder's usual one
    int width = 0;                   ///< of the pictures that are written, rendered at the input's size;
    int height = 0;                  ///< as in media::resized; both 0: the input's
    media::Rational frameRate;       ///< pictures a second of an input image sequence; 0: the usual rate
    bool alpha = false;              ///< the output has transparency whatever the first picture is like
    bool gpu = false;                ///< in OpenGL where that is possible
    std::optional<FilmPart> part{};  ///< none: all of it; a part is written to the file that media::partFile names
};

/// Who watches a render. All but what OpenGL tells is called on the thread of `renderFile`; none may be empty.
struct FileWatcher {
    std::function<void(std::int64_t expectedFrames)> begun;  ///< 0: not known; the output can be written
    /// Ten times a second or more often. As long as it does not return nothing further is written.
    std::function<void(std::int64_t framesWritten)> progress;
    std::function<bool()> wantsStop;  ///< asked as often
    std::function<void()> stopped;    ///< the unfinished output is gone; threads may still be at work
    hostkit::GPUFrames::Listener gpu;
    std::function<void(const std::string& sentence)> noGPU;  ///< the processor renders instead
};

struct FileResult {
    std::int64_t frames = 0;
    std::vector<std::string> notes;  ///< what of the input is not in the output, a sentence each
};

/// Renders the input through the chain to the output, which appears when it is complete. Nothing when it was stopped.
/// Throws media::MediaError, hostkit::RenderError, std::bad_alloc.
std::optional<FileResult> renderFile(const FileJob& job, const std::vector<hostkit::EffectStage>& chain,
                                     const FileWatcher& watcher);

/// How long a clip is for keys that stand in parts of it, in seconds, a still picture 1; 0 where it does not tell.
[[nodiscard]] double clipSeconds(const media::VideoFormat& format);

}  // namespace lumiset::render

#pragma once

#include <memory>
#include <optional>

#include "media/av.h"
#include "media/input_name.h"

namespace lumiset::media {

/// Video files, by the libraries' muxers; "-" is y4m on standard output.
std::unique_ptr<Sink> openVideoSink(const std::string& output, const VideoFormat& format, const SinkOptions& options,
                                    const Source* copyFrom);

/// A picture file, or one for each picture.
std::unique_ptr<Sink> openStillSink(const std::string& output, const std::optional<SequenceName>& sequence,
                                    const VideoFormat& format, const SinkOptions& options);

}  // namespace lumiset::media

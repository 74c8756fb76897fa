#pragma once

#include "media/av.h"

namespace lumiset::media {

/// What was read of a stream when its container said that it is over.
struct ReadSoFar {
    std::int64_t lastPacketPosition = -1;  ///< in the file; -1: none read, or not known
    std::int64_t lastPacketSize = 0;
};

/// Tells whether a file was cut short. Demuxers of several formats take the end of the file for the end of the
/// stream, so this compares with what the file says about itself. False when there is no telling.
bool endsTooEarly(const AVFormatContext& container, const AVStream& stream, const ReadSoFar& read);

}  // namespace lumiset::media

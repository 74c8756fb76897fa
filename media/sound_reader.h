#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "media/media.h"

namespace lumiset::media {

/// Sound as programs play it: stereo, interleaved floats at 48,000 frames a second.
inline constexpr int kSoundRate = 48000;
inline constexpr int kSoundChannels = 2;

/// The sound of a clip from any moment on. Used from one thread at a time.
class SoundReader {
public:
    virtual ~SoundReader() = default;
    /// Moves to a time of the pictures, in seconds.
    virtual void seek(double seconds) = 0;
    /// Fills `count` frames, with silence where the file has none, and tells how many are before its end.
    virtual std::int64_t read(float* frames, std::int64_t count) = 0;
};

/// The main sound track of what a source reads; null where there is none. Throws MediaError where it cannot be decoded.
std::unique_ptr<SoundReader> openSound(const Source::Origin& origin);

}  // namespace lumiset::media

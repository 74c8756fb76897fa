#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "media/sound_reader.h"

namespace lumiset::studio {

/// What is to be heard of a clip: from a moment on, in a loop between two others, or until it ends.
struct SoundRange {
    double startSeconds = 0.0;
    double firstSeconds = 0.0;  ///< of the loop
    double endSeconds = 0.0;    ///< of the loop; not behind its first: there is none
};

/// A clip's sound in the order in which its pictures play. Used from one thread at a time.
class SoundLoop {
public:
    SoundLoop(std::unique_ptr<media::SoundReader> reader, const SoundRange& range);
    /// The next frames; behind the clip's end they are silent.
    void read(float* frames, std::int64_t count);

private:
    std::unique_ptr<media::SoundReader> m_reader;
    SoundRange m_range;
    std::int64_t m_position;  ///< of what is read next, in frames of the clip
    double m_loopStart;       ///< in frames, not rounded, so that rounds do not drift from the pictures
};

/// Makes a smooth time of a sound device's position, which moves in blocks. It never goes backwards; where a device
/// stands still for long, as one that is unplugged does, time goes on without it. Any thread may use it.
class SoundClock {
public:
    void reset();
    /// So many seconds of sound had been heard at a moment of a steady clock.
    void told(double heardSeconds, double nowSeconds);
    /// 0 before the first.
    [[nodiscard]] double seconds(double nowSeconds);

private:
    std::mutex m_mutex;
    double m_heard = -1.0;  ///< when it moved last
    double m_movedAt = 0.0;
    double m_latest = 0.0;
};

}  // namespace lumiset::studio

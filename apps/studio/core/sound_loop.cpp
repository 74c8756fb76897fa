#include "apps/studio/core/sound_loop.h"

#include <algorithm>
#include <cmath>

namespace lumiset::studio {
namespace {

constexpr double kRate = media::kSoundRate;
constexpr double kLongestBlock = 0.1;  ///< in which devices move on, in seconds
constexpr double kLost = 0.5;          ///< after which one that stands still counts as gone

}  // namespace

SoundLoop::SoundLoop(std::unique_ptr<media::SoundReader> reader, const SoundRange& range)
    : m_reader(std::move(reader)),
      m_range(range),
      m_position(std::llround(range.startSeconds * kRate)),
      m_loopStart(range.firstSeconds * kRate) {
    m_reader->seek(range.startSeconds);
}

void SoundLoop::read(float* frames, std::int64_t count) {
    const double length = (m_range.endSeconds - m_range.firstSeconds) * kRate;
    while (count > 0) {
        std::int64_t part = count;
        if (length >= 1.0) {
            const std::int64_t end = std::llround(m_loopStart + length);
            if (m_position >= end) {
                // The next round begins where the pictures' does, to a part of a sample.
                m_position = std::llround(m_range.firstSeconds * kRate);
                m_loopStart += length - static_cast<double>(end - m_position);
                m_reader->seek(m_range.firstSeconds);
                continue;
            }
            part = std::min(part, end - m_position);
        }
        m_reader->read(frames, part);
        m_position += part;
        frames += media::kSoundChannels * part;
        count -= part;
    }
}

void SoundClock::reset() {
    const std::lock_guard lock(m_mutex);
    m_heard = -1.0;
    m_latest = 0.0;
}

void SoundClock::told(double heardSeconds, double nowSeconds) {
    const std::lock_guard lock(m_mutex);
    if (heardSeconds != m_heard) {
        m_heard = heardSeconds;
        m_movedAt = nowSeconds;
    }
}

double SoundClock::seconds(double nowSeconds) {
    const std::lock_guard lock(m_mutex);
    if (m_heard < 0.0) {
        return 0.0;
    }
    const double since = std::max(0.0, nowSeconds - m_movedAt);
    m_latest = std::max(m_latest, m_heard + (since < kLost ? std::min(since, kLongestBlock) : since));
    return m_latest;
}

}  // namespace lumiset::studio

#pragma once

#include <memory>
#include <optional>

#include "apps/studio/core/sound_loop.h"

namespace lumiset::studio {

/// Plays a clip's sound on the machine's usual device, and tells its time. Without a device, or a clip with sound,
/// there is no time to be told, and somebody else's clock counts. Its functions are called on one thread.
class SoundPlayer {
public:
    SoundPlayer();
    ~SoundPlayer();

    /// Opens device and track anew; what needs time is done on other threads.
    void start(const media::Source::Origin& origin, const SoundRange& range);
    void stop();
    void setMuted(bool muted);
    [[nodiscard]] bool isMuted() const;
    /// Seconds of sound since `start` that have been heard; nothing where no sound plays.
    [[nodiscard]] std::optional<double> seconds() const;

private:
    struct Inside;
    std::unique_ptr<Inside> m_inside;
};

}  // namespace lumiset::studio

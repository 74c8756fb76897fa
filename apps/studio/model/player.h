#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <optional>

#include "apps/studio/core/play_clock.h"
#include "apps/studio/core/sound_player.h"

namespace lumiset::studio {

class Preview;

/// Plays the preview's clip between its marks, with its sound at its own speed. Frames that come too late are left out.
class Player : public QObject {
    Q_OBJECT

public:
    explicit Player(Preview& preview, QObject* parent = nullptr);

    [[nodiscard]] bool isPlaying() const { return m_clock.has_value(); }
    [[nodiscard]] double speed() const { return m_clock ? m_clock->speed() : 0.0; }
    void play(double speed = 1.0);
    void stop();
    /// Twice as fast in a direction, 1 or -1, up to eight times.
    void shuttle(int direction);
    void step(qint64 frames);
    void stepSeconds(double seconds);
    [[nodiscard]] bool loops() const { return m_loops; }
    void setLoops(bool loops);
    [[nodiscard]] bool isMuted() const { return m_sound.isMuted(); }
    void setMuted(bool muted);
    /// The sound device is the clock.
    [[nodiscard]] bool hasSound() const { return m_followsSound; }

signals:
    void changed();

private:
    void tick();
    [[nodiscard]] double steady() const { return static_cast<double>(m_elapsed.nsecsElapsed()) * 1e-9; }
    /// Seconds since playing began: the sound's, or where there is none a steady clock's.
    double now();

    Preview& m_preview;
    QElapsedTimer m_elapsed;
    QTimer m_timer;
    std::optional<PlayClock> m_clock;
    bool m_loops = true;
    SoundPlayer m_sound;
    bool m_followsSound = false;
    double m_soundSeconds = 0.0;  ///< when it was last heard
    double m_soundAt = 0.0;       ///< on the steady clock
};

}  // namespace lumiset::studio

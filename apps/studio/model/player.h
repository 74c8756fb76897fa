#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <optional>

#include "apps/studio/core/play_clock.h"

namespace lumiset::studio {

class Preview;

/// Plays the preview's clip between its marks. Frames that come too late are left out.
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

signals:
    void changed();

private:
    void tick();
    [[nodiscard]] double now() const { return static_cast<double>(m_elapsed.nsecsElapsed()) * 1e-9; }

    Preview& m_preview;
    QElapsedTimer m_elapsed;
    QTimer m_timer;
    std::optional<PlayClock> m_clock;
    bool m_loops = true;
};

}  // namespace lumiset::studio

#include "apps/studio/model/player.h"

#include <algorithm>
#include <cmath>

#include "apps/studio/model/preview.h"

namespace lumiset::studio {

Player::Player(Preview& preview, QObject* parent) : QObject(parent), m_preview(preview) {
    m_elapsed.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Player::tick);
    connect(&preview, &Preview::clipOpened, this, &Player::stop);
    connect(&preview, &Preview::rangeChanged, this, [this] {
        if (m_clock) {
            play(m_clock->speed());
        }
    });
}

void Player::play(double speed) {
    if (m_preview.clip() == nullptr || m_preview.clip()->frameCount < 2) {
        return;
    }
    m_preview.setPlaying(true);
    const ClipInfo& clip = *m_preview.clip();
    const FrameRange range = m_preview.range();
    m_clock.emplace(m_preview.frame(), m_preview.framesPerSecond(), speed, range, m_loops, 0.0);
    m_soundSeconds = 0.0;
    m_soundAt = steady();
    if (speed == 1.0) {
        m_sound.start(clip.origin,
                      {secondsOf(m_clock->start(), clip.format), secondsOf(range.first, clip.format),
                       m_loops ? secondsOf(range.last + 1, clip.format) : secondsOf(range.first, clip.format)});
    } else {
        m_sound.stop();
    }
    tick();
    emit changed();
}

double Player::now() {
    const std::optional<double> heard = m_sound.seconds();
    m_followsSound = heard.has_value();
    if (heard) {
        m_soundSeconds = *heard;
        m_soundAt = steady();
        return *heard;
    }
    return m_soundSeconds + steady() - m_soundAt;
}

void Player::setMuted(bool muted) {
    m_sound.setMuted(muted);
    emit changed();
}

void Player::stop() {
    m_timer.stop();
    m_sound.stop();
    m_followsSound = false;
    if (m_clock) {
        m_clock.reset();
        m_preview.setPlaying(false);
        emit changed();
    }
}

void Player::shuttle(int direction) {
    const bool further = speed() * direction > 0.0;
    play(direction * (further ? std::min(8.0, std::abs(speed()) * 2.0) : 1.0));
}

void Player::step(qint64 frames) {
    stop();
    m_preview.setFrame(m_preview.frame() + frames);
}

void Player::stepSeconds(double seconds) {
    step(std::llround(seconds * m_preview.framesPerSecond()));
}

void Player::setLoops(bool loops) {
    m_loops = loops;
    if (m_clock) {
        play(m_clock->speed());
    }
    emit changed();
}

void Player::tick() {
    const double moment = now();
    const auto frame = m_clock->frameAt(moment);
    if (!frame) {
        m_preview.setFrame(m_clock->speed() > 0.0 ? m_preview.range().last : m_preview.range().first);
        stop();
        return;
    }
    m_preview.setFrame(*frame);
    m_timer.start(std::max(1, static_cast<int>(std::ceil((m_clock->nextDue(moment) - moment) * 1000.0))));
}

}  // namespace lumiset::studio

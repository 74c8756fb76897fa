#include "media/paced_source.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace lumiset::media {
namespace {

/// Of a picture's length; times that people write in decimals are no further off.
constexpr double kHair = 1e-3;

class PacedSource final : public Source {
public:
    PacedSource(std::unique_ptr<Source> source, Rational rate, const SourceOptions& options)
        : m_source(std::move(source)), m_format(m_source->format()), m_end(options.durationSeconds) {
        m_sourceSeconds = 1.0 / m_format.frameRate.value();
        m_format.frameRate = rate;
        m_format.timeBase = {rate.den, rate.num};
        if (m_format.still) {
            m_format.durationSeconds = std::isfinite(m_end) ? m_end : 1.0 / rate.value();
        } else if (m_format.durationSeconds > 0.0) {
            m_format.durationSeconds = std::min(m_format.durationSeconds, options.durationSeconds);
        }
        m_format.frameCount = m_format.durationSeconds > 0.0
                                  ? std::max<std::int64_t>(1, std::llround(m_format.durationSeconds * rate.value()))
                                  : 0;
        m_end += options.startSeconds;
        begin(options.startSeconds);
    }

    const VideoFormat& format() const override { return m_format; }
    Origin origin() const override {
        Origin origin = m_source->origin();
        origin.startSeconds = m_start;
        origin.endSeconds = m_end;
        return origin;
    }

    std::vector<std::string> notes() const override { return m_source->notes(); }

    void restart(double startSeconds) override {
        m_source->restart(m_format.still ? 0.0 : startSeconds);
        m_hasCurrent = false;
        m_hasNext = false;
        m_ended = false;
        begin(startSeconds);
    }

    bool read(Picture& picture) override {
        RawPicture raw;
        if (!fetch(raw)) {
            return false;
        }
        convert(raw, picture);
        return true;
    }

    void convert(RawPicture& raw, Picture& picture) override { m_source->convert(raw, picture); }

    bool fetch(RawPicture& raw) override {
        const double seconds = static_cast<double>(m_number) * m_format.timeBase.value();
        const double half = 0.5 * m_format.timeBase.value();
        if (seconds > m_end - half) {
            return false;
        }
        while (!m_ended && (!m_hasNext || m_next.picture.timeSeconds < seconds + half)) {
            if (m_hasNext) {
                std::swap(m_current, m_next);
                m_hasCurrent = true;
            }
            m_hasNext = m_source->fetch(m_next);
            m_ended = !m_hasNext;
        }
        // The first picture may come late, and the last one stays for its own length, a still picture for ever.
        const bool first = !m_hasCurrent;
        if (first && !m_hasNext) {
            return false;
        }
        const bool over =
            m_ended && seconds + half > m_current.picture.timeSeconds + m_sourceSeconds + kHair * m_sourceSeconds;
        if (!first && over && !(m_format.still && (std::isfinite(m_end) || m_number == m_firstNumber))) {
            return false;
        }
        raw = first ? m_next : m_current;
        raw.picture.pts = m_number++;
        raw.picture.timeSeconds = seconds;
        return true;
    }

private:
    void begin(double startSeconds) {
        m_start = startSeconds;
        m_number = static_cast<std::int64_t>(std::ceil(startSeconds * m_format.frameRate.value() - kHair));
        m_firstNumber = m_number;
    }

    std::unique_ptr<Source> m_source;
    VideoFormat m_format;
    double m_start = 0.0;
    double m_end;
    double m_sourceSeconds = 0.0;  ///< length of one of its pictures
    std::int64_t m_number = 0;     ///< of the next picture, at the new rate
    std::int64_t m_firstNumber = 0;
    RawPicture m_current;  ///< what shows now
    RawPicture m_next;
    bool m_hasCurrent = false;
    bool m_hasNext = false;
    bool m_ended = false;
};

}  // namespace

SourceOptions leadingIn(SourceOptions options) {
    options.showing = true;
    options.durationSeconds = std::numeric_limits<double>::infinity();  // what comes next tells how long the last stays
    return options;
}

std::unique_ptr<Source> pacedSource(std::unique_ptr<Source> source, Rational rate, const SourceOptions& options) {
    return std::make_unique<PacedSource>(std::move(source), rate, options);
}

}  // namespace lumiset::media

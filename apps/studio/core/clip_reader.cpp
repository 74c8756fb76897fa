#include "apps/studio/core/clip_reader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumiset::studio {
namespace {

/// How far ahead reading on is quicker than looking for a place to start from.
constexpr double kReadOnSeconds = 1.0;

/// Containers round the times of frames, some to milliseconds.
constexpr double kRounding = 0.25;

double frameSeconds(const media::VideoFormat& format) {
    return 1.0 / std::max(format.frameRate.value(), 1e-3);
}

std::unique_ptr<media::Source> openKeepingDepth(const std::string& path) {
    media::SourceOptions options;
    options.keepDepth = true;
    return media::openSource(path, options);
}

}  // namespace

double secondsOf(std::int64_t frame, const media::VideoFormat& format) {
    return static_cast<double>(frame) * frameSeconds(format);
}

ClipReader::ClipReader(std::string path)
    : m_path(std::move(path)), m_source(openKeepingDepth(m_path)), m_format(m_source->format()) {}

std::int64_t ClipReader::frameCount() const {
    if (m_format.still) {
        return 1;
    }
    const auto byLength = static_cast<std::int64_t>(std::llround(m_format.durationSeconds / frameSeconds(m_format)));
    return std::max<std::int64_t>({1, m_format.frameCount, byLength});
}

void ClipReader::restartBefore(double seconds) {
    m_hasCurrent = false;
    try {
        m_source->restart(std::max(0.0, seconds - 0.99 * frameSeconds(m_format)));
    } catch (const media::MediaError&) {
        m_source->restart(0.0);  // past the end, or a last picture that stays longer than the others
    }
    m_hasNext = m_source->fetch(m_next);
}

const media::Picture& ClipReader::read(std::int64_t frame) {
    const double seconds = secondsOf(frame, m_format);
    const double latest = seconds + kRounding * frameSeconds(m_format);
    const bool isShown =
        m_hasCurrent && m_current.timeSeconds <= latest && (!m_hasNext || m_next.picture.timeSeconds > latest);
    if (isShown) {
        return m_current;
    }
    const bool isAhead = m_hasCurrent && m_hasNext && latest > m_current.timeSeconds &&
                         latest < m_next.picture.timeSeconds + kReadOnSeconds;
    if (!isAhead) {
        restartBefore(seconds);
    }
    media::RawPicture shown;
    bool found = false;
    while (m_hasNext && (m_next.picture.timeSeconds <= latest || (!found && !m_hasCurrent))) {
        std::swap(shown, m_next);
        found = true;
        m_next = {};
        m_hasNext = m_source->fetch(m_next);
    }
    if (found) {
        m_source->convert(shown, m_current);
        m_hasCurrent = true;
    }
    if (!m_hasCurrent) {
        throw media::MediaError("\"" + m_path + "\" has no picture there.");
    }
    return m_current;
}

}  // namespace lumiset::studio

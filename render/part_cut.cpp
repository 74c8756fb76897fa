#include "render/part_cut.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "media/hash.h"

namespace lumiset::render {

PartCut::PartCut(const FileJob& job, media::Source& whole, const media::SourceOptions& options,
                 const media::SinkOptions& sink)
    : m_input(job.input), m_options(std::make_shared<media::PartOptions>()) {
    const media::VideoFormat& format = whole.format();
    if (!whole.fetch(m_filmFirst)) {
        throw media::MediaError(fmt::format("\"{}\" has no picture in the time that was asked for.", job.input));
    }
    m_options->file = media::partFile(job.output, job.part->number, job.part->count);
    m_options->replace = job.part->replace;
    media::PartRecord& record = m_options->record;
    record.number = job.part->number;
    record.count = job.part->count;
    record.traits = job.part->traits;
    record.input = media::absoluteInput(job.input);
    record.inputState = media::identityOf(job.input, true);
    record.startSeconds = options.startSeconds;
    record.durationSeconds = options.durationSeconds;
    record.frameRate = options.frameRate;
    record.filmBegin = m_filmFirst.picture.pts;
    const media::Rational rate = media::cuttingRate(job.output, format, sink);
    record.begin = media::partBegin(format, rate, record.filmBegin, record.number, record.count);
    // What the input has beyond the length that it tells belongs to the last part.
    record.end = record.number == record.count
                     ? std::numeric_limits<std::int64_t>::max()
                     : media::partBegin(format, rate, record.filmBegin, record.number + 1, record.count);
    const double share = format.durationSeconds * format.frameRate.value() / record.count;
    m_expected = record.begin == record.end ? 0 : std::max<std::int64_t>(1, std::llround(share));
    if (media::joinableKind(job.output) == media::kPicturesKind) {
        record.firstNumber = media::picturesBetween(whole, options, record.filmBegin, record.begin);
    }
    if (record.begin < record.end) {
        open(options, format);
    }
}

void PartCut::open(media::SourceOptions options, const media::VideoFormat& format) {
    const double end = options.startSeconds + options.durationSeconds;
    options.startSeconds = static_cast<double>(m_options->record.begin) * format.timeBase.value();
    options.durationSeconds = end - options.startSeconds;
    try {
        m_source = media::openSource(m_input, options);
    } catch (const media::PastEnd&) {
        m_source = nullptr;  // containers may tell of more than there is
    }
}

bool PartCut::fetch(media::RawPicture& raw) {
    media::PartRecord& record = m_options->record;
    if (m_source == nullptr || record.next || !m_source->fetch(raw)) {
        return false;
    }
    const std::int64_t pts = raw.picture.pts;
    if (pts >= record.end) {
        record.next = media::Seam{pts, media::hashOf(raw)};
        return false;
    }
    if (!record.first) {
        record.first = media::Seam{pts, media::hashOf(raw)};
    }
    return true;
}

}  // namespace lumiset::render

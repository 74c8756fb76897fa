#pragma once

#include <memory>

#include "media/part.h"
#include "render/file_render.h"

namespace lumiset::render {

/// The pictures of one part of a film, with what it takes to put it together with the others.
class PartCut {
public:
    /// `whole` is the input as all of it would be rendered, just opened with `options`; its first picture is read.
    /// Throws media::MediaError.
    PartCut(const FileJob& job, media::Source& whole, const media::SourceOptions& options,
            const media::SinkOptions& sink);

    /// The film's first picture, which is read for every part: what it becomes decides about transparency.
    [[nodiscard]] media::RawPicture& filmFirst() { return m_filmFirst; }
    /// What the part is read from; null where it has no picture.
    [[nodiscard]] media::Source* source() const { return m_source.get(); }
    /// How many pictures are to be expected.
    [[nodiscard]] std::int64_t expected() const { return m_expected; }
    /// For the sink; its record is complete when `fetch` has answered false.
    [[nodiscard]] const std::shared_ptr<media::PartOptions>& options() const { return m_options; }
    /// The next picture of the part; false behind the last one.
    bool fetch(media::RawPicture& raw);

private:
    void open(media::SourceOptions options, const media::VideoFormat& format);

    std::string m_input;
    std::shared_ptr<media::PartOptions> m_options;
    std::unique_ptr<media::Source> m_source;
    media::RawPicture m_filmFirst;
    std::int64_t m_expected = 0;
};

}  // namespace lumiset::render

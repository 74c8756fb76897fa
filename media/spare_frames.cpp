#include "media/spare_frames.h"

#include <algorithm>

namespace lumiset::media {

std::shared_ptr<AVFrame> SpareFrames::take(const AVFrame& like) {
    AvFrame frame;
    {
        const std::lock_guard lock(m_mutex);
        const auto isFree = [](const AvFrame& kept) { return av_frame_is_writable(kept.get()) != 0; };
        const auto found = std::find_if(m_frames.begin(), m_frames.end(), isFree);
        if (found != m_frames.end()) {
            frame = std::move(*found);
            m_frames.erase(found);
        }
    }
    if (!frame) {
        frame.reset(allocated(av_frame_alloc()));
        frame->width = like.width;
        frame->height = like.height;
        frame->format = like.format;
        avCheck(av_frame_copy_props(frame.get(), &like), "No memory for a picture");
        avCheck(av_frame_get_buffer(frame.get(), 64), "No memory for a picture");
    }
    return {frame.release(), [self = shared_from_this()](AVFrame* used) { self->giveBack(used); }};
}

void SpareFrames::giveBack(AVFrame* frame) {
    const std::lock_guard lock(m_mutex);
    m_frames.emplace_back(frame);
}

}  // namespace lumiset::media

#pragma once

#include <mutex>
#include <vector>

#include "media/av.h"

namespace lumiset::media {

/// Frames of one kind, used again when whoever has them, an encoder that looks ahead too, lets go of them.
class SpareFrames : public std::enable_shared_from_this<SpareFrames> {
public:
    /// A frame of the size, format and tags of `like`, with memory of its own. Its samples are undefined.
    std::shared_ptr<AVFrame> take(const AVFrame& like);

private:
    void giveBack(AVFrame* frame);

    std::mutex m_mutex;
    std::vector<AvFrame> m_frames;
};

}  // namespace lumiset::media

#pragma once

#include "media/convert.h"
#include "media/spare_frames.h"
#include "media/spares.h"
#include "media/video_plan.h"

namespace lumiset::media {

/// Encodes pictures as a plan says. Packets come with times in the unit given to the constructor.
class VideoEncoder {
public:
    /// `shownName` is the file's name for messages.
    VideoEncoder(const VideoPlan& plan, const VideoFormat& format, AVRational timeBase, int threads, bool globalHeader,
                 const std::string& shownName);

    /// A picture as a frame of the encoder's. May be called on any threads at the same time.
    std::shared_ptr<AVFrame> frameOf(const Picture& picture);
    /// Encodes a frame that was made here.
    void send(std::shared_ptr<AVFrame> frame, std::int64_t pts);
    /// Sends the picture before once more, at a later time.
    void repeat(std::int64_t pts);
    void sendEnd();
    /// Calls `take(AVPacket&)` for each packet that is ready.
    template <class Take>
    void receive(Take take) {
        while (receiveOne()) {
            take(*m_packet);
            av_packet_unref(m_packet.get());
        }
    }
    const AVCodecContext& context() const { return *m_context; }

private:
    bool receiveOne();

    std::string m_failure;
    AvCodecContext m_context;
    Spares<FrameWriter> m_writers;
    std::shared_ptr<SpareFrames> m_frames;
    std::shared_ptr<AVFrame> m_latest;
    AvPacket m_packet;
};

}  // namespace lumiset::media

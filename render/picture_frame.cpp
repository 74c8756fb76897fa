#include "render/picture_frame.h"

#include <cmath>

namespace lumiset::render {
namespace {

/// Programs that scale pictures to whole pixels write shapes like 400:401. Nobody sees these, and other programs'
/// plug-ins are told of a square as well.
double withoutRounding(double pixelAspect) {
    return std::abs(pixelAspect - 1.0) < 0.005 ? 1.0 : pixelAspect;
}

}  // namespace

VideoFrameDesc frameOf(const media::Picture& picture) {
    // The record is one for sources and destinations alike; nobody writes to a source.
    return frameOf(const_cast<media::Picture&>(picture));
}

VideoFrameDesc frameOf(media::Picture& picture) {
    VideoFrameDesc frame{};
    frame.data = picture.data.data();
    frame.width = picture.width;
    frame.height = picture.height;
    frame.stride = picture.stride;
    frame.bytesPerPixel = picture.bytesPerPixel();
    frame.format = picture.depth == media::Depth::kFloat ? kFormatBgraFloat : kFormatBgra8;
    return frame;
}

hostkit::FrameContext contextOf(const media::Picture& picture, const media::VideoFormat& format) {
    hostkit::FrameContext context;
    context.timeSeconds = picture.timeSeconds;
    const double rate = format.frameRate.value();
    context.durationSeconds = rate > 0.0 ? 1.0 / rate : 0.0;
    context.pixelAspect = withoutRounding(format.pixelAspect.value());
    if (picture.interlaced) {
        context.fields = picture.topFieldFirst ? hostkit::FieldOrder::kTopFirst : hostkit::FieldOrder::kBottomFirst;
    }
    return context;
}

}  // namespace lumiset::render

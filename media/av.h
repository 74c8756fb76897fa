#pragma once

// The FFmpeg libraries' objects with owners, and their error numbers as words.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/csp.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libavutil/timecode.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <new>
#include <string>

#include "media/media.h"

namespace lumiset::media {

template <auto Free>
struct FreeByAddress {
    template <class T>
    void operator()(T* object) const {
        Free(&object);
    }
};
template <auto Free>
struct FreeDirectly {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};

using AvFrame = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using AvPacket = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using AvCodecContext = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using AvInput = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using AvOutput = std::unique_ptr<AVFormatContext, FreeDirectly<avformat_free_context>>;
using AvScaler = std::unique_ptr<SwsContext, FreeDirectly<sws_freeContext>>;
using AvResampler = std::unique_ptr<SwrContext, FreeByAddress<swr_free>>;

/// Passes an object on, or throws std::bad_alloc for a null one.
template <class T>
T* allocated(T* object) {
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    return object;
}

/// The libraries' words for an error number.
std::string avErrorText(int error);

/// Throws MediaError "`what`: reason." when `result` is an error; gives it back otherwise.
int avCheck(int result, const std::string& what);

inline AVRational avRational(Rational r) {
    return {r.num, r.den};
}
inline Rational rational(AVRational r) {
    return {r.num, r.den};
}

/// Keeps the libraries' own messages off the terminal; errors are told by exceptions.
void silenceLibraries();

}  // namespace lumiset::media

#include "media/unusual_formats.h"

#include "media/picture_color.h"

namespace lumiset::media {
namespace {

constexpr int kFlags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT;

}  // namespace

void UnusualFormats::convert(const AVFrame& from, AVFrame& to) {
    const auto format = static_cast<AVPixelFormat>(from.format);
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), from.width, from.height, format, to.width, to.height,
                                        static_cast<AVPixelFormat>(to.format), kFlags, nullptr, nullptr, nullptr));
    if (!m_scaler) {
        const char* name = av_get_pix_fmt_name(format);
        throw MediaError(std::string("Pictures of the kind ") + (name != nullptr ? name : "unknown") +
                         " cannot be converted.");
    }
    const auto sideOf = [](const AVFrame& frame) {
        const PictureColor color = colorOf(frame);
        return std::pair(sws_getCoefficients(color.matrix), color.range == ColorRange::kFull ? 1 : 0);
    };
    const auto [fromMatrix, fromFull] = sideOf(from);
    const auto [toMatrix, toFull] = sideOf(to);
    sws_setColorspaceDetails(m_scaler.get(), fromMatrix, fromFull, toMatrix, toFull, 0, 1 << 16, 1 << 16);
    avCheck(sws_scale(m_scaler.get(), from.data, from.linesize, 0, from.height, to.data, to.linesize),
            "A picture cannot be converted");
}

}  // namespace lumiset::media

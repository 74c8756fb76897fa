#include "media/picture_color.h"

#include <string_view>

namespace lumiset::media {
namespace {

constexpr int kChromaLeft = 0;
constexpr int kChromaCenter = 1;

bool isJpegFormat(AVPixelFormat format) {
    const char* name = av_get_pix_fmt_name(format);
    return name != nullptr && std::string_view(name).starts_with("yuvj");
}

}  // namespace

PictureColor settledColor(PictureColor color, AVPixelFormat format, int width, int height) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    const bool alpha = descriptor != nullptr && (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    if (!alpha) {
        color.alpha = AlphaKind::kNone;
    } else if (color.alpha == AlphaKind::kNone) {
        color.alpha = AlphaKind::kStraight;
    }
    const bool yuv = descriptor != nullptr && descriptor->nb_components >= 3 &&
                     (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_PAL)) == 0;
    if (!yuv) {
        color.matrix = AVCOL_SPC_RGB;
        color.chromaPosition = -1;
        color.range = color.range == ColorRange::kLimited ? ColorRange::kLimited : ColorRange::kFull;
        return color;
    }
    if (color.matrix == AVCOL_SPC_UNSPECIFIED || color.matrix == AVCOL_SPC_RGB || color.matrix == AVCOL_SPC_RESERVED) {
        color.matrix = width >= 1280 || height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
    if (isJpegFormat(format)) {
        color.range = ColorRange::kFull;
    } else if (color.range == ColorRange::kUnknown) {
        color.range = ColorRange::kLimited;
    }
    if (descriptor->log2_chroma_w == 0 && descriptor->log2_chroma_h == 0) {
        color.chromaPosition = -1;
    } else if (color.chromaPosition < 0) {
        color.chromaPosition = color.range == ColorRange::kFull ? kChromaCenter : kChromaLeft;
    }
    return color;
}

PictureColor colorOf(const AVFrame& frame) {
    PictureColor color;
    color.matrix = frame.colorspace;
    color.primaries = frame.color_primaries;
    color.transfer = frame.color_trc;
    color.range = frame.color_range == AVCOL_RANGE_JPEG   ? ColorRange::kFull
                  : frame.color_range == AVCOL_RANGE_MPEG ? ColorRange::kLimited
                                                          : ColorRange::kUnknown;
    color.chromaPosition = frame.chroma_location - 1;
    const auto format = static_cast<AVPixelFormat>(frame.format);
    // The one family of files whose colours are kept multiplied is OpenEXR's, of floats.
    if (format == AV_PIX_FMT_GBRAPF32LE || format == AV_PIX_FMT_GBRAPF32BE) {
        color.alpha = AlphaKind::kPremultiplied;
    }
    return settledColor(color, format, frame.width, frame.height);
}

}  // namespace lumiset::media

#include "media/video_plan.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "media/input_name.h"

namespace lumiset::media {
namespace {

using Options = std::vector<std::pair<const char*, std::string>>;

const AVCodec* encoder(const char* name) {
    const AVCodec* codec = avcodec_find_encoder_by_name(name);
    if (codec == nullptr) {
        throw MediaError(fmt::format("The FFmpeg libraries on this machine have no encoder '{}'.", name));
    }
    return codec;
}

std::string rateFactor(const SinkOptions& options, int usual) {
    return std::to_string(options.quality >= 0 ? options.quality : usual);
}

/// Instruction sets for x264 to keep to; empty: whatever it finds. What it has for AVX-512 reads memory that nobody has
/// written while it looks ahead in narrow pictures (version 164), so that the same pictures give other bytes each time.
std::string steadyInstructionSets() {
#if defined(__x86_64__) || defined(__i386__)
    if (__builtin_cpu_supports("avx512f") != 0) {
        return "asm=MMX2,SSE2Fast,SSSE3,SSE4.2,AVX,FMA3,BMI2,AVX2";
    }
#endif
    return {};
}

VideoPlan planH264(const SinkOptions& options, const PictureKind& kind) {
    VideoPlan plan;
    plan.codec = encoder("libx264");
    plan.options = {{"preset", "fast"}, {"crf", rateFactor(options, 18)}};
    if (const std::string sets = steadyInstructionSets(); !sets.empty()) {
        plan.options.emplace_back("x264-params", sets);
    }
    plan.codesFields = true;
    plan.keepsRange = true;
    // Halved chroma needs pairs of rows, in either field.
    const int rows = kind.format.interlaced ? 4 : 2;
    if (kind.format.width % 2 == 0 && kind.format.height % rows == 0) {
        plan.format = kind.deep() ? AV_PIX_FMT_YUV420P10LE : AV_PIX_FMT_YUV420P;
    } else {
        plan.format = kind.deep() ? AV_PIX_FMT_YUV444P10LE : AV_PIX_FMT_YUV444P;
        plan.notes.push_back(fmt::format(
            "{}x{} is no even size, so H.264 is written with full chroma (4:4:4), which some players cannot show.",
            kind.format.width, kind.format.height));
    }
    return plan;
}

VideoPlan planProRes(const SinkOptions&, const PictureKind& kind) {
    constexpr int kProfileHq = 3;
    constexpr int kProfile4444 = 4;
    VideoPlan plan;
    plan.codec = encoder("prores_ks");
    plan.codesFields = true;
    plan.options = {{"vendor", "apl0"}};
    plan.profile = kind.alpha || kind.format.chroma == Chroma::k444 ? kProfile4444 : kProfileHq;
    plan.format = kind.alpha                     ? AV_PIX_FMT_YUVA444P10LE
                  : plan.profile == kProfile4444 ? AV_PIX_FMT_YUV444P10LE
                                                 : AV_PIX_FMT_YUV422P10LE;
    return plan;
}

VideoPlan planAnimation(const SinkOptions&, const PictureKind& kind) {
    VideoPlan plan;
    plan.codec = encoder("qtrle");
    plan.format = kind.alpha ? AV_PIX_FMT_ARGB : AV_PIX_FMT_RGB24;
    return plan;
}

VideoPlan planFfv1(const SinkOptions&, const PictureKind& kind) {
    VideoPlan plan;
    plan.codec = encoder("ffv1");
    plan.options = {{"g", "1"}};
    // Slices of a few pixels do not read back as they were written.
    if (std::min(kind.format.width, kind.format.height) >= 16) {
        plan.options.insert(plan.options.end(), {{"level", "3"}, {"slicecrc", "1"}});
    }
    const int bits = kind.bits;
    if (bits <= 8) {
        plan.format = kind.alpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR0;
    } else if (bits <= 10) {
        plan.format = kind.alpha ? AV_PIX_FMT_GBRAP10LE : AV_PIX_FMT_GBRP10LE;
    } else if (bits <= 12) {
        plan.format = kind.alpha ? AV_PIX_FMT_GBRAP12LE : AV_PIX_FMT_GBRP12LE;
    } else {
        plan.format = kind.alpha ? AV_PIX_FMT_GBRAP16LE : AV_PIX_FMT_GBRP16LE;
    }
    return plan;
}

VideoPlan planVp9(const SinkOptions& options, const PictureKind& kind) {
    VideoPlan plan;
    plan.codec = encoder("libvpx-vp9");
    plan.options = {{"b", "0"},           {"crf", rateFactor(options, 20)},
                    {"deadline", "good"}, {"cpu-used", "4"},
                    {"row-mt", "1"},      {"tile-columns", "2"}};
    plan.keepsRange = true;
    if (kind.format.interlaced) {
        plan.notes.emplace_back("VP9 has no place for fields, so players take the interlaced pictures for whole ones.");
    }
    plan.format = kind.alpha ? AV_PIX_FMT_YUVA420P : kind.deep() ? AV_PIX_FMT_YUV420P10LE : AV_PIX_FMT_YUV420P;
    if (kind.alpha) {
        // The stream of alpha has to keep step with the colours, which hidden reference frames break.
        plan.options.emplace_back("auto-alt-ref", "0");
    }
    return plan;
}

VideoPlan planY4m(const SinkOptions&, const PictureKind& kind) {
    VideoPlan plan;
    plan.codec = encoder("wrapped_avframe");
    plan.keepsRange = true;
    plan.constantRate = true;
    const int depth = kind.bits <= 8 ? 0 : kind.bits <= 10 ? 1 : kind.bits <= 12 ? 2 : 3;
    static constexpr AVPixelFormat kFormats[3][4] = {
        {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV420P12LE, AV_PIX_FMT_YUV420P16LE},
        {AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV422P12LE, AV_PIX_FMT_YUV422P16LE},
        {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV444P10LE, AV_PIX_FMT_YUV444P12LE, AV_PIX_FMT_YUV444P16LE},
    };
    plan.format = kFormats[static_cast<int>(kind.format.chroma)][depth];
    return plan;
}

// Encoders that know no fixed quantiser, but a factor that keeps the quality even.
struct FactorCodec {
    const char* name;
    int usual;
    Options more;
};
const FactorCodec* factorCodec(std::string_view name) {
    static const FactorCodec kFactorCodecs[] = {
        {"libx265",
         20,
         {// Or it writes to the terminal by itself, and the machine's processor into the stream.
          {"x265-params", "log-level=none:info=0"}}},
        {"libaom-av1", 22, {{"b", "0"}, {"cpu-used", "6"}, {"row-mt", "1"}}},
        {"libsvtav1", 24, {{"preset", "8"}}},
        {"libvpx", 8, {{"b", "100M"}, {"cpu-used", "2"}}},  // a limit, which it does without only in VP9
    };
    const auto* const found = std::find_if(std::begin(kFactorCodecs), std::end(kFactorCodecs),
                                           [&](const FactorCodec& each) { return name == each.name; });
    return found == std::end(kFactorCodecs) ? nullptr : found;
}

// x265 3.5 weighs blocks by eights when it looks ahead, and writes behind the rows of smaller pictures.
constexpr int kSmallestHevcTree = 64;

// Where halved chroma is refused for pictures of odd sizes.
bool needsFullChroma(const AVCodec& codec, const VideoFormat& format) {
    const std::string_view name = codec.name;
    return (name == "libx265" || name == "utvideo") && (format.width % 2 != 0 || format.height % 2 != 0);
}

// Any other encoder: its best pixel format, a fixed fine quantiser, and pictures at a constant rate, which is all that
// the older codecs know.
VideoPlan planOther(const AVCodec* codec, const SinkOptions& options, const PictureKind& kind) {
    VideoPlan plan;
    plan.codec = codec;
    plan.constantRate = true;
    plan.codesFields = codec->id == AV_CODEC_ID_MPEG2VIDEO || codec->id == AV_CODEC_ID_MPEG4;
    plan.qscale = options.quality >= 1 ? options.quality : 2;
    if (const FactorCodec* factor = factorCodec(codec->name)) {
        plan.qscale = -1;
        plan.options = factor->more;
        plan.options.emplace_back("crf", rateFactor(options, factor->usual));
        if (codec->id == AV_CODEC_ID_HEVC && std::min(kind.format.width, kind.format.height) < kSmallestHevcTree) {
            plan.options.front().second += ":cutree=0";
        }
    }
    if (codec->supported_framerates != nullptr) {
        const AVRational rate = avRational(kind.format.frameRate);
        const AVRational nearest =
            codec->supported_framerates[av_find_nearest_q_idx(rate, codec->supported_framerates)];
        plan.frameRate = rational(nearest);
        if (std::abs(av_q2d(nearest) / av_q2d(rate) - 1) > 1e-4) {  // a picture in minutes
            plan.notes.push_back(fmt::format("{} has no {:.5g} pictures a second, so it is written with {:.5g}.",
                                             avcodec_get_name(codec->id), av_q2d(rate), av_q2d(nearest)));
        }
    }
    const AVPixelFormat wanted = kind.deep() ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_BGRA;
    plan.format = codec->pix_fmts == nullptr
                      ? AV_PIX_FMT_YUV420P
                      : avcodec_find_best_pix_fmt_of_list(codec->pix_fmts, wanted, kind.alpha ? 1 : 0, nullptr);
    // What every player of a lossy codec can show.
    const bool full = needsFullChroma(*codec, kind.format);
    for (const AVPixelFormat usual :
         {full ? AV_PIX_FMT_YUV444P : AV_PIX_FMT_YUV420P, !kind.deep() ? AV_PIX_FMT_NONE
                                                          : full       ? AV_PIX_FMT_YUV444P10LE
                                                                       : AV_PIX_FMT_YUV420P10LE}) {
        for (const AVPixelFormat* f = codec->pix_fmts; !kind.alpha && f != nullptr && *f != AV_PIX_FMT_NONE; f++) {
            plan.format = *f == usual ? usual : plan.format;
        }
    }
    plan.keepsRange = codec->id == AV_CODEC_ID_HEVC || codec->id == AV_CODEC_ID_AV1;
    return plan;
}

struct NamedCodec {
    const char* name;
    AVCodecID id;
    VideoPlan (*plan)(const SinkOptions&, const PictureKind&);
};
constexpr NamedCodec kCodecs[] = {
    {"h264", AV_CODEC_ID_H264, planH264},        {"prores", AV_CODEC_ID_PRORES, planProRes},
    {"qtrle", AV_CODEC_ID_QTRLE, planAnimation}, {"ffv1", AV_CODEC_ID_FFV1, planFfv1},
    {"vp9", AV_CODEC_ID_VP9, planVp9},
};

// The codec for a container when none is asked for.
std::string usualCodec(const AVOutputFormat& container, const PictureKind& kind) {
    const std::string name = container.name;
    const bool deeperThanH264 = kind.bits > 10;
    if (name == "mov") {
        // QuickTime files of cameras are H.264; of editors, with alpha or deep samples, ProRes.
        return kind.alpha || kind.deep() ? "prores" : "h264";
    }
    return name == "matroska" ? (kind.alpha || deeperThanH264 ? "ffv1" : "h264")
           : name == "webm"   ? "vp9"
           : name == "mp4"    ? "h264"
           : name == "mpegts" ? "h264"
           : name == "mpeg"   ? "mpeg2"
                              : "";
}

// Tells of what the pictures have and the file cannot hold.
VideoPlan withNotes(VideoPlan plan, const PictureKind& kind) {
    const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(plan.format);
    const int bits = descriptor.comp[0].depth;
    const VideoFormat& format = kind.format;
    if (kind.deep() && bits < std::min({kind.bits, format.bitDepth, 16})) {
        plan.notes.push_back(fmt::format("The input's {} bits a sample are reduced to {}, as {} is written here.",
                                         format.bitDepth, bits, plan.codec->name));
    } else if (kind.deep() && bits <= 8) {
        plan.notes.push_back(fmt::format("{} bits a sample are written, as {} has no more.", bits, plan.codec->name));
    }
    if (kind.alpha && (descriptor.flags & AV_PIX_FMT_FLAG_ALPHA) == 0) {
        plan.notes.push_back(fmt::format("Transparency is laid over black, as {} has none here.", plan.codec->name));
    }
    const bool rgb = (descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    if (descriptor.nb_components < 3 && (descriptor.flags & AV_PIX_FMT_FLAG_PAL) == 0) {
        plan.notes.push_back(fmt::format("Colours are written as greys, as {} has no others.", plan.codec->name));
    } else if (bits < 5) {
        plan.notes.push_back(
            fmt::format("Colours are reduced to those of a palette, as {} is written here.", plan.codec->name));
    }
    const Chroma written = rgb || descriptor.log2_chroma_w == 0 ? Chroma::k444
                           : descriptor.log2_chroma_h == 0      ? Chroma::k422
                                                                : Chroma::k420;
    if (!format.chromaName.empty() && written < format.chroma) {
        plan.notes.push_back(fmt::format("The input's chroma ({}) is reduced to {}, as {} is written here.",
                                         format.chromaName, written == Chroma::k420 ? "4:2:0" : "4:2:2",
                                         plan.codec->name));
    }
    return plan;
}

VideoPlan chooseVideo(const AVOutputFormat& container, const std::string& fileName, const SinkOptions& options,
                      const PictureKind& kind) {
    if (std::string(container.name) == "yuv4mpegpipe") {
        return planY4m(options, kind);
    }
    const std::string name = options.codec.empty() ? usualCodec(container, kind) : options.codec;
    for (const NamedCodec& codec : kCodecs) {
        if (name != codec.name) {
            continue;
        }
        if (avformat_query_codec(&container, codec.id, FF_COMPLIANCE_NORMAL) == 0) {  // negative: it does not say
            throw MediaError(fmt::format("A file like '{}' cannot hold video coded as {}.", fileName, name));
        }
        return codec.plan(options, kind);
    }
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(name.c_str());
    const AVCodec* codec = name.empty()            ? avcodec_find_encoder(container.video_codec)
                           : name == "mpeg2"       ? avcodec_find_encoder(AV_CODEC_ID_MPEG2VIDEO)
                           : descriptor != nullptr ? avcodec_find_encoder(descriptor->id)
                                                   : avcodec_find_encoder_by_name(name.c_str());
    if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO) {
        throw MediaError(name.empty() ? fmt::format("Video cannot be written to a file like '{}' here.", fileName)
                                      : fmt::format("There is no video codec '{}' to write with.", name));
    }
    return planOther(codec, options, kind);
}

VideoPlan chooseStill(const std::string& fileName, const SinkOptions& options, const PictureKind& kind) {
    const std::string extension = lowerExtension(fileName);
    VideoPlan plan;
    if (extension == "png") {
        plan.codec = encoder("png");
        plan.format = kind.deep() ? (kind.alpha ? AV_PIX_FMT_RGBA64BE : AV_PIX_FMT_RGB48BE)
                                  : (kind.alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24);
        plan.options = {{"pred", "paeth"}, {"compression_level", "4"}};
    } else if (extension == "jpg" || extension == "jpeg") {
        plan.codec = encoder("mjpeg");
        plan.format = AV_PIX_FMT_YUVJ444P;
        plan.fullRange = true;
        plan.qscale = options.quality >= 1 ? std::min(options.quality, 31) : 2;
    } else if (extension == "webp") {
        plan.codec = encoder("libwebp");
        plan.format = AV_PIX_FMT_BGRA;
        plan.options = {{"quality", "92"}};
    } else if (extension == "tif" || extension == "tiff") {
        plan.codec = encoder("tiff");
        plan.format = kind.deep() ? (kind.alpha ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_RGB48LE)
                                  : (kind.alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24);
        plan.options = {{"compression_algo", "lzw"}};
    } else if (extension == "bmp") {
        plan.codec = encoder("bmp");
        plan.format = kind.alpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR24;
    } else {
        const AVOutputFormat* images = av_guess_format("image2", nullptr, nullptr);
        const AVCodec* codec =
            avcodec_find_encoder(av_guess_codec(images, nullptr, fileName.c_str(), nullptr, AVMEDIA_TYPE_VIDEO));
        if (codec == nullptr) {
            throw MediaError(fmt::format("Pictures like '{}' cannot be written here.", fileName));
        }
        plan = planOther(codec, options, kind);
    }
    return plan;
}

}  // namespace

VideoPlan planVideo(const AVOutputFormat& container, const std::string& fileName, const SinkOptions& options,
                    const PictureKind& kind) {
    return withNotes(chooseVideo(container, fileName, options, kind), kind);
}

VideoPlan planStill(const std::string& fileName, const SinkOptions& options, const PictureKind& kind) {
    VideoPlan plan = withNotes(chooseStill(fileName, options, kind), kind);
    const double perInch = std::min(kind.format.details.dotsPerInch, 65535.0);
    if (perInch >= 1 && plan.codec->id == AV_CODEC_ID_PNG) {
        plan.options.emplace_back("dpm", std::to_string(std::lround(std::min(perInch / 0.0254, 65535.0))));
    } else if (perInch >= 1 && plan.codec->id == AV_CODEC_ID_TIFF) {
        plan.options.emplace_back("dpi", std::to_string(std::lround(perInch)));
    }
    return plan;
}

}  // namespace lumiset::media

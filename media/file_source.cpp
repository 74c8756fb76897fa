#include "media/file_source.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

#include <fmt/format.h>

#include "media/convert.h"
#include "media/picture_color.h"
#include "media/spares.h"
#include "media/still_details.h"
#include "media/turn.h"

namespace lumiset::media {
namespace {

// Fields are shown in the order of the second letter of the container's two-letter codes.
bool isInterlaced(AVFieldOrder order) {
    return order > AV_FIELD_PROGRESSIVE;
}
bool isTopFirst(AVFieldOrder order) {
    return order != AV_FIELD_BB && order != AV_FIELD_TB;
}

Chroma chromaOf(const AVPixFmtDescriptor& descriptor) {
    if ((descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0 || descriptor.log2_chroma_w == 0) {
        return Chroma::k444;
    }
    return descriptor.log2_chroma_h == 0 ? Chroma::k422 : Chroma::k420;
}

std::string nameOfChroma(const AVPixFmtDescriptor& descriptor) {
    const int across = 4 >> descriptor.log2_chroma_w;
    return fmt::format("4:{}:{}", across, descriptor.log2_chroma_h == 0 ? across : 0);
}

// Deep video of the limited range may hold whiter than white. Codecs overshoot a little at edges, which is no loss.
bool reachesBeyondWhite(const AVFrame& frame) {
    const auto layout = planeLayout(static_cast<AVPixelFormat>(frame.format));
    if (!layout || layout->type != SampleType::kWord || layout->depth <= 8 || !layout->planar ||
        colorOf(frame).range != ColorRange::kLimited || layout->family != Family::kYuv) {
        return false;
    }
    constexpr int kRowStep = 4;
    const int scale = 1 << (layout->depth - 8);
    const int least = 12 * scale;
    const int most = 240 * scale;
    std::int64_t beyond = 0;
    for (int y = 0; y < frame.height; y += kRowStep) {
        const auto* row = reinterpret_cast<const std::uint16_t*>(frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0]);
        int count = 0;
        for (int x = 0; x < frame.width; x++) {
            count += static_cast<int>(row[x] < least) + static_cast<int>(row[x] > most);
        }
        beyond += count;
    }
    return beyond * kRowStep * 1000 > std::int64_t{frame.width} * frame.height;
}

class FileSource final : public Source {
public:
    FileSource(const Input& input, const SourceOptions& options) : m_input(input), m_options(options) { open(); }

    const VideoFormat& format() const override { return m_format; }
    bool read(Picture& picture) override;
    bool fetch(RawPicture& raw) override;
    void convert(RawPicture& raw, Picture& picture) override;
    void restart(double startSeconds) override;
    Origin origin() const override;
    std::vector<std::string> notes() const override;

private:
    void open();
    void describe(const AVFrame& first);
    void describeLength();
    void collectSideData(const AVFrame& first);
    void settlePrimaries();
    void findDisplayMatrix(const AVFrame& first);
    void noticeLosses(const AVFrame& frame);
    void seekBefore(std::int64_t wanted);
    void goToStart();
    const AVFrame* nextFrame();
    std::int64_t ptsOf(const AVFrame& frame) const;
    double secondsOf(std::int64_t pts) const { return static_cast<double>(pts) * m_format.timeBase.value(); }

    Input m_input;
    SourceOptions m_options;
    VideoFormat m_format;
    std::unique_ptr<Decoder> m_decoder;
    std::unique_ptr<Spares<FrameReader>> m_readers;
    const AVFrame* m_pending = nullptr;  ///< decoded, not yet handed out
    AvFrame m_held;                      ///< handed out before that one
    AvFrame m_current;                   ///< has been held
    std::int64_t m_firstPts = 0;         ///< of the file's first picture, in the container's own time
    std::int64_t m_nextPts = 0;          ///< for pictures that have no time of their own
    std::array<std::int32_t, 9> m_displayMatrix{};
    bool m_turned = false;
    bool m_upright = true;
    bool m_limited = false;        ///< levels beyond black or white have been seen
    std::set<std::string> m_lost;  ///< what pictures had beside their samples
};

void FileSource::open() {
    m_decoder = std::make_unique<Decoder>(m_input);
    m_nextPts = 0;
    m_held.reset();
    m_pending = m_decoder->next();
    if (m_pending == nullptr) {
        throw MediaError(fmt::format("There is no picture in '{}'.", m_input.name));
    }
    m_firstPts = m_pending->best_effort_timestamp == AV_NOPTS_VALUE ? 0 : m_pending->best_effort_timestamp;
    if (!m_readers) {
        describe(*m_pending);
        const int width = m_turned ? m_format.height : m_format.width;
        const int height = m_turned ? m_format.width : m_format.height;
        const Depth depth = m_options.depth;
        m_readers = std::make_unique<Spares<FrameReader>>([=] { return FrameReader(width, height, depth); });
    }
    goToStart();
}

void FileSource::restart(double startSeconds) {
    if (m_input.isPipe()) {
        throw MediaError("Standard input can be read only once.");
    }
    m_options.startSeconds = startSeconds;
    open();
}

void FileSource::findDisplayMatrix(const AVFrame& first) {
    const std::uint8_t* matrix = av_stream_get_side_data(m_decoder->stream(), AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (const AVFrameSideData* side = av_frame_get_side_data(&first, AV_FRAME_DATA_DISPLAYMATRIX)) {
        matrix = side->data;
    }
    if (matrix != nullptr) {
        std::memcpy(m_displayMatrix.data(), matrix, sizeof m_displayMatrix);
        m_upright = isUpright(m_displayMatrix.data());
        m_turned = isTurned(m_displayMatrix.data());
    }
}

// Some codecs tell with the pictures what others leave to the container.
void FileSource::collectSideData(const AVFrame& first) {
    constexpr std::pair<AVPacketSideDataType, AVFrameSideDataType> kKinds[] = {
        {AV_PKT_DATA_MASTERING_DISPLAY_METADATA, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA},
        {AV_PKT_DATA_CONTENT_LIGHT_LEVEL, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL},
        {AV_PKT_DATA_ICC_PROFILE, AV_FRAME_DATA_ICC_PROFILE},
        {AV_PKT_DATA_STEREO3D, AV_FRAME_DATA_STEREO3D},
        {AV_PKT_DATA_SPHERICAL, AV_FRAME_DATA_SPHERICAL},
    };
    for (const auto& [inStream, inFrame] : kKinds) {
        std::size_t size = 0;
        const std::uint8_t* bytes = av_stream_get_side_data(m_decoder->stream(), inStream, &size);
        if (const AVFrameSideData* side = av_frame_get_side_data(&first, inFrame)) {
            bytes = side->data;
            size = side->size;
        }
        if (bytes != nullptr) {
            m_format.sideData.push_back({inStream, {bytes, bytes + size}});
        }
    }
    const AVCodecID codec = m_decoder->stream()->codecpar->codec_id;
    if (codec == AV_CODEC_ID_PNG || codec == AV_CODEC_ID_APNG) {
        settlePrimaries();
    }
}

// The decoder of PNG files hands on the primaries of their samples (cHRM) as if they were those of the display on which
// a film was graded. A profile counts before them, and sRGB's are what pictures are taken for.
void FileSource::settlePrimaries() {
    std::vector<SideData>& all = m_format.sideData;
    const auto ofType = [&](int type) {
        return std::find_if(all.begin(), all.end(), [=](const SideData& side) { return side.type == type; });
    };
    const auto primaries = ofType(AV_PKT_DATA_MASTERING_DISPLAY_METADATA);
    if (primaries == all.end()) {
        return;
    }
    const auto& told = *reinterpret_cast<const AVMasteringDisplayMetadata*>(primaries->bytes.data());
    if (told.has_luminance != 0 || told.has_primaries == 0) {
        return;  // a display's after all
    }
    const auto point = [](const AVRational* xy) { return AVCIExy{xy[0], xy[1]}; };
    const AVColorPrimariesDesc gamut{
        {told.white_point[0], told.white_point[1]},
        {point(told.display_primaries[0]), point(told.display_primaries[1]), point(told.display_primaries[2])}};
    if (ofType(AV_PKT_DATA_ICC_PROFILE) == all.end() && av_csp_primaries_id_from_desc(&gamut) != AVCOL_PRI_BT709) {
        m_lost.insert("choice of colour primaries (cHRM)");
    }
    all.erase(primaries);
}

// What belongs to single pictures, which no effect could keep true and no sink takes.
void FileSource::noticeLosses(const AVFrame& frame) {
    constexpr std::pair<AVFrameSideDataType, const char*> kKinds[] = {
        {AV_FRAME_DATA_DYNAMIC_HDR_PLUS, "dynamic HDR data (HDR10+)"},
        {AV_FRAME_DATA_DYNAMIC_HDR_VIVID, "dynamic HDR data (HDR Vivid)"},
        {AV_FRAME_DATA_DOVI_METADATA, "dynamic HDR data (Dolby Vision)"},
        {AV_FRAME_DATA_DOVI_RPU_BUFFER, "dynamic HDR data (Dolby Vision)"},
        {AV_FRAME_DATA_A53_CC, "closed captions"},
        {AV_FRAME_DATA_AFD, "active format description"},
        {AV_FRAME_DATA_PANSCAN, "pan and scan data"},
        {AV_FRAME_DATA_FILM_GRAIN_PARAMS, "film grain data"},
    };
    for (int i = 0; i < frame.nb_side_data; i++) {
        for (const auto& [kind, name] : kKinds) {
            if (frame.side_data[i]->type == kind) {
                m_lost.insert(name);
            }
        }
    }
    m_limited = m_limited || reachesBeyondWhite(frame);
    if (av_stream_get_side_data(m_decoder->stream(), AV_PKT_DATA_DOVI_CONF, nullptr) != nullptr) {
        m_lost.insert("dynamic HDR data (Dolby Vision)");
    }
}

std::vector<std::string> FileSource::notes() const {
    std::vector<std::string> notes;
    for (const std::string& lost : m_lost) {
        notes.push_back(fmt::format("The input's {} {} left out.", lost, lost == "closed captions" ? "are" : "is"));
    }
    if (m_limited) {
        notes.emplace_back("The input has levels beyond nominal black or white, which are limited to them.");
    }
    if (m_input.isPipe() && m_decoder->container()->nb_streams > 1) {
        notes.emplace_back("Of standard input only the pictures are read; its other tracks are left out.");
    }
    return notes;
}

void FileSource::describe(const AVFrame& first) {
    AVFormatContext* container = m_decoder->container();
    AVStream* stream = m_decoder->stream();
    const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(first.format));
    AVFrame* frame = const_cast<AVFrame*>(&first);  // the library's guesses only read it

    m_format.width = first.width;
    m_format.height = first.height;
    m_format.timeBase = rational(stream->time_base);
    const AVRational rate = av_guess_frame_rate(container, stream, frame);
    if (rate.num > 0 && rate.den > 0) {
        m_format.frameRate = rational(rate);
    }
    const AVRational aspect = av_guess_sample_aspect_ratio(container, stream, frame);
    if (aspect.num > 0 && aspect.den > 0) {
        m_format.pixelAspect = rational(aspect);
    }
    const AVFieldOrder order = stream->codecpar->field_order;
    m_format.interlaced = first.interlaced_frame != 0 || isInterlaced(order);
    m_format.topFieldFirst = first.interlaced_frame != 0 ? first.top_field_first != 0 : isTopFirst(order);
    m_format.bitDepth = descriptor.comp[0].depth;
    if (m_options.keepDepth && m_format.bitDepth > 8) {
        m_options.depth = Depth::kFloat;
    }
    m_format.depth = m_options.depth;
    const PictureColor color = colorOf(first);
    m_format.chroma = chromaOf(descriptor);
    if (color.matrix != AVCOL_SPC_RGB && descriptor.nb_components >= 3) {
        m_format.chromaName = nameOfChroma(descriptor);
    }
    m_format.color.alpha = color.alpha;
    if (!m_decoder->isStill()) {
        m_format.color.matrix = color.matrix == AVCOL_SPC_RGB ? AVCOL_SPC_UNSPECIFIED : first.colorspace;
        m_format.color.primaries = color.primaries;
        m_format.color.transfer = color.transfer;
        if (color.matrix != AVCOL_SPC_RGB) {
            m_format.color.range = color.range;
            m_format.color.chromaPosition = color.chromaPosition;
        }
    }
    collectSideData(first);
    if (m_decoder->isStill() && !m_input.isPipe()) {
        std::ifstream file(std::filesystem::path(m_decoder->firstFile()), std::ios::binary);
        m_format.details = readStillDetails({std::istreambuf_iterator<char>(file), {}});
    }
    if (m_input.sequence) {
        m_format.firstNumber = *m_input.sequence->first;
    }
    m_format.still = m_decoder->isStill() && !m_input.sequence;

    findDisplayMatrix(first);
    if (m_turned) {
        std::swap(m_format.width, m_format.height);
        std::swap(m_format.pixelAspect.num, m_format.pixelAspect.den);
        m_format.interlaced = false;
    }
    describeLength();
}

void FileSource::describeLength() {
    const AVStream* stream = m_decoder->stream();
    const AVFormatContext* container = m_decoder->container();
    double duration = 0;
    if (m_input.sequence) {
        duration = (*m_input.sequence->last - *m_input.sequence->first + 1) / m_input.sequenceRate.value();
    } else if (m_decoder->isStill()) {
        duration = 1 / m_format.frameRate.value();
    } else if (stream->duration != AV_NOPTS_VALUE) {
        duration = static_cast<double>(stream->duration) * av_q2d(stream->time_base);
    } else if (container->duration != AV_NOPTS_VALUE) {
        duration = static_cast<double>(container->duration) / AV_TIME_BASE;
    }
    const double whole = duration;
    if (duration > 0) {
        duration = std::max(0.0, std::min(duration - m_options.startSeconds, m_options.durationSeconds));
    } else if (std::isfinite(m_options.durationSeconds)) {
        duration = m_options.durationSeconds;
    }
    m_format.durationSeconds = duration;
    m_format.frameCount = duration == whole && stream->nb_frames > 0 && !m_input.sequence
                              ? stream->nb_frames
                              : std::llround(duration * m_format.frameRate.value());
}

std::int64_t FileSource::ptsOf(const AVFrame& frame) const {
    const std::int64_t pts = frame.best_effort_timestamp;
    return pts == AV_NOPTS_VALUE ? m_nextPts : std::max(pts - m_firstPts, m_nextPts);
}

const AVFrame* FileSource::nextFrame() {
    if (m_held) {
        m_current = std::move(m_held);
        return m_current.get();
    }
    const AVFrame* frame = m_pending != nullptr ? m_pending : m_decoder->next();
    m_pending = nullptr;
    return frame;
}

// Goes to a picture at or before a time. Containers do not always find the key frame that is before it: those that know
// times of decoding alone take one that shows later, and decoders leave out pictures whose references lie farther back.
// So each attempt goes farther back, and from the very beginning nothing is missed.
void FileSource::seekBefore(std::int64_t wanted) {
    const double unit = m_format.timeBase.value();
    double back = 0;
    while (static_cast<double>(wanted) * unit > back) {
        try {
            if (!m_decoder->seek(m_firstPts + wanted - std::llround(back / unit))) {
                break;
            }
            m_pending = m_decoder->next();
        } catch (const MediaError&) {
            m_pending = nullptr;  // nothing can be decoded from there on
        }
        if (m_pending != nullptr && m_pending->best_effort_timestamp != AV_NOPTS_VALUE &&
            m_pending->best_effort_timestamp - m_firstPts <= wanted) {
            m_nextPts = 0;
            return;
        }
        back = back * 4 + 0.5;
    }
    m_nextPts = 0;
    m_decoder = std::make_unique<Decoder>(m_input);
    m_pending = nullptr;
}

void FileSource::goToStart() {
    // Rounded up to the stream's ticks, less a hair for times that a person wrote in decimals.
    const auto wanted = static_cast<std::int64_t>(std::ceil(m_options.startSeconds / m_format.timeBase.value() - 1e-3));
    if (wanted <= 0 || m_format.still) {
        return;
    }
    if (!m_input.isPipe()) {
        seekBefore(wanted);
    }
    AvFrame before;
    std::int64_t beforePts = 0;
    while ((m_pending = nextFrame()) != nullptr && ptsOf(*m_pending) < wanted) {
        beforePts = ptsOf(*m_pending);
        m_nextPts = beforePts + 1;
        if (m_options.showing) {
            before.reset(allocated(av_frame_clone(m_pending)));
        }
        m_pending = nullptr;
    }
    const double lasts = 1.001 / m_format.frameRate.value();
    if (m_pending == nullptr && !(before && m_options.startSeconds < secondsOf(beforePts) + lasts)) {
        throw PastEnd(fmt::format("'{}' is over before the start at {} s.", m_input.name, m_options.startSeconds));
    }
    if (before && (m_pending == nullptr || ptsOf(*m_pending) > wanted)) {
        m_held = std::move(before);
        m_nextPts = beforePts;
    }
}

bool FileSource::read(Picture& picture) {
    RawPicture raw;
    if (!fetch(raw)) {
        return false;
    }
    convert(raw, picture);
    return true;
}

bool FileSource::fetch(RawPicture& raw) {
    Picture& picture = raw.picture;
    const AVFrame* frame = nextFrame();
    if (frame == nullptr) {
        return false;
    }
    noticeLosses(*frame);
    const std::int64_t pts = ptsOf(*frame);
    const double seconds = secondsOf(pts);
    const double half = 0.5 * m_format.timeBase.value();
    const double lastNumber = m_input.sequence ? secondsOf(*m_input.sequence->last - *m_input.sequence->first)
                                               : std::numeric_limits<double>::infinity();
    if (seconds > m_options.startSeconds + m_options.durationSeconds - half || seconds > lastNumber + half) {
        m_pending = frame;
        return false;
    }
    const double step = 1 / (m_format.frameRate.value() * m_format.timeBase.value());
    m_nextPts =
        frame->best_effort_timestamp == AV_NOPTS_VALUE ? pts + std::max<std::int64_t>(1, std::llround(step)) : pts + 1;

    picture.pts = pts;
    picture.timeSeconds = seconds;
    const AVFieldOrder order = m_decoder->stream()->codecpar->field_order;
    const AVCodecDescriptor* codec = avcodec_descriptor_get(m_decoder->stream()->codecpar->codec_id);
    // Codecs of single pictures often know nothing of fields; then the container's word counts for all of them.
    const bool byContainer = codec != nullptr && (codec->props & AV_CODEC_PROP_INTRA_ONLY) != 0 && isInterlaced(order);
    const bool interlaced = frame->interlaced_frame != 0 || byContainer;
    picture.interlaced = !m_turned && interlaced;
    picture.topFieldFirst = frame->interlaced_frame != 0 ? frame->top_field_first != 0 : isTopFirst(order);
    const std::shared_ptr<AVFrame> kept(allocated(av_frame_clone(frame)), FreeByAddress<av_frame_free>());
    kept->interlaced_frame = interlaced ? 1 : 0;
    raw.frame = kept;
    return true;
}

void FileSource::convert(RawPicture& raw, Picture& picture) {
    const auto reader = m_readers->borrow();
    Picture stored;
    reader->read(*raw.frame, m_upright ? picture : stored);
    raw.frame.reset();
    if (!m_upright) {
        turnUpright(stored, m_displayMatrix.data(), picture);
    }
    picture.pts = raw.picture.pts;
    picture.timeSeconds = raw.picture.timeSeconds;
    picture.interlaced = raw.picture.interlaced;
    picture.topFieldFirst = raw.picture.topFieldFirst;
}

Source::Origin FileSource::origin() const {
    if (m_input.isPipe() || m_decoder->isStill()) {
        return {};
    }
    return {m_input.url(),          static_cast<double>(m_firstPts) * m_format.timeBase.value(),
            m_options.startSeconds, m_options.startSeconds + m_options.durationSeconds,
            m_format.frameRate,     m_decoder->tracks()};
}

}  // namespace

std::unique_ptr<Source> openFileSource(const Input& input, const SourceOptions& options) {
    return std::make_unique<FileSource>(input, options);
}

}  // namespace lumiset::media

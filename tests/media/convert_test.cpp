// Frames of the libraries to pictures and back, against the standards' own formulas.

#include "media/convert.h"

#include <random>

#include "media/picture_color.h"
#include "media/yuv_rows.h"
#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

AvFrame makeFrame(AVPixelFormat format, int width, int height) {
    AvFrame frame(allocated(av_frame_alloc()));
    frame->format = format;
    frame->width = width;
    frame->height = height;
    avCheck(av_frame_get_buffer(frame.get(), 0), "No memory");
    return frame;
}

// Fills a channel with `level(x, y)`, counted in its own samples.
template <class Level>
void fill(AVFrame& frame, int channel, Level level) {
    const PlaneLayout layout = *planeLayout(static_cast<AVPixelFormat>(frame.format));
    const FrameView view{&frame, &layout, -1};
    for (int y = 0; y < view.height(channel); y++) {
        std::vector<std::uint32_t> line(static_cast<std::size_t>(view.width(channel)));
        for (int x = 0; x < view.width(channel); x++) {
            const auto value = static_cast<std::uint16_t>(level(x, y));
            if (layout.type == SampleType::kByte) {
                reinterpret_cast<std::uint8_t*>(line.data())[x] = static_cast<std::uint8_t>(value);
            } else {
                reinterpret_cast<std::uint16_t*>(line.data())[x] = value;
            }
        }
        storeSamples(line.data(), 0, view.width(channel), view, channel, y);
    }
}

std::vector<int> samplesOf(const AVFrame& frame, int channel) {
    const PlaneLayout layout = *planeLayout(static_cast<AVPixelFormat>(frame.format));
    const FrameView view{&frame, &layout, -1};
    std::vector<int> all;
    for (int y = 0; y < view.height(channel); y++) {
        std::vector<std::uint32_t> line(static_cast<std::size_t>(view.width(channel)));
        fetchSamples(view, channel, y, 0, view.width(channel), line.data());
        for (int x = 0; x < view.width(channel); x++) {
            all.push_back(layout.type == SampleType::kByte ? reinterpret_cast<std::uint8_t*>(line.data())[x]
                                                           : reinterpret_cast<std::uint16_t*>(line.data())[x]);
        }
    }
    return all;
}

// Rec. ITU-T H.273, equations 18 to 60, for full and limited range.
struct Reference {
    double kr, kb;
    bool full;
    int depth;

    double scale() const { return std::ldexp(1.0, depth - 8); }
    void rgb(const double yuv[3], double out[3]) const {
        const double top = std::ldexp(1.0, depth) - 1;
        const double y = full ? yuv[0] / top : (yuv[0] / scale() - 16) / 219;
        const double cb = (yuv[1] - std::ldexp(1.0, depth - 1)) / (full ? top : 224 * scale());
        const double cr = (yuv[2] - std::ldexp(1.0, depth - 1)) / (full ? top : 224 * scale());
        out[2] = y + 2 * (1 - kr) * cr;
        out[0] = y + 2 * (1 - kb) * cb;
        out[1] = (y - kr * out[2] - kb * out[0]) / (1 - kr - kb);
    }
};

TEST(Convert, FollowsMatrixRangeAndDepthOfTheFrame) {
    struct Case {
        AVPixelFormat format;
        AVColorSpace matrix;
        AVColorRange range;
        Reference reference;
    };
    const Case cases[] = {
        {AV_PIX_FMT_YUV444P, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, {0.2126, 0.0722, false, 8}},
        {AV_PIX_FMT_YUV444P, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, {0.299, 0.114, false, 8}},
        {AV_PIX_FMT_YUV444P, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, {0.2126, 0.0722, true, 8}},
        {AV_PIX_FMT_YUVJ444P, AVCOL_SPC_BT470BG, AVCOL_RANGE_UNSPECIFIED, {0.299, 0.114, true, 8}},
        {AV_PIX_FMT_YUV444P, AVCOL_SPC_SMPTE240M, AVCOL_RANGE_MPEG, {0.212, 0.087, false, 8}},
        {AV_PIX_FMT_YUV444P10LE, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, {0.2627, 0.0593, false, 10}},
        {AV_PIX_FMT_YUV444P12BE, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, {0.2126, 0.0722, false, 12}},
        {AV_PIX_FMT_YUV444P16LE, AVCOL_SPC_FCC, AVCOL_RANGE_JPEG, {0.30, 0.11, true, 16}},
        {AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, {0.2126, 0.0722, false, 8}},
        {AV_PIX_FMT_NV12, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, {0.2126, 0.0722, false, 8}},
        {AV_PIX_FMT_P010LE, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, {0.2126, 0.0722, false, 10}},
        {AV_PIX_FMT_UYVY422, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, {0.2126, 0.0722, false, 8}},
        {AV_PIX_FMT_YUV411P, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, {0.299, 0.114, false, 8}},
    };
    // Levels of 8 bits whose RGB lies inside, black and white among them.
    const double levels[][3] = {{16, 128, 128}, {235, 128, 128}, {100, 140, 90}, {126, 90, 160}, {180, 120, 135}};
    for (const Case& c : cases) {
        for (const auto& level : levels) {
            for (const Depth depth : {Depth::kEightBit, Depth::kFloat}) {
                SCOPED_TRACE(std::string(av_get_pix_fmt_name(c.format)) + " " + std::to_string(level[0]));
                const AvFrame frame = makeFrame(c.format, 70, 20);
                frame->colorspace = c.matrix;
                frame->color_range = c.range;
                double yuv[3];
                double expected[3];
                for (int i = 0; i < 3; i++) {
                    yuv[i] = level[i] * c.reference.scale();
                    fill(*frame, i, [&](int, int) { return yuv[i]; });
                }
                c.reference.rgb(yuv, expected);
                Picture picture;
                FrameReader(70, 20, depth).read(*frame, picture);
                for (int i = 0; i < 3; i++) {
                    // Rounding takes half a level, dithering a whole one.
                    const double allowed = depth == Depth::kFloat ? 0.002 : c.reference.depth > 8 ? 1.0 : 0.52;
                    const double wanted = std::min(std::max(expected[i] * 255, 0.0), 255.0);
                    EXPECT_NEAR(sampleOf(picture, 37, 11, i), wanted, allowed) << "channel " << i;
                    EXPECT_EQ(sampleOf(picture, 37, 11, i), sampleOf(picture, 37, 3, i)) << "even";
                }
                EXPECT_EQ(sampleOf(picture, 69, 19, 3), 255);
            }
        }
    }
}

// Soft pictures, as cameras make them; random detail would be more than halved chroma can hold.
double wave(int x, int y, int channel) {
    return std::sin(0.05 * x + 0.03 * y + channel) + std::cos(0.02 * x - 0.06 * y + 2 * channel);
}

struct RoundTrip {
    double luma;    ///< largest difference of Y
    double chroma;  ///< mean square of the differences of U and V
};

RoundTrip roundTrip(AVPixelFormat format, int width, int height, Depth depth, bool interlaced, AVColorRange range) {
    const AvFrame frame = makeFrame(format, width, height);
    const AvFrame back = makeFrame(format, width, height);
    const int bits = planeLayout(format)->depth;
    for (AVFrame* f : {frame.get(), back.get()}) {
        f->interlaced_frame = interlaced ? 1 : 0;
        f->color_range = range;
        f->colorspace = AVCOL_SPC_BT709;
    }
    for (int i = 0; i < 3; i++) {
        fill(*frame, i, [&](int x, int y) {
            // The fields of an interlaced frame are of different moments.
            const int shift = interlaced ? y % 2 * 40 : 0;
            return std::lround(std::ldexp(128 + (i == 0 ? 30 : 12) * wave(x + shift, y, i), bits - 8));
        });
    }
    Picture picture;
    FrameReader(width, height, depth).read(*frame, picture);
    FrameWriter(format).write(picture, *back);
    RoundTrip result{0, 0};
    std::size_t count = 0;
    for (int i = 0; i < 3; i++) {
        const std::vector<int> a = samplesOf(*frame, i);
        const std::vector<int> b = samplesOf(*back, i);
        for (std::size_t k = 0; k < a.size(); k++) {
            const double difference = std::abs(a[k] - b[k]);
            if (i == 0) {
                result.luma = std::max(result.luma, difference);
            } else {
                result.chroma += difference * difference;
                count++;
            }
        }
    }
    result.chroma /= static_cast<double>(count);
    return result;
}

TEST(Convert, BringsUntouchedPicturesBack) {
    struct Case {
        AVPixelFormat format;
        int width, height;
        Depth depth;
        bool interlaced;
        AVColorRange range;
    };
    constexpr auto kLimited = AVCOL_RANGE_MPEG;
    const Case cases[] = {
        {AV_PIX_FMT_YUV420P, 320, 180, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV420P, 321, 181, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV420P, 3, 3, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV420P, 1, 1, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV420P, 1, 240, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV420P, 320, 180, Depth::kEightBit, true, kLimited},
        {AV_PIX_FMT_YUV420P, 75, 90, Depth::kEightBit, true, kLimited},
        {AV_PIX_FMT_YUV420P, 320, 180, Depth::kFloat, false, kLimited},
        {AV_PIX_FMT_YUV420P, 320, 180, Depth::kEightBit, false, AVCOL_RANGE_JPEG},
        {AV_PIX_FMT_NV12, 322, 180, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV422P, 320, 180, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV444P, 33, 17, Depth::kEightBit, false, kLimited},
        {AV_PIX_FMT_YUV420P10LE, 320, 180, Depth::kFloat, false, kLimited},
        {AV_PIX_FMT_YUV420P10LE, 322, 184, Depth::kFloat, true, kLimited},
        {AV_PIX_FMT_P010LE, 320, 180, Depth::kFloat, false, kLimited},
        {AV_PIX_FMT_YUV422P12LE, 320, 180, Depth::kFloat, false, kLimited},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(av_get_pix_fmt_name(c.format)) + " " + std::to_string(c.width) + "x" +
                     std::to_string(c.height) + (c.interlaced ? " interlaced" : "") +
                     (c.depth == Depth::kFloat ? " float" : ""));
        const RoundTrip trip = roundTrip(c.format, c.width, c.height, c.depth, c.interlaced, c.range);
        // RGB of eight bits has coarser steps than YUV of the full range.
        EXPECT_LE(trip.luma, c.range == AVCOL_RANGE_JPEG ? 1 : 0);
        // 64 dB and more for bytes; floats are dithered on their way to bytes.
        const bool deep = planeLayout(c.format)->depth > 8;
        EXPECT_LE(trip.chroma, deep                          ? 4.0
                               : c.range == AVCOL_RANGE_JPEG ? 0.25
                               : c.depth == Depth::kFloat    ? 0.1
                                                             : 0.026);
    }
}

// Chroma that rises evenly with the rows of the frame. Rec. ITU-T H.262, figure 6-2: its samples lie a quarter of a row
// of their field below the upper row in the top field, above the lower one in the bottom field, so half a row of the
// frame below every second row.
TEST(Convert, TakesTheChromaOfEachFieldFromWhereItLies) {
    struct Case {
        AVPixelFormat format;
        Depth depth;
        double step;  ///< in 8-bit levels, from row to row of the chroma plane
    };
    for (const auto& [format, depth, step] : {Case{AV_PIX_FMT_YUV420P, Depth::kEightBit, 3},
                                              {AV_PIX_FMT_NV12, Depth::kEightBit, -3},
                                              {AV_PIX_FMT_YUV420P10LE, Depth::kFloat, 3}}) {
        const double scale = std::ldexp(1.0, planeLayout(format)->depth - 8);
        const AvFrame frame = makeFrame(format, 32, 64);
        frame->interlaced_frame = 1;
        frame->colorspace = AVCOL_SPC_BT709;
        fill(*frame, 0, [&](int, int) { return 126 * scale; });
        fill(*frame, 1, [&](int, int y) { return (128 + step * (y - 16)) * scale; });
        fill(*frame, 2, [&](int, int) { return 128 * scale; });
        Picture picture;
        FrameReader(32, 64, depth).read(*frame, picture);
        const double blue = 2 * (1 - 0.0722) * 255 / 224;  // for a level of chroma
        for (int y = 8; y < 56; y++) {
            const double expected = 110 * 255.0 / 219 + blue * step * ((y - 0.5) / 2 - 16);
            EXPECT_NEAR(sampleOf(picture, 16, y, 0), expected, blue * 0.3 + (depth == Depth::kFloat ? 0 : 0.5))
                << av_get_pix_fmt_name(format) << ", row " << y;
        }
    }
}

// Chroma that rises evenly along the row. Where a frame does not say, samples of limited range lie on the left of their
// two pixels (Rec. ITU-T H.264, figure E-1), those of full range between them, as JFIF has them.
TEST(Convert, TakesChromaFromWhereTheFrameSaysOrItsRangeImplies) {
    struct Case {
        AVChromaLocation said;
        AVColorRange range;
        double place;  ///< of the chroma sample, in pixels right of the left one
    };
    for (const auto& [said, range, place] : {Case{AVCHROMA_LOC_UNSPECIFIED, AVCOL_RANGE_MPEG, 0},
                                             {AVCHROMA_LOC_UNSPECIFIED, AVCOL_RANGE_JPEG, 0.5},
                                             {AVCHROMA_LOC_CENTER, AVCOL_RANGE_MPEG, 0.5},
                                             {AVCHROMA_LOC_LEFT, AVCOL_RANGE_JPEG, 0}}) {
        const AvFrame frame = makeFrame(AV_PIX_FMT_YUV420P, 64, 16);
        frame->chroma_location = said;
        frame->color_range = range;
        frame->colorspace = AVCOL_SPC_BT709;
        fill(*frame, 0, [](int, int) { return 126; });
        fill(*frame, 1, [](int x, int) { return 128 + 4 * (x - 16); });
        fill(*frame, 2, [](int, int) { return 128; });
        Picture picture;
        FrameReader(64, 16, Depth::kFloat).read(*frame, picture);
        const bool full = range == AVCOL_RANGE_JPEG;
        const double blue = 2 * (1 - 0.0722) * (full ? 1 : 255.0 / 224);
        const double expected = (full ? 126 : 110 * 255.0 / 219) + blue * 4 * ((32 - place) / 2 - 16);
        EXPECT_NEAR(sampleOf(picture, 32, 8, 0), expected, 0.6) << said << ' ' << range;
    }
}

TEST(Convert, KeepsAndBlendsAlpha) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P10LE, AV_PIX_FMT_RGBA, AV_PIX_FMT_ARGB,
                                       AV_PIX_FMT_GBRAP, AV_PIX_FMT_RGBA64BE, AV_PIX_FMT_YA8}) {
        for (const Depth depth : {Depth::kEightBit, Depth::kFloat}) {
            SCOPED_TRACE(av_get_pix_fmt_name(format));
            const Picture picture = flatPicture(37, 9, 160, 160, 160, 51, depth);  // alpha 0.2
            const AvFrame frame = makeFrame(format, 37, 9);
            frame->colorspace = AVCOL_SPC_BT709;
            FrameWriter(format).write(picture, *frame);
            Picture back;
            FrameReader(37, 9, depth).read(*frame, back);
            EXPECT_LE(worstDifference(back, picture), 1.01);
        }
    }
    for (const AVPixelFormat format : {AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR0, AV_PIX_FMT_YUV444P, AV_PIX_FMT_GBRP10LE}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        const AvFrame frame = makeFrame(format, 37, 9);
        FrameWriter(format).write(flatPicture(37, 9, 200, 100, 40, 51), *frame);
        Picture back;
        FrameReader(37, 9, Depth::kEightBit).read(*frame, back);
        EXPECT_LE(worstDifference(back, flatPicture(37, 9, 40, 20, 8)), 1);
    }
}

TEST(Convert, KeepsEightBitRgbExactInEveryOrder) {
    std::mt19937 random(1);
    for (const AVPixelFormat format :
         {AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24, AV_PIX_FMT_RGBA, AV_PIX_FMT_BGRA, AV_PIX_FMT_ARGB, AV_PIX_FMT_ABGR,
          AV_PIX_FMT_BGR0, AV_PIX_FMT_0RGB, AV_PIX_FMT_GBRP, AV_PIX_FMT_GBRAP}) {
        for (const int width : {1, 3, 15, 64, 131}) {
            SCOPED_TRACE(std::string(av_get_pix_fmt_name(format)) + " " + std::to_string(width));
            const bool alpha = planeLayout(format)->hasAlpha();
            Picture picture = flatPicture(width, 5, 0, 0, 0);
            for (int y = 0; y < 5; y++) {
                for (int x = 0; x < width; x++) {
                    const auto level = [&] { return static_cast<double>(random() % 256); };
                    setPixel(picture, x, y, level(), level(), level(), alpha ? level() : 255);
                }
            }
            const AvFrame frame = makeFrame(format, width, 5);
            FrameWriter(format).write(picture, *frame);
            for (const Depth depth : {Depth::kEightBit, Depth::kFloat}) {
                Picture back;
                FrameReader(width, 5, depth).read(*frame, back);
                EXPECT_LE(worstDifference(back, picture), depth == Depth::kFloat ? 1e-4 : 0);
                // Through float the bytes stay the same, though that is dithered.
                const AvFrame again = makeFrame(format, width, 5);
                FrameWriter(format).write(back, *again);
                for (int channel = 0; channel < (alpha ? 4 : 3); channel++) {
                    EXPECT_EQ(samplesOf(*again, channel), samplesOf(*frame, channel));
                }
            }
        }
    }
}

TEST(Convert, DithersWhatTheTargetCannotHold) {
    // A ramp over eight levels: without dithering its runs would be 64 pixels long, at the right brightness nowhere.
    Picture ramp = flatPicture(512, 16, 0, 0, 0, 255, Depth::kFloat);
    for (int y = 0; y < 16; y++) {
        for (int x = 0; x < 512; x++) {
            const double level = 100 + x / 64.0;
            setPixel(ramp, x, y, level, level, level);
        }
    }
    for (const AVPixelFormat format : {AV_PIX_FMT_RGB24, AV_PIX_FMT_YUV420P}) {
        const AvFrame frame = makeFrame(format, 512, 16);
        frame->color_range = format == AV_PIX_FMT_YUV420P ? AVCOL_RANGE_JPEG : AVCOL_RANGE_UNSPECIFIED;
        FrameWriter(format).write(ramp, *frame);
        const std::vector<int> written = samplesOf(*frame, 0);
        int longest = 0;
        for (int y = 0, run = 0; y < 16; y++) {
            for (int x = 1; x < 512; x++) {
                const std::size_t at = static_cast<std::size_t>(y * 512 + x);
                run = written[at] == written[at - 1] ? run + 1 : 0;
                longest = std::max(longest, run);
            }
        }
        EXPECT_LT(longest, 50) << av_get_pix_fmt_name(format);
        for (int x = 0; x < 512; x += 16) {
            double sum = 0;
            for (int y = 0; y < 16; y++) {
                for (int k = 0; k < 16; k++) {
                    sum += written[static_cast<std::size_t>(y * 512 + x + k)];
                }
            }
            EXPECT_NEAR(sum / 256, 100 + (x + 7.5) / 64.0, 0.06);
        }
    }
}

TEST(Convert, ReadsWhatZimgDoesNotKnow) {
    const AvFrame palette = makeFrame(AV_PIX_FMT_PAL8, 5, 3);
    std::fill_n(reinterpret_cast<std::uint32_t*>(palette->data[1]), 256, 0xFF000000U);
    reinterpret_cast<std::uint32_t*>(palette->data[1])[7] = 0x80FF4020U;
    for (int y = 0; y < 3; y++) {
        std::fill_n(palette->data[0] + y * palette->linesize[0], 5, std::uint8_t{7});
    }
    Picture picture;
    FrameReader(5, 3, Depth::kEightBit).read(*palette, picture);
    EXPECT_EQ(worstDifference(picture, flatPicture(5, 3, 0x20, 0x40, 0xFF, 0x80)), 0);
    FrameReader(5, 3, Depth::kFloat).read(*palette, picture);
    EXPECT_LE(worstDifference(picture, flatPicture(5, 3, 0x20, 0x40, 0xFF, 0x80)), 1e-4);
}

TEST(Convert, ScalesFramesThatChangeTheirSize) {
    const AvFrame frame = makeFrame(AV_PIX_FMT_YUV420P, 90, 50);
    fill(*frame, 0, [](int, int) { return 126; });
    fill(*frame, 1, [](int, int) { return 128; });
    fill(*frame, 2, [](int, int) { return 128; });
    Picture picture;
    FrameReader(64, 48, Depth::kEightBit).read(*frame, picture);
    const double grey = (126 - 16) * 255.0 / 219;
    EXPECT_LE(worstDifference(picture, flatPicture(64, 48, grey, grey, grey)), 1);
}

}  // namespace
}  // namespace lumiset::media

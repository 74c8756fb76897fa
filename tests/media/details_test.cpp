// What files tell beside their samples is kept, or a sentence tells that it is not.

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <fstream>
#include <iterator>

#include "media/av.h"
#include "media/still_details.h"
#include "media/tiff_directory.h"
#include "media/video_encoder.h"
#include "tests/media/media_clip.h"
#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

using MediaDetails = MediaTest;

bool mentions(const std::vector<std::string>& notes, const std::string& word) {
    return std::any_of(notes.begin(), notes.end(),
                       [&](const std::string& note) { return note.find(word) != std::string::npos; });
}

std::vector<std::string> writeOne(const std::string& path, const VideoFormat& format, const Picture& picture,
                                  const SinkOptions& options = {}) {
    const auto sink = openSink(path, format, options);
    sink->write(picture);
    sink->finish();
    return sink->notes();
}

const SideData* sideDataOf(const VideoFormat& format, int type) {
    for (const SideData& side : format.sideData) {
        if (side.type == type) {
            return &side;
        }
    }
    return nullptr;
}

TEST_F(MediaDetails, DepthGoesAsFarAsTheFileCanHold) {
    struct Case {
        const char* file;
        const char* codec;
        int bits;     ///< of the file; the input has 12
        bool halves;  ///< the height of chroma, which the input has in full
        int wanted = 0;
        int input = 12;
    };
    const Case cases[] = {
        {"a.mp4", "", 10, true},        {"x.mkv", "libx265", 10, true}, {"a.mov", "prores", 10, false},
        {"a.mkv", "ffv1", 12, false},   {"a.webm", "", 10, true},       {"a.y4m", "", 12, false},
        {"a.png", "", 16, false},       {"a.tiff", "", 16, false},      {"a.jpg", "", 8, false},
        {"a.webp", "", 8, false},       {"a.mpg", "", 8, true},         {"a.mp4", "", 8, true, 8},
        {"a.mp4", "", 10, true, 10, 8}, {"a.y4m", "", 16, false, 16, 8}};
    const Picture deep = colorPatches(64, 48, false, Depth::kFloat);
    VideoFormat format = formatOf(deep, false);
    format.chroma = Chroma::k422;
    format.chromaName = "4:2:2";
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.file) + " " + c.codec);
        SinkOptions options;
        options.codec = c.codec;
        options.bits = c.wanted;
        format.bitDepth = c.input;
        const std::vector<std::string> notes = writeOne(path(c.file), format, deep, options);
        EXPECT_EQ(mentions(notes, "12 bits"), c.wanted == 0 && c.bits < 12);
        EXPECT_EQ(mentions(notes, "(4:2:2) is reduced to 4:2:0"), c.halves);
        SourceOptions reading;
        reading.keepDepth = true;
        const auto source = openSource(path(c.file), reading);
        EXPECT_EQ(source->format().bitDepth, c.bits);
        EXPECT_EQ(source->format().depth, c.bits > 8 ? Depth::kFloat : Depth::kEightBit);
        EXPECT_EQ(readAll(*source).at(0).depth, source->format().depth);
        std::filesystem::remove(path(c.file));
    }
}

TEST_F(MediaDetails, HdrIsToldAndItsDataKept) {
    const Picture picture = flatPicture(64, 48, 100, 120, 140, 255, Depth::kFloat);
    VideoFormat format = formatOf(picture, false);
    format.bitDepth = 10;
    format.color.matrix = 9;
    format.color.primaries = 9;
    format.color.transfer = 16;
    format.color.range = ColorRange::kFull;
    std::size_t size = 0;
    AVMasteringDisplayMetadata* mastering = av_mastering_display_metadata_alloc();
    mastering->has_luminance = 1;
    mastering->max_luminance = {1000, 1};
    mastering->min_luminance = {1, 200};
    mastering->has_primaries = 1;
    for (int i = 0; i < 3; i++) {
        mastering->display_primaries[i][0] = {30 + i, 100};
        mastering->display_primaries[i][1] = {20 + i, 100};
    }
    mastering->white_point[0] = mastering->white_point[1] = {1, 3};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(mastering);
    size = sizeof *mastering;
    format.sideData.push_back({AV_PKT_DATA_MASTERING_DISPLAY_METADATA, {bytes, bytes + size}});
    av_free(mastering);
    for (const char* name : {"a.mp4", "a.mkv", "a.webm"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(mentions(writeOne(path(name), format, picture), "HDR (PQ)"));
        const auto source = openSource(path(name));
        EXPECT_TRUE(source->format().color.isHdr());
        EXPECT_EQ(source->format().color.primaries, 9);
        const SideData* side = sideDataOf(source->format(), AV_PKT_DATA_MASTERING_DISPLAY_METADATA);
        ASSERT_NE(side, nullptr);
        const auto* read = reinterpret_cast<const AVMasteringDisplayMetadata*>(side->bytes.data());
        EXPECT_NEAR(av_q2d(read->max_luminance), 1000, 0.5);
        if (std::string(name) == "a.mp4") {
            EXPECT_EQ(source->format().color.range, ColorRange::kFull);
        }
    }
    const std::vector<std::string> notes = writeOne(path("a.y4m"), format, picture);
    EXPECT_TRUE(mentions(notes, "Mastering display"));
    EXPECT_TRUE(mentions(notes, "colour tags"));
    EXPECT_TRUE(mentions(writeOne(path("a.png"), format, picture), "HDR (PQ)"));
}

std::vector<std::uint8_t> smallProfile() {
    std::vector<std::uint8_t> profile(132);
    profile[3] = 132;
    profile[8] = 4;
    std::copy_n("mntrRGB XYZ ", 12, profile.begin() + 12);
    std::copy_n("acsp", 4, profile.begin() + 36);
    return profile;
}

// A PNG file that tells where its white, red, green and blue are, in hundred-thousandths.
void writeWithPrimaries(const std::string& path, const VideoFormat& format, const Picture& picture,
                        const std::vector<std::uint32_t>& xy) {
    writeOne(path, format, picture);
    std::vector<std::uint8_t> chunk = {0, 0, 0, 32, 'c', 'H', 'R', 'M'};
    const auto add = [&](std::uint32_t n) {
        for (const int shift : {24, 16, 8, 0}) {
            chunk.push_back(static_cast<std::uint8_t>(n >> shift));
        }
    };
    std::for_each(xy.begin(), xy.end(), add);
    const AVCRC* table = av_crc_get_table(AV_CRC_32_IEEE_LE);
    add(~av_crc(table, ~0U, chunk.data() + 4, chunk.size() - 4));
    std::string file{std::istreambuf_iterator<char>(std::ifstream(path, std::ios::binary).rdbuf()), {}};
    file.insert(8 + 25, std::string(chunk.begin(), chunk.end()));  // behind the signature and the header
    std::ofstream(path, std::ios::binary) << file;
}

TEST_F(MediaDetails, PrimariesAreToldWhereTheyMatter) {
    const Picture picture = flatPicture(64, 48, 100, 120, 140);
    VideoFormat format = formatOf(picture, false);
    const std::vector<std::uint32_t> usual = {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
    const std::vector<std::uint32_t> wide = {31270, 32900, 68000, 32000, 26500, 69000, 15000, 6000};
    const auto notesOf = [&](const std::vector<std::uint32_t>& xy) {
        writeWithPrimaries(path("p.png"), format, picture, xy);
        const auto source = openSource(path("p.png"));
        EXPECT_EQ(sideDataOf(source->format(), AV_PKT_DATA_MASTERING_DISPLAY_METADATA), nullptr);
        return source->notes();
    };
    EXPECT_TRUE(notesOf(usual).empty());
    EXPECT_TRUE(mentions(notesOf(wide), "primaries"));
    format.sideData.push_back({AV_PKT_DATA_ICC_PROFILE, smallProfile()});
    EXPECT_TRUE(notesOf(wide).empty());
}

// A maker, an orientation that says upright, and below them an exposure of 3/500 s, which is another number with its
// bytes the wrong way round.
const std::vector<std::uint8_t> kExif = {'M',  'M',  0,    42,   0,   0,   0,   8,   0, 3,                            //
                                         1,    0x0F, 0,    2,    0,   0,   0,   8,   0, 0, 0, 50,                     //
                                         1,    0x12, 0,    3,    0,   0,   0,   1,   0, 1, 0, 0,                      //
                                         0x87, 0x69, 0,    4,    0,   0,   0,   1,   0, 0, 0, 58,                     //
                                         0,    0,    0,    0,                                                         //
                                         'L',  'u',  'm',  'i',  's', 'e', 't', 0,                                    //
                                         0,    1,    0x82, 0x9A, 0,   5,   0,   0,   0, 1, 0, 0,  0, 76, 0, 0, 0, 0,  //
                                         0,    0,    0,    3,    0,   0,   1,   0xF4};

// What of it every kind of file holds.
void expectExif(const std::vector<std::uint8_t>& exif) {
    const std::vector<TiffEntry> entries = readTiff(exif);
    ASSERT_GE(entries.size(), 2U);
    EXPECT_EQ(std::string(entries[0].value.begin(), entries[0].value.end()), std::string("Lumiset\0", 8));
    EXPECT_NEAR(tiffNumber(entries.back().below, 0x829A), 0.006, 1e-9);
}

TEST_F(MediaDetails, OfStillsGoFromFileToFile) {
    const Picture picture = colorPatches(16, 16, false);
    VideoFormat format = formatOf(picture, false);
    format.details.dotsPerInch = 300;
    format.details.exif = kExif;
    const std::vector<std::uint8_t> profile = smallProfile();
    format.sideData.push_back({AV_PKT_DATA_ICC_PROFILE, profile});
    const Picture clear = colorPatches(16, 16, true);
    // The last one is written from what the one before it tells.
    for (const char* name : {"a.png", "a.jpg", "a.webp", "alpha.webp", "a.tiff", "again.png"}) {
        SCOPED_TRACE(name);
        const bool webp = std::string(name).ends_with("webp");
        const Picture& written = std::string(name) == "alpha.webp" ? clear : picture;
        EXPECT_EQ(mentions(writeOne(path(name), format, written), "resolution"), webp);
        const auto source = openSource(path(name));
        if (!webp) {
            EXPECT_NEAR(source->format().details.dotsPerInch, 300, 0.1);
        }
        expectExif(source->format().details.exif);
        const SideData* side = sideDataOf(source->format(), AV_PKT_DATA_ICC_PROFILE);
        ASSERT_NE(side, nullptr);
        EXPECT_EQ(side->bytes, profile);
        EXPECT_LE(worstDifference(readAll(*source).at(0), written, 3, 3), webp ? 24 : 8);
        format.details = source->format().details;
        format.details.dotsPerInch = 300;
    }
    const std::vector<std::string> notes = writeOne(path("a.bmp"), format, picture);
    EXPECT_TRUE(mentions(notes, "colour profile"));
    EXPECT_TRUE(mentions(notes, "Exif"));
    EXPECT_TRUE(mentions(notes, "resolution"));
    // What JPEG's segments are too small for.
    format.details.exif.resize(70000);
    EXPECT_TRUE(mentions(writeOne(path("b.jpg"), format, picture), "Exif"));
    // An orientation is carried out when the picture is read, and no second time by those who read what is written; a
    // small picture that the details have would not show what is written.
    std::vector<std::uint8_t> turned = kExif;
    turned[31] = 6;
    turned[49] = 8;
    turned.insert(turned.begin(), {0xFF, 0xD8, 0xFF, 0xE1, 0, 92, 'E', 'x', 'i', 'f', 0, 0});
    turned.insert(turned.end(), {0xFF, 0xDA, 0, 2});
    EXPECT_EQ(readStillDetails(turned).exif, kExif);
    // Damaged details are no reason to fail.
    std::vector<std::uint8_t> cut = {0xFF, 0xD8, 0xFF, 0xE1, 0xFF, 0xFF, 'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42};
    EXPECT_TRUE(readStillDetails(cut).exif.empty());
    cut = {'I', 'I', 42, 0, 0xF0, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(readStillDetails(cut).dotsPerInch, 0);
}

TEST_F(MediaDetails, ChaptersTimeCodeAndAttachmentsFollowTheCut) {
    writeFullClip(path("full.mkv"));
    struct Case {
        const char* file;
        bool keepsAttachments;
        bool keepsCover;
        const char* subtitles;
    };
    for (const Case& c : {Case{"copy.mkv", true, true, ""},
                          {"copy.mov", false, false, "(subrip) are written anew as mov_text"},
                          {"copy.m4v", false, true, "(subrip) are written anew as mov_text"},
                          {"copy.webm", false, false, "(subrip) are written anew as webvtt"}}) {
        SCOPED_TRACE(c.file);
        SourceOptions options;
        options.startSeconds = 0.4;
        const auto source = openSource(path("full.mkv"), options);
        const auto sink = openSink(path(c.file), source->format(), {}, source.get());
        for (const Picture& picture : readAll(*source)) {
            sink->write(picture);
        }
        sink->finish();
        const Contents contents = contentsOf(path(c.file));
        ASSERT_EQ(contents.chapters.size(), 2U);
        EXPECT_NEAR(contents.chapters[1], 0.6, 0.002);
        const bool webm = std::string(c.file) == "copy.webm";
        EXPECT_EQ(contents.timecode, webm ? "" : "01:00:00:10");
        EXPECT_EQ(mentions(sink->notes(), "time code"), webm);
        EXPECT_EQ(contents.attachments, c.keepsAttachments ? 1 : 0);
        EXPECT_EQ(contents.cover.empty(), !c.keepsCover);
        EXPECT_TRUE(contents.cover.empty() || contents.cover == contentsOf(path("full.mkv")).cover);
        EXPECT_NE(contents.subtitle.find("Hello"), std::string::npos);
        EXPECT_NEAR(contents.subtitleSeconds, 0.6, 0.002);
        EXPECT_EQ(mentions(sink->notes(), "attachments"), !c.keepsAttachments);
        EXPECT_EQ(mentions(sink->notes(), "cover"), !c.keepsCover);
        EXPECT_EQ(mentions(sink->notes(), "subtitles"), *c.subtitles != '\0');
        EXPECT_TRUE(mentions(sink->notes(), c.subtitles) || *c.subtitles == '\0');
    }
    const auto source = openSource(path("full.mkv"));
    const auto sink = openSink(path("bare.y4m"), source->format(), {}, source.get());
    sink->write(readAll(*source).at(0));
    sink->finish();
    for (const char* lost : {"chapters", "time code (01:00:00:00)", "cover", "subtitles (subrip) are left out"}) {
        EXPECT_TRUE(mentions(sink->notes(), lost)) << lost;
    }
}

TEST_F(MediaDetails, OfSinglePicturesAndLevelsBeyondWhiteAreToldToBeLost) {
    const Picture picture = flatPicture(64, 48, 100, 120, 140);
    const VideoFormat format = formatOf(picture, false);
    const VideoPlan plan = planVideo(*av_guess_format("mp4", nullptr, nullptr), "a.mp4", {}, {format});
    VideoEncoder encoder(plan, format, {1, 25}, 1, false, "a.mp4");
    const std::shared_ptr<AVFrame> frame = encoder.frameOf(picture);
    AVFrameSideData* captions = av_frame_new_side_data(frame.get(), AV_FRAME_DATA_A53_CC, 3);
    std::copy_n("\xFC\x94\x2C", 3, captions->data);
    encoder.send(frame, 0);
    encoder.sendEnd();
    std::ofstream file(path("captions.h264"), std::ios::binary);
    encoder.receive([&](AVPacket& packet) { file.write(reinterpret_cast<char*>(packet.data), packet.size); });
    file.close();
    // Limited range of 10 bits ends at 940.
    const auto writeGrey = [&](const char* name, int level) {
        std::ofstream grey(path(name), std::ios::binary);
        grey << "YUV4MPEG2 W16 H16 F25:1 Ip A1:1 C420p10 XYSCSS=420P10\nFRAME\n";
        for (int i = 0; i < 16 * 16 * 3 / 2; i++) {
            const int sample = i < 256 ? level : 512;
            grey << static_cast<char>(sample & 0xFF) << static_cast<char>(sample >> 8);
        }
    };
    writeGrey("white.y4m", 940);
    writeGrey("whiter.y4m", 1000);
    for (const auto& [name, told] :
         {std::pair{"captions.h264", "captions"}, {"whiter.y4m", "beyond"}, {"white.y4m", ""}}) {
        const auto source = openSource(path(name));
        EXPECT_EQ(readAll(*source).size(), 1U);
        EXPECT_EQ(source->notes().size(), *told == '\0' ? 0U : 1U) << name;
        EXPECT_TRUE(*told == '\0' || mentions(source->notes(), told)) << name;
    }
}

}  // namespace
}  // namespace lumiset::media

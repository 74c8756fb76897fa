// What files tell beside their samples is kept, or a sentence tells that it is not.

#include "media/av.h"
#include "media/still_details.h"
#include "media/video_plan.h"
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
        int bits;  ///< of the file; the input has 12
    };
    const Case cases[] = {{"a.mp4", "", 10},  {"x.mkv", "libx265", 10}, {"a.mov", "prores", 10}, {"a.mkv", "ffv1", 12},
                          {"a.webm", "", 10}, {"a.y4m", "", 12},        {"a.png", "", 16},       {"a.tiff", "", 16},
                          {"a.jpg", "", 8},   {"a.webp", "", 8},        {"a.mpg", "", 8}};
    const Picture deep = colorPatches(64, 48, false, Depth::kFloat);
    VideoFormat format = formatOf(deep, false);
    format.bitDepth = 12;
    format.chroma = Chroma::k422;
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.file) + " " + c.codec);
        SinkOptions options;
        options.codec = c.codec;
        const std::vector<std::string> notes = writeOne(path(c.file), format, deep, options);
        EXPECT_EQ(mentions(notes, "12 bits"), c.bits < 12);
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

TEST_F(MediaDetails, OfStillsGoFromFileToFile) {
    const Picture picture = colorPatches(16, 16, false);
    VideoFormat format = formatOf(picture, false);
    format.details.dotsPerInch = 300;
    // One entry, the orientation, upright.
    format.details.exif = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 0x12, 0, 3, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
    std::vector<std::uint8_t> profile(132);
    profile[3] = 132;
    profile[8] = 4;
    std::copy_n("mntrRGB XYZ ", 12, profile.begin() + 12);
    std::copy_n("acsp", 4, profile.begin() + 36);
    format.sideData.push_back({AV_PKT_DATA_ICC_PROFILE, profile});
    for (const char* name : {"a.png", "a.jpg"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(writeOne(path(name), format, picture).empty());
        const auto source = openSource(path(name));
        EXPECT_NEAR(source->format().details.dotsPerInch, 300, 0.1);
        EXPECT_EQ(source->format().details.exif, format.details.exif);
        const SideData* side = sideDataOf(source->format(), AV_PKT_DATA_ICC_PROFILE);
        ASSERT_NE(side, nullptr);
        EXPECT_EQ(side->bytes, profile);
        EXPECT_LE(worstDifference(readAll(*source).at(0), picture, 3, 3), 8);
    }
    const std::vector<std::string> notes = writeOne(path("a.tiff"), format, picture);
    EXPECT_TRUE(mentions(notes, "colour profile"));
    EXPECT_TRUE(mentions(notes, "Exif"));
    EXPECT_NEAR(openSource(path("a.tiff"))->format().details.dotsPerInch, 300, 0.1);
    EXPECT_TRUE(mentions(writeOne(path("a.webp"), format, picture), "resolution"));
    // An orientation is carried out when the picture is read, and no second time by those who read what is written.
    std::vector<std::uint8_t> turned = format.details.exif;
    turned[19] = 6;
    turned.insert(turned.begin(), {0xFF, 0xD8, 0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0});
    turned.insert(turned.end(), {0xFF, 0xDA, 0, 2});
    EXPECT_EQ(readStillDetails(turned).exif, format.details.exif);
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
    };
    for (const Case& c : {Case{"copy.mkv", true}, {"copy.mov", false}}) {
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
        EXPECT_EQ(contents.timecode, "01:00:00:10");
        EXPECT_EQ(contents.attachments, c.keepsAttachments ? 1 : 0);
        EXPECT_EQ(contents.subtitles, c.keepsAttachments ? 1 : 0);
        EXPECT_EQ(mentions(sink->notes(), "attachments"), !c.keepsAttachments);
        EXPECT_EQ(mentions(sink->notes(), "subtitles (subrip)"), !c.keepsAttachments);
    }
    const auto source = openSource(path("full.mkv"));
    const auto sink = openSink(path("bare.y4m"), source->format(), {}, source.get());
    sink->write(readAll(*source).at(0));
    sink->finish();
    EXPECT_TRUE(mentions(sink->notes(), "chapters"));
}

}  // namespace
}  // namespace lumiset::media

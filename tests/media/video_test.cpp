// Times, shapes, fields, sound and sequences.

#include "media/rate.h"
#include "media/sound_reader.h"
#include "tests/media/media_clip.h"
#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

using MediaVideo = MediaTest;

// Pictures that tell their number by their brightness.
std::vector<Picture> numbered(int count) {
    std::vector<Picture> pictures;
    for (int i = 0; i < count; i++) {
        pictures.push_back(flatPicture(32, 32, 10 + 10 * i, 10 + 10 * i, 10 + 10 * i));
        pictures.back().pts = i;
    }
    return pictures;
}
int numberOf(const Picture& picture) {
    return static_cast<int>(std::lround((sampleOf(picture, 16, 16, 1) - 10) / 10));
}

std::string shown(const std::vector<Picture>& pictures) {
    std::string numbers;
    for (const Picture& picture : pictures) {
        numbers += std::to_string(numberOf(picture));
    }
    return numbers;
}

TEST_F(MediaVideo, KeepsUnevenTimesAndTheShapeOfPixels) {
    const std::vector<std::int64_t> times = {0, 1, 5, 6, 12, 13};
    VideoFormat format = formatOf(flatPicture(32, 32, 0, 0, 0), false);
    format.pixelAspect = {16, 15};
    for (const char* name : {"a.mp4", "a.mov", "a.mkv", "a.webm"}) {
        SCOPED_TRACE(name);
        std::vector<Picture> pictures = numbered(6);
        const auto sink = openSink(path(name), format);
        for (std::size_t i = 0; i < times.size(); i++) {
            pictures[i].pts = times[i] + 40;  // the first picture becomes time 0
            sink->write(pictures[i]);
        }
        sink->finish();
        const auto source = openSource(path(name));
        EXPECT_NEAR(source->format().pixelAspect.value(), 16.0 / 15, 0.005);
        const std::vector<Picture> read = readAll(*source);
        ASSERT_EQ(read.size(), times.size());
        for (std::size_t i = 0; i < times.size(); i++) {
            EXPECT_NEAR(read[i].timeSeconds, static_cast<double>(times[i]) / 25, 0.0011);
            EXPECT_EQ(numberOf(read[i]), static_cast<int>(i));
        }
    }
    // A constant rate shows each picture until the next.
    std::vector<Picture> pictures = numbered(6);
    const auto sink = openSink(path("a.y4m"), format);
    for (std::size_t i = 0; i < times.size(); i++) {
        pictures[i].pts = times[i];
        sink->write(pictures[i]);
    }
    sink->finish();
    EXPECT_EQ(shown(readAll(path("a.y4m"))), "01111233333345");

    // So does reading at one that is asked for.
    struct Case {
        Rational rate;
        double start;
        double duration;
        const char* shown;
    };
    const Case kCases[] = {{{25, 1}, 0, 99, "01111233333345"},
                           {{50, 1}, 0.2, 99, "223333333333334455"},
                           {{5, 1}, 0, 99, "134"},
                           {{25, 1}, 0.12, 0.2, "11233"}};
    for (const Case& each : kCases) {
        SourceOptions options;
        options.frameRate = each.rate;
        options.startSeconds = each.start;
        options.durationSeconds = each.duration;
        const auto source = openSource(path("a.mkv"), options);
        EXPECT_EQ(source->format().frameRate.value(), each.rate.value());
        const std::vector<Picture> read = readAll(*source);
        EXPECT_EQ(shown(read), each.shown);
        for (std::size_t i = 0; i < read.size(); i++) {
            EXPECT_NEAR(read[i].timeSeconds, each.start + static_cast<double>(i) / each.rate.value(), 1e-6);
        }
    }
}

TEST_F(MediaVideo, TakesTheNearestRateThatTheCodecHas) {
    struct Case {
        const char* name;
        Rational rate;
        double written;
        bool told;
    };
    for (const Case& each : {Case{"a.mpg", {23976, 1000}, 24000.0 / 1001, false},
                             {"a.vob", {2997, 125}, 24000.0 / 1001, false},
                             {"a.mxf", {23976, 1000}, 24000.0 / 1001, false},
                             {"b.mpg", {17, 1}, 16, true},
                             {"a.ts", {15, 1}, 15, false},
                             {"a.m2ts", {23976, 1000}, 24000.0 / 1001, false}}) {
        SCOPED_TRACE(each.name);
        VideoFormat format = formatOf(flatPicture(64, 48, 0, 0, 0), false);
        format.frameRate = each.rate;
        format.timeBase = {each.rate.den, each.rate.num};
        const auto sink = openSink(path(each.name), format);
        for (int i = 0; i < 12; i++) {
            Picture picture = flatPicture(64, 48, 10, 20 * i, 10);
            picture.pts = i;
            sink->write(picture);
        }
        sink->finish();
        EXPECT_EQ(!sink->notes().empty(), each.told);
        const auto source = openSource(path(each.name));
        EXPECT_NEAR(source->format().frameRate.value(), each.written, 0.01);
        EXPECT_NEAR(static_cast<double>(readAll(*source).size()), 12 * each.written / each.rate.value(), 1.01);
    }
}

TEST_F(MediaVideo, HoldsAPictureForAsLongAsItIsAskedFor) {
    writePictures(path("a.png"), formatOf(flatPicture(32, 32, 0, 0, 0), false), {flatPicture(32, 32, 50, 50, 50)});
    SourceOptions options;
    options.startSeconds = 0.5;
    std::vector<Picture> read = readAll(path("a.png"), options);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].timeSeconds, 0.52) << "the first of the times that pictures have";
    options.durationSeconds = 2;
    options.frameRate = {10, 1};
    read = readAll(path("a.png"), options);
    EXPECT_EQ(shown(read), "44444444444444444444");
    EXPECT_NEAR(read.back().timeSeconds, 2.4, 1e-9);
}

TEST(Rate, IsReadAsPeopleWriteIt) {
    struct Case {
        const char* text;
        Rational rate;  // 0: none
    };
    const Case kCases[] = {{"25", {25, 1}},
                           {"29.97", {30000, 1001}},
                           {"23.976", {24000, 1001}},
                           {"23.98", {24000, 1001}},
                           {"59.94", {60000, 1001}},
                           {"12.5", {12500, 1000}},
                           {"30000/1001", {30000, 1001}},
                           {"0.5", {500, 1000}},
                           {"0", {0, 1}},
                           {"24/0", {0, 1}},
                           {"-5", {0, 1}},
                           {"fast", {0, 1}},
                           {"20000", {0, 1}},
                           {"1.5/2", {0, 1}}};
    for (const Case& each : kCases) {
        const Rational rate = parseRate(each.text).value_or(Rational{0, 1});
        EXPECT_EQ(rate.num, each.rate.num) << each.text;
        EXPECT_EQ(rate.den, each.rate.den) << each.text;
    }
}

TEST_F(MediaVideo, TellsFieldsAndTheirOrder) {
    for (const bool topFirst : {true, false}) {
        VideoFormat format = formatOf(flatPicture(64, 64, 0, 0, 0), false);
        format.chroma = Chroma::k420;
        format.interlaced = true;
        format.topFieldFirst = topFirst;
        Picture woven = flatPicture(64, 64, 20, 20, 200);
        for (int y = 1; y < 64; y += 2) {
            for (int x = 0; x < 64; x++) {
                setPixel(woven, x, y, 200, 160, 20);
            }
        }
        woven.interlaced = true;
        woven.topFieldFirst = topFirst;
        for (const auto& [name, codec] :
             {std::pair{"a.mp4", ""}, {"a.mkv", ""}, {"a.mov", "prores"}, {"a.mpg", ""}, {"a.y4m", ""}}) {
            SCOPED_TRACE(name);
            SinkOptions options;
            options.codec = codec;
            writePictures(path(name), format, {woven, woven, woven}, options);
            const auto source = openSource(path(name));
            EXPECT_TRUE(source->format().interlaced);
            EXPECT_EQ(source->format().topFieldFirst, topFirst);
            const std::vector<Picture> read = readAll(*source);
            ASSERT_EQ(read.size(), 3U);
            EXPECT_TRUE(read[1].interlaced);
            EXPECT_EQ(read[1].topFieldFirst, topFirst);
            // Fields have chroma of their own: neighbouring rows keep colours that progressive 4:2:0 would mix.
            EXPECT_LE(worstDifference(read[1], woven, 0, 3), 25);
        }
    }
    writePictures(path("p.mp4"), formatOf(flatPicture(64, 64, 0, 0, 0), false), {flatPicture(64, 64, 9, 9, 9)});
    EXPECT_FALSE(openSource(path("p.mp4"))->format().interlaced);
}

TEST_F(MediaVideo, StartsAndStopsWhereAsked) {
    writePictures(path("a.mp4"), formatOf(flatPicture(32, 32, 0, 0, 0), false), numbered(20));
    writePictures(path("a_%03d.png"), formatOf(flatPicture(32, 32, 0, 0, 0), false), numbered(20));
    for (const std::string name : {"a.mp4", "a_%03d.png"}) {
        SCOPED_TRACE(name);
        SourceOptions options;
        options.startSeconds = 0.30;  // between picture 7 at 0.28 and picture 8
        options.durationSeconds = 0.20;
        const auto source = openSource(path(name), options);
        EXPECT_EQ(source->format().frameCount, 5);
        for (int round = 0; round < 2; round++) {
            const std::vector<Picture> read = readAll(*source);
            ASSERT_EQ(read.size(), 5U);
            EXPECT_EQ(numberOf(read.front()), 8);
            EXPECT_NEAR(read.front().timeSeconds, 0.32, 1e-6);
            EXPECT_EQ(numberOf(read.back()), 12);
            source->restart(options.startSeconds);
        }
        options.startSeconds = 5;
        EXPECT_THROW(openSource(path(name), options), MediaError);
    }
}

TEST_F(MediaVideo, CarriesSoundInStep) {
    // Flash and beep share second 1 of the clip.
    writeFlashAndBeep(path("clip.mkv"));
    struct Case {
        const char* file;
        double start;
        std::size_t notes;
    };
    for (const Case& c : {Case{"copy.mkv", 0, 0},
                          {"copy.mov", 0, 0},
                          {"cut.mkv", 0.6, 0},
                          {"cut.mov", 0.6, 0},
                          {"new.mp4", 0.6, 1},
                          {"new.webm", 0, 1}}) {
        SCOPED_TRACE(c.file);
        SourceOptions options;
        options.startSeconds = c.start;
        options.durationSeconds = 1.0;
        if (c.start == 0) {
            options.durationSeconds = 1.4;
        }
        const auto source = openSource(path("clip.mkv"), options);
        const auto sink = openSink(path(c.file), source->format(), {}, source.get());
        for (const Picture& picture : readAll(*source)) {
            sink->write(picture);
        }
        sink->finish();
        EXPECT_EQ(sink->notes().size(), c.notes);
        EXPECT_EQ(contentsOf(path(c.file)).sounds, 2);
        double flash = -1;
        for (const Picture& picture : readAll(path(c.file))) {
            if (flash < 0 && sampleOf(picture, 16, 16, 1) > 128) {
                flash = picture.timeSeconds;
            }
        }
        EXPECT_NEAR(flash, 1.0 - c.start, 0.002);
        EXPECT_NEAR(firstLoudSecond(path(c.file)), flash, 0.03);
        EXPECT_NEAR(soundLength(path(c.file)), options.durationSeconds, 0.06);
        // Programs that play it get the same from every moment on, back and forth.
        const auto sound = openSound(openSource(path(c.file))->origin());
        ASSERT_NE(sound, nullptr);
        std::vector<float> frames(2 * kSoundRate);
        for (const double from : {0.0, flash - 0.2, 0.1}) {
            sound->seek(from);
            const auto count = sound->read(frames.data(), kSoundRate);
            EXPECT_LE(static_cast<double>(count) / kSoundRate, options.durationSeconds - from + 0.06);
            const auto loud =
                std::find_if(frames.begin(), frames.end(), [](float value) { return std::abs(value) > 0.2F; });
            EXPECT_NEAR(from + static_cast<double>((loud - frames.begin()) / 2) / kSoundRate, flash, 0.03) << from;
        }
    }
    // A kind of file that has no sound says that it goes.
    const auto source = openSource(path("clip.mkv"));
    const auto sink = openSink(path("silent.y4m"), source->format(), {}, source.get());
    sink->write(readAll(*source).at(0));
    sink->finish();
    EXPECT_EQ(sink->notes().size(), 1U);
}

TEST_F(MediaVideo, ReadsAndNumbersSequences) {
    const VideoFormat format = formatOf(flatPicture(32, 32, 0, 0, 0), false);
    writePictures(path("a_%04d.png:17"), format, numbered(4));
    EXPECT_EQ(files(), (std::vector<std::string>{"a_0017.png", "a_0018.png", "a_0019.png", "a_0020.png"}));

    SourceOptions options;
    options.frameRate = {10, 1};
    auto source = openSource(path("a_%04d.png"), options);
    EXPECT_EQ(source->format().firstNumber, 17);
    EXPECT_EQ(source->format().frameCount, 4);
    std::vector<Picture> read = readAll(*source);
    ASSERT_EQ(read.size(), 4U);
    EXPECT_EQ(numberOf(read[3]), 3);
    EXPECT_NEAR(read[3].timeSeconds, 0.3, 1e-9);

    read = readAll(path("a_%04d.png:18-19"));
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(numberOf(read[0]), 1);

    std::filesystem::remove(path("a_0019.png"));
    try {
        openSource(path("a_%04d.png"));
        FAIL() << "a gap went unnoticed";
    } catch (const MediaError& error) {
        EXPECT_NE(std::string(error.what()).find("a_0019.png"), std::string::npos) << error.what();
    }
}

TEST_F(MediaVideo, TurnsPicturesOfCamerasThatWereTurned) {
    // Stored lying on its side: the left column is red, everything else blue.
    Picture stored = flatPicture(32, 16, 255, 0, 0);
    for (int y = 0; y < 16; y++) {
        for (int x = 0; x < 8; x++) {
            setPixel(stored, x, y, 0, 0, 255);
        }
    }
    SinkOptions lossless;
    lossless.codec = "ffv1";
    writePictures(path("stored.mkv"), formatOf(stored, false), {stored}, lossless);
    remuxTurned(path("stored.mkv"), path("turned.mov"));
    const auto source = openSource(path("turned.mov"));
    EXPECT_EQ(source->format().width, 16);
    EXPECT_EQ(source->format().height, 32);
    const Picture picture = readAll(*source).at(0);
    ASSERT_EQ(picture.height, 32);
    // Turned clockwise, the left side comes to the top.
    EXPECT_EQ(sampleOf(picture, 8, 2, 2), 255);
    EXPECT_EQ(sampleOf(picture, 8, 28, 0), 255);
}

TEST_F(MediaVideo, SceneIsTheSameForATimeAndHasSoftAlpha) {
    const std::vector<Picture> all = readAll("scene:160x90:1:10");
    ASSERT_EQ(all.size(), 10U);
    SourceOptions options;
    options.startSeconds = 0.6;
    const std::vector<Picture> late = readAll("scene:160x90:1:10", options);
    ASSERT_EQ(late.size(), 4U);
    EXPECT_EQ(worstDifference(late[1], all[7]), 0);
    EXPECT_GT(worstDifference(all[0], all[9]), 100);  // it moves
    EXPECT_EQ(sampleOf(all[0], 0, 89, 3), 0);
    EXPECT_EQ(sampleOf(all[0], 80, 45, 3), 255);
    bool soft = false;
    for (int x = 0; x < 40; x++) {
        const double alpha = sampleOf(all[0], x, 70, 3);
        soft = soft || (alpha > 60 && alpha < 200);
    }
    EXPECT_TRUE(soft);

    options.depth = Depth::kFloat;
    EXPECT_LE(worstDifference(readAll("scene:160x90:1:10", options).at(1), all[7]), 0.51);
    EXPECT_EQ(readAll("scene:7x300:0.1:30000/1001").size(), 3U);
    for (const char* wrong :
         {"scene:0x90", "scene:90", "scene:20000x20", "scene:64x64:0", "scene:64x64:1:0", "scene:"}) {
        EXPECT_THROW(openSource(wrong), MediaError) << wrong;
    }
}

}  // namespace
}  // namespace lumiset::media

// Pictures survive files: colours, alpha and depth, in every kind of file that is written.

#include "tests/media/media_fixture.h"

namespace lumiset::media {
namespace {

struct Kind {
    const char* file;
    const char* codec;
    bool alpha;  ///< the format keeps it
    Depth depth;
    double colors;  ///< largest difference allowed in the middle of patches
    double alphas;
};

using MediaPictures = MediaTest;

TEST_F(MediaPictures, ComeBackFromEveryKindOfFile) {
    const Kind kinds[] = {
        {"a.png", "", true, Depth::kEightBit, 0, 0},      {"a.png", "", true, Depth::kFloat, 0.003, 0.003},
        {"a.tiff", "", true, Depth::kEightBit, 0, 0},     {"a.tif", "", true, Depth::kFloat, 0.003, 0.003},
        {"a.bmp", "", true, Depth::kEightBit, 0, 0},      {"a.webp", "", true, Depth::kEightBit, 24, 0},
        {"a.jpg", "", false, Depth::kEightBit, 8, 0},     {"a.mkv", "", true, Depth::kEightBit, 0, 0},
        {"a.mkv", "", true, Depth::kFloat, 0.003, 0.003}, {"a.mov", "", true, Depth::kEightBit, 2, 1},
        {"a.mov", "", true, Depth::kFloat, 2, 1},         {"a.mov", "qtrle", true, Depth::kEightBit, 0, 0},
        {"a.webm", "", true, Depth::kEightBit, 20, 3},    {"a.y4m", "", false, Depth::kEightBit, 2, 0},
        {"a.y4m", "", false, Depth::kFloat, 0.2, 0},      {"a.mp4", "", false, Depth::kEightBit, 24, 0},
        {"a.mp4", "", false, Depth::kFloat, 24, 0},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(std::string(kind.file) + " " + kind.codec + (kind.depth == Depth::kFloat ? " float" : ""));
        const Picture picture = colorPatches(64, 48, kind.alpha, kind.depth);
        SinkOptions options;
        options.codec = kind.codec;
        writePictures(path(kind.file), formatOf(picture, kind.alpha), {picture}, options);

        SourceOptions reading;
        reading.depth = kind.depth;
        const auto source = openSource(path(kind.file), reading);
        EXPECT_EQ(source->format().color.hasAlpha(), kind.alpha);
        const bool proRes = std::string(kind.file) == "a.mov" && options.codec.empty();
        EXPECT_EQ(source->format().bitDepth > 8, proRes || kind.depth == Depth::kFloat);
        const std::vector<Picture> read = readAll(*source);
        ASSERT_EQ(read.size(), 1U);
        EXPECT_LE(worstDifference(read[0], picture, 3, 3), kind.colors);
        double worstAlpha = 0;
        for (int y = 0; y < 48; y++) {
            for (int x = 3; x < 64; x += 8) {
                worstAlpha = std::max(worstAlpha, std::abs(sampleOf(read[0], x, y, 3) - sampleOf(picture, x, y, 3)));
            }
        }
        EXPECT_LE(worstAlpha, kind.alphas);
        std::filesystem::remove(path(kind.file));
    }
}

// The primaries as any other program writes them: these values are the standards' own, so an error of ours that
// reading and writing share would show.
TEST_F(MediaPictures, TakeMatrixAndRangeFromTheSize) {
    struct Case {
        int width, y, cb, cr;  ///< pure red by BT.601 and BT.709, limited range
    };
    for (const Case& c : {Case{64, 82, 90, 240}, Case{1280, 63, 102, 240}}) {
        SCOPED_TRACE(c.width);
        std::ofstream file(path("red.y4m"), std::ios::binary);
        file << "YUV4MPEG2 W" << c.width << " H16 F25:1 Ip A1:1 C444\nFRAME\n";
        for (const int level : {c.y, c.cb, c.cr}) {
            file << std::string(static_cast<std::size_t>(c.width) * 16, static_cast<char>(level));
        }
        file.close();
        const Picture red = flatPicture(c.width, 16, 0, 0, 255);
        const std::vector<Picture> read = readAll(path("red.y4m"));
        ASSERT_EQ(read.size(), 1U);
        EXPECT_LE(worstDifference(read[0], red), 2);

        writePictures(path("back.y4m"), formatOf(red, false), {red});
        std::ifstream back(path("back.y4m"), std::ios::binary);
        std::string header;
        std::getline(back, header);
        std::getline(back, header);
        const auto plane = static_cast<std::streamoff>(c.width) * 16;
        const std::streamoff begin = back.tellg();
        const int expected[] = {c.y, c.cb, c.cr};
        for (int i = 0; i < 3; i++) {
            back.seekg(begin + i * plane);
            EXPECT_NEAR(back.get(), expected[i], 1) << "plane " << i;
        }
    }
}

TEST_F(MediaPictures, WithoutAlphaStayExactWhereTheFormatIsLossless) {
    for (const int width : {64, 33}) {
        const Picture picture = colorPatches(width, 48, false);
        for (const auto& [name, codec] :
             {std::pair{"a.png", ""}, {"a.tiff", ""}, {"a.bmp", ""}, {"a.mkv", "ffv1"}, {"a.mov", "qtrle"}}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(width));
            SinkOptions options;
            options.codec = codec;
            writePictures(path(name), formatOf(picture, false), {picture}, options);
            const auto source = openSource(path(name));
            EXPECT_FALSE(source->format().color.hasAlpha());
            EXPECT_EQ(worstDifference(readAll(*source).at(0), picture), 0);
        }
    }
}

TEST_F(MediaPictures, WithoutAlphaAreBlendedOverBlack) {
    for (const Depth depth : {Depth::kEightBit, Depth::kFloat}) {
        const Picture half = flatPicture(16, 16, 200, 100, 40, 51, depth);  // alpha 0.2
        const auto sink = openSink(path("a.y4m"), formatOf(half, true));
        sink->write(half);
        sink->finish();
        ASSERT_EQ(sink->notes().size(), 1U);
        EXPECT_NE(sink->notes()[0].find("over black"), std::string::npos);
        EXPECT_LE(worstDifference(readAll(path("a.y4m")).at(0), flatPicture(16, 16, 40, 20, 8)), 2);
    }
}

TEST_F(MediaPictures, KeepAlphaThatAnEffectMadeOfAnOpaqueSource) {
    const Picture half = flatPicture(16, 16, 200, 100, 40, 128);
    for (const char* name : {"a.png", "a.mkv"}) {
        writePictures(path(name), formatOf(half, false), {half});
        EXPECT_EQ(worstDifference(readAll(path(name)).at(0), half), 0) << name;
    }
    // The second picture of a sequence is the first with holes.
    writePictures(path("s_%d.png"), formatOf(half, false), {flatPicture(16, 16, 1, 2, 3), half});
    EXPECT_FALSE(openSource(path("s_1.png"))->format().color.hasAlpha());
    EXPECT_EQ(worstDifference(readAll(path("s_2.png")).at(0), half), 0);
}

TEST_F(MediaPictures, OfGreyAndDeepFilesAreReadExactly) {
    // 16-bit grey and one bit a pixel, as the simplest of formats spell them.
    std::ofstream(path("deep.pgm"), std::ios::binary) << "P5 2 1 65535\n" << std::string("\x80\x01\xff\xff", 4);
    SourceOptions options;
    options.depth = Depth::kFloat;
    const Picture deep = readAll(path("deep.pgm"), options).at(0);
    EXPECT_NEAR(sampleOf(deep, 0, 0, 0) / 255 * 65535, 0x8001, 0.01);
    EXPECT_NEAR(sampleOf(deep, 1, 0, 2), 255, 1e-3);
    EXPECT_NEAR(readAll(path("deep.pgm")).at(0).row(0)[1], 127.5, 0.5);  // dithered

    std::ofstream(path("bits.pbm"), std::ios::binary) << "P4 8 1\n" << '\x0f';
    const Picture bits = readAll(path("bits.pbm")).at(0);
    EXPECT_EQ(bits.row(0)[0], 255);    // 0 is paper
    EXPECT_EQ(bits.row(0)[4 * 7], 0);  // 1 is ink
}

TEST_F(MediaPictures, OfEverySizeComeBackOrAreRefused) {
    struct Sized {
        const char* file;
        const char* codec;
        int least;  ///< width that is written
    };
    const Sized kinds[] = {{"a.png", "", 1},         {"a.jpg", "", 1},         {"a.webp", "", 1},
                           {"a.tiff", "", 1},        {"a.bmp", "", 1},         {"a.mp4", "", 1},
                           {"a.mov", "prores", 1},   {"a.mov", "qtrle", 1},    {"a.mkv", "ffv1", 1},
                           {"a.webm", "", 1},        {"a.y4m", "", 1},         {"a.avi", "", 1},
                           {"a.mkv", "libx265", 32}, {"a.avi", "utvideo", 16}, {"a.ogv", "", 18},
                           {"a.mkv", "libvpx", 16},  {"a.mkv", "dnxhd", 1920}};
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 2}, {3, 3}, {7, 2}, {15, 17}, {33, 33}}) {
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        for (const Sized& kind : kinds) {
            SCOPED_TRACE(size + ' ' + kind.file + ' ' + kind.codec);
            std::vector<Picture> pictures;
            const bool still = std::string_view("png jpg webp tiff bmp").find(kind.file + 2) != std::string_view::npos;
            for (int i = 0; i < (still ? 1 : 3); i++) {
                pictures.push_back(flatPicture(width, height, 60, 200 - 50 * i, 40 + 60 * i));
            }
            SinkOptions options;
            options.codec = kind.codec;
            const auto write = [&] { writePictures(path(kind.file), formatOf(pictures[0], false), pictures, options); };
            if (width < kind.least) {
                try {
                    write();
                    ADD_FAILURE() << "not refused";
                } catch (const MediaError& error) {
                    EXPECT_NE(std::string(error.what()).find("pictures of " + size), std::string::npos) << error.what();
                }
                EXPECT_TRUE(files().empty());
                continue;
            }
            write();
            const std::vector<Picture> read = readAll(path(kind.file));
            ASSERT_EQ(read.size(), pictures.size());
            for (std::size_t i = 0; i < read.size(); i++) {
                EXPECT_LE(worstDifference(read[i], pictures[i], 0, 3), 12) << "picture " << i;
            }
            std::filesystem::remove(path(kind.file));
        }
    }
}

}  // namespace
}  // namespace lumiset::media

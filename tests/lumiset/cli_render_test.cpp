#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cmath>
#include <cstring>

#include "hostkit/module.h"
#include "hostkit/renderer.h"
#include "media/media.h"
#include "tests/lumiset/cli_run.h"
#include "tests/media/media_fixture.h"

namespace lumiset::test {
namespace {

using media::Picture;

VideoFrameDesc frameOf(Picture& picture) {
    return {picture.data.data(), picture.width, picture.height, picture.stride, 4, {0, 0}, kFormatBgra8, 0};
}

std::uint32_t pixelAt(const Picture& picture, int x, int y) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, picture.row(y) + 4 * x, 4);
    return pixel;  // 0xAARRGGBB
}

/// The largest difference of two pictures' samples where they can be seen; 256 for pictures of two sizes.
int largestDifference(const Picture& a, const Picture& b) {
    if (a.width != b.width || a.height != b.height) {
        return 256;
    }
    const auto samplesOf = [&](const Picture& picture) {
        return [&](int x, int y, int c) {
            const bool invisible = a.row(y)[4 * x + 3] == 0 && b.row(y)[4 * x + 3] == 0;
            return invisible ? 0 : picture.row(y)[4 * x + c];
        };
    };
    return static_cast<int>(test::differenceOf(a.width, a.height, 4, samplesOf(a), samplesOf(b)).largest);
}

/// A white square, 8 pixels wide, in the middle of nothing.
std::string writeSquare(const TemporaryFolder& folder) {
    media::VideoFormat format;
    format.width = 80;
    format.height = 60;
    format.color.alpha = media::AlphaKind::kStraight;
    Picture picture;
    picture.allocate(80, 60, media::Depth::kEightBit);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 80; ++x) {
            const bool inside = x >= 36 && x < 44 && y >= 26 && y < 34;
            std::memset(picture.row(y) + 4 * x, inside ? 255 : 0, 4);
        }
    }
    std::string file = folder / "square.png";
    const std::unique_ptr<media::Sink> sink = media::openSink(file, format);
    sink->write(picture);
    sink->finish();
    return file;
}

/// What the host kit makes of a clip through Outline as its width and opacity move, the fields of interlaced pictures
/// each on their own.
std::vector<Picture> outlined(const std::string& input) {
    const hostkit::Module module;
    const hostkit::EffectCatalogue catalogue(module.effectLibrary());
    const hostkit::EffectDescription& outline = catalogue.effect("Outline");
    std::vector<hostkit::EffectStage> chain{
        {hostkit::ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(outline.index)),
         hostkit::ParameterStore(outline)}};
    hostkit::ParameterStore& parameters = chain[0].parameters;
    parameters.apply(outline.preset("Red Glow"));
    parameters.addKey("Width", 0.0, "0");
    parameters.addKey("Width", 1.0, "100");
    parameters.addKey("Opacity", 0.0, "100");
    parameters.addKey("Opacity", 1.0, "0");
    hostkit::Renderer renderer(chain, kFormatBgra8);
    const double frameSeconds = 1.0 / media::openSource(input)->format().frameRate.value();
    std::vector<Picture> pictures = media::readAll(input);
    for (Picture& picture : pictures) {
        Picture source = picture;
        const hostkit::FieldOrder fields = !picture.interlaced     ? hostkit::FieldOrder::kProgressive
                                           : picture.topFieldFirst ? hostkit::FieldOrder::kTopFirst
                                                                   : hostkit::FieldOrder::kBottomFirst;
        renderer.render(frameOf(source), frameOf(picture), {picture.timeSeconds, frameSeconds, 1.0, fields});
    }
    return pictures;
}

std::vector<std::string> outlineCommand(const std::string& input, const std::string& output,
                                        std::vector<std::string> more = {}) {
    more.insert(more.begin(),
                {"render", input, output, "--overwrite", "--effect", "outline", "--preset", "Red Glow", "--key",
                 "Width@0=0", "--key", "Width@0:01s=100", "--key", "Opacity@0=100", "--key", "Opacity@1=0"});
    return more;
}

TEST(Render, DrawsTheEffectOnAPictureInEveryDepthAndLayout) {
    const TemporaryFolder folder;
    const std::string input = writeSquare(folder);
    const std::string output = folder / "out.png";
    std::vector<Picture> results;
    for (const char* depth : {"8", "float"}) {
        for (const char* layout : {"bgra", "argb"}) {
            const RunResult run = runLumiset({"render", input, output, "--effect", "Outline", "--preset", "Solid Black",
                                              "--set", "Color=#FF8000", "--depth", depth, "--layout", layout, "-y"});
            ASSERT_EQ(run.status, 0) << run.err;
            EXPECT_NE(run.err.find("1 frame in"), std::string::npos) << run.err;
            EXPECT_EQ(folder.entries(), 2) << "nothing but input and output";
            results.push_back(media::readAll(output).at(0));
        }
    }
    EXPECT_EQ(pixelAt(results[0], 40, 30), 0xFFFFFFFFU) << "the square";
    EXPECT_EQ(pixelAt(results[0], 34, 30), 0xFFFF8000U) << "the band";
    EXPECT_EQ(pixelAt(results[0], 10, 30) >> 24U, 0U) << "beyond it";
    for (const Picture& result : results) {
        EXPECT_LE(largestDifference(result, results[0]), 1);
    }
}

TEST(Render, KeepsTheOrderAndTimesOfAClipAndItsKeyframes) {
    const TemporaryFolder folder;
    const std::string input = "scene:96x64:1:12";
    const std::string output = folder / "out.mkv";
    const std::vector<Picture> expected = outlined(input);
    ASSERT_EQ(expected.size(), 12U);
    for (const char* threads : {"1", "3"}) {
        const RunResult run = runLumiset(outlineCommand(input, output, {"--codec", "ffv1", "--threads", threads}));
        ASSERT_EQ(run.status, 0) << run.err;
        const std::vector<Picture> results = media::readAll(output);
        ASSERT_EQ(results.size(), expected.size());
        for (std::size_t i = 0; i < results.size(); ++i) {
            EXPECT_LE(largestDifference(results[i], expected[i]), 0) << "picture " << i;
            EXPECT_NEAR(results[i].timeSeconds, static_cast<double>(i) / 12.0, 0.001);
        }
    }
    EXPECT_GT(largestDifference(expected[2], expected[3]), 50) << "or the order would not show";
}

TEST(Render, CutsAPieceThatLooksAsInTheWhole) {
    const TemporaryFolder folder;
    const std::string input = "scene:96x64:1:12";
    const std::vector<Picture> expected = outlined(input);
    const RunResult run = runLumiset(outlineCommand(
        input, folder / "piece.mkv", {"--codec", "ffv1", "--start", "0.25", "--duration", "0.5", "--quiet"}));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const std::vector<Picture> results = media::readAll(folder / "piece.mkv");
    ASSERT_EQ(results.size(), 6U);
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_LE(largestDifference(results[i], expected[i + 3]), 0) << "picture " << i;
    }
}

TEST(Render, RendersTheFieldsOfInterlacedVideo) {
    const TemporaryFolder folder;
    const std::string input = folder / "fields.mkv";
    {
        std::vector<Picture> pictures = media::readAll("scene:96x64:0.5:10");
        media::VideoFormat format = media::openSource("scene:96x64:0.5:10")->format();
        format.interlaced = true;
        format.topFieldFirst = true;
        media::SinkOptions options;
        options.codec = "ffv1";
        const std::unique_ptr<media::Sink> sink = media::openSink(input, format, options);
        for (Picture& picture : pictures) {
            picture.interlaced = true;
            sink->write(picture);
        }
        sink->finish();
    }
    ASSERT_TRUE(media::readAll(input).at(0).interlaced);
    const std::vector<Picture> expected = outlined(input);
    const RunResult run = runLumiset(outlineCommand(input, folder / "out.mkv", {"--codec", "ffv1"}));
    ASSERT_EQ(run.status, 0) << run.err;
    const std::vector<Picture> results = media::readAll(folder / "out.mkv");
    ASSERT_EQ(results.size(), expected.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_LE(largestDifference(results[i], expected[i]), 0) << "picture " << i;
        EXPECT_TRUE(results[i].interlaced);
    }
}

TEST(Render, AppliesSeveralEffectsInTurnEachWithItsOwnValues) {
    const TemporaryFolder folder;
    const std::string input = writeSquare(folder);
    const RunResult run =
        runLumiset({"render", input, folder / "out.png", "--effect", "Outline", "--preset", "Inked Lines", "--set",
                    "Width=60", "--effect", "Outline", "--preset", "Bold Red", "--set", "Width=100"});
    ASSERT_EQ(run.status, 0) << run.err;
    const Picture result = media::readAll(folder / "out.png").at(0);
    EXPECT_EQ(pixelAt(result, 40, 30), 0xFFFFFFFFU);
    EXPECT_EQ(pixelAt(result, 35, 30), 0xFF000000U) << "the first band, two pixels wide";
    EXPECT_EQ(pixelAt(result, 32, 30), 0xFFFF0000U) << "the second one around it";
}

TEST(Render, GoesThroughPipes) {
    const TemporaryFolder folder;
    const RunResult made = runLumiset(outlineCommand("scene:32x16:1:5", "-"));
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.out.rfind("YUV4MPEG2 W32 H16 F5:1", 0), 0U) << made.out.substr(0, 60);
    writeFile(folder / "clip.y4m", made.out);
    const RunResult passed = runLumiset(outlineCommand("-", "-"), folder / "clip.y4m");
    ASSERT_EQ(passed.status, 0) << passed.err;
    EXPECT_EQ(passed.out.size(), made.out.size());
    // The table of an MP4 file may stand at its end, farther off than what is read at once.
    const std::string clip = folder / "clip.mp4";
    ASSERT_EQ(runLumiset(outlineCommand("scene:320x180:1:20", clip, {"--quality", "0"})).status, 0);
    ASSERT_GT(std::filesystem::file_size(clip), 3U << 15U);
    ASSERT_EQ(std::system(("ffmpeg -v error -i " + clip + " -c copy " + (folder / "late.mp4")).c_str()), 0);
    for (const std::string& input : {clip, folder / "late.mp4"}) {
        EXPECT_EQ(runLumiset(outlineCommand(input, "-")).out, runLumiset(outlineCommand("-", "-"), input).out) << input;
    }
    const std::string pipe =
        "cat " + (folder / "late.mp4") + " | " LUMISET_PROGRAM " render - " + (folder / "piped.mp4") + " -q -e Outline";
    EXPECT_EQ(std::system(pipe.c_str()), 0);
}

TEST(Render, TakesPixelsForSquareThatAreNotByRoundingAlone) {
    const TemporaryFolder folder;
    const auto rendered = [&](const std::string& shape) {
        writeFile(folder / "in.y4m", "YUV4MPEG2 W640 H360 F25:1 Ip A" + shape + " C444\nFRAME\n" +
                                         std::string(std::size_t{640} * 360 * 3, '\x90'));
        const RunResult run = runLumiset({"render", folder / "in.y4m", "-", "-e", "Selective Tint", "-p",
                                          "Center Spotlight", "-s", "Test Mask=on", "-s", "Gradient=100"});
        return run.out.substr(run.out.find("FRAME"));
    };
    const std::string square = rendered("1:1");
    EXPECT_TRUE(rendered("400:401") == square);
    EXPECT_FALSE(rendered("16:15") == square);
}

TEST(Render, WritesTheSizeThatItIsAskedFor) {
    const TemporaryFolder folder;
    const std::vector<std::string> effect = {"-q", "-e", "Old TV", "-p", "Messed Up"};
    const auto rendered = [&](const std::string& output, const std::vector<std::string>& size) {
        std::vector<std::string> words = {"render", "scene-full:320x180:0.2:10", folder / output};
        for (const auto* more : {&effect, &size}) {
            words.insert(words.end(), more->begin(), more->end());
        }
        EXPECT_EQ(runLumiset(words).status, 0);
        return media::readAll(folder / output);
    };
    const std::vector<Picture> whole = rendered("whole.mkv", {"--codec", "ffv1"});
    const std::vector<Picture> half = rendered("half.mkv", {"--codec", "ffv1", "--size", "x90"});
    ASSERT_EQ(half.size(), whole.size());
    for (std::size_t i = 0; i < half.size(); ++i) {
        ASSERT_EQ(half[i].width, 160);
        ASSERT_EQ(half[i].height, 90);
        // The effect has worked at the full size: its noise is what the means of four pixels have left of it.
        double sum = 0.0;
        for (int y = 10; y < 80; ++y) {
            for (int x = 10; x < 150; ++x) {
                double mean = 0.0;
                for (int k = 0; k < 4; ++k) {
                    mean += media::sampleOf(whole[i], 2 * x + k % 2, 2 * y + k / 2, 1) / 4.0;
                }
                sum += std::abs(media::sampleOf(half[i], x, y, 1) - mean);
            }
        }
        EXPECT_LT(sum / (70.0 * 140.0), 6.0) << i;
    }
    const auto wide = media::openSource((rendered("wide.mp4", {"--size", "320x90"}), folder / "wide.mp4"));
    EXPECT_EQ(wide->format().height, 90);
    EXPECT_EQ(wide->format().pixelAspect.value(), 0.5);
}

TEST(Render, ReadsThePicturesThatAPatternStandsFor) {
    const TemporaryFolder folder;
    const auto render = [&](const std::string& input, const std::string& output) {
        return runLumiset({"render", input, output, "-q", "-e", "Outline", "--codec", "ffv1", "--fps", "29.97"});
    };
    ASSERT_EQ(runLumiset({"render", "scene:32x16:0.5:10", folder / "a_%03d.png", "-q", "-e", "Outline"}).status, 0);
    EXPECT_EQ(render(folder / "a_%03d.png", folder / "numbers.mkv").status, 0);
    EXPECT_EQ(render(folder / "a_0?[1-5].png", folder / "pattern.mkv").status, 0);
    const std::vector<Picture> numbers = media::readAll(folder / "numbers.mkv");
    const std::vector<Picture> pattern = media::readAll(folder / "pattern.mkv");
    ASSERT_EQ(pattern.size(), 5U);
    ASSERT_EQ(numbers.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(largestDifference(numbers[i], pattern[i]), 0);
        EXPECT_NEAR(pattern[i].timeSeconds, static_cast<double>(i) * 1001 / 30000, 0.001);
    }
    const RunResult none = render(folder / "b*.png", folder / "none.mkv");
    EXPECT_EQ(none.status, 1);
    EXPECT_NE(none.err.find("There is no file that"), std::string::npos) << none.err;
}

TEST(Render, WritesAsManyBitsAsItIsAskedFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(runLumiset(outlineCommand("scene:32x16:0.2:10", folder / "clip.mp4")).status, 0);
    const struct {
        std::vector<std::string> options;
        int bits;
    } kCases[] = {
        {{}, 8}, {{"--depth", "float"}, 10}, {{"--depth", "float", "--bits", "8"}, 8}, {{"--bits", "10"}, 10}};
    for (auto each : kCases) {
        each.options.insert(each.options.end(), {"--codec", "ffv1"});
        EXPECT_EQ(runLumiset(outlineCommand(folder / "clip.mp4", folder / "out.mkv", each.options)).status, 0);
        media::SourceOptions reading;
        reading.depth = media::Depth::kFloat;
        const auto source = media::openSource(folder / "out.mkv", reading);
        EXPECT_EQ(source->format().bitDepth, each.bits);
        Picture picture;
        ASSERT_TRUE(source->read(picture));
        int between = 0;  // samples far from all levels of eight bits
        for (int x = 0; x < picture.width; ++x) {
            const double level = media::sampleOf(picture, x, 8, 1);
            between += std::abs(level - std::round(level)) > 0.2 ? 1 : 0;
        }
        EXPECT_EQ(between > 3, each.bits > 8) << between;
    }
}

TEST(Render, FailsWithOneSentenceAndLeavesTheOldOutput) {
    const TemporaryFolder folder;
    const std::string square = writeSquare(folder);
    const std::string truncated = folder / "truncated.png";
    writeFile(truncated, contentsOf(square).substr(0, 90));
    const std::string text = folder / "text.mp4";
    writeFile(text, "not a video");
    const std::string output = folder / "out.png";
    writeFile(output, "old");
    const auto entries = folder.entries();
    struct Case {
        std::string input;
        std::string output;
        std::vector<std::string> more;
    };
    const Case kCases[] = {{folder / "absent.png", output, {}},
                           {truncated, output, {}},
                           {text, output, {}},
                           {folder.path().string(), output, {}},
                           {square, folder / "absent/out.png", {}},
                           {square, folder / "out.xyz", {}},
                           {"scene:0x0", output, {}},
                           {"scene:32x32:1", output, {"--start", "5"}},
                           {"scene:32x32:1", output, {"--start", "1e300"}}};
    for (const Case& each : kCases) {
        const RunResult run = runLumiset(outlineCommand(each.input, each.output, each.more));
        EXPECT_EQ(run.status, 1) << each.input << ' ' << each.output << '\n' << run.err;
        EXPECT_EQ(run.err.rfind("lumiset: ", 0), 0U) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_EQ(contentsOf(output), "old") << each.input;
        EXPECT_EQ(folder.entries(), entries) << "a file was left behind by " << each.input << ' ' << each.output;
    }
}

TEST(Render, StopsCleanlyWhenInterrupted) {
    for (const int number : {SIGINT, SIGTERM}) {
        const TemporaryFolder folder;
        const std::string output = folder / "out.mkv";
        writeFile(output, "old");
        const RunResult run = runLumiset(outlineCommand("scene:320x240:3600", output), "/dev/null", [&](pid_t process) {
            // The temporary file beside the old one tells that the render is under way.
            for (int i = 0; i < 1000 && folder.entries() < 2; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            EXPECT_EQ(folder.entries(), 2);
            ::kill(process, number);
        });
        EXPECT_EQ(run.status, 128 + number) << run.err;
        EXPECT_NE(run.err.find("Interrupted"), std::string::npos) << run.err;
        EXPECT_EQ(folder.entries(), 1);
        EXPECT_EQ(contentsOf(output), "old");
    }
}

TEST(Render, LeavesNothingWhenItIsInterruptedTwice) {
    for (int i = 0; i < 6; ++i) {
        const TemporaryFolder folder;
        const RunResult run =
            runLumiset(outlineCommand("scene:640x480:3600", folder / "out.mkv"), "/dev/null", [&](pid_t process) {
                for (int wait = 0; wait < 1000 && folder.entries() < 1; ++wait) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(30 * i));
                ::kill(process, SIGINT);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                ::kill(process, SIGINT);
            });
        EXPECT_EQ(run.status, 128 + SIGINT) << run.err;
        EXPECT_EQ(folder.entries(), 0);
    }
}

TEST(Render, StopsWhileItWaitsForASilentPipe) {
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int writer = ::open(pipe.c_str(), O_RDWR);
    const std::string picture(std::size_t{16} * 16 * 3, '\x80');
    std::string clip = "YUV4MPEG2 W16 H16 F25:1 Ip A1:1 C444\n";
    for (int i = 0; i < 40; ++i) {
        clip += "FRAME\n" + picture;
    }
    ASSERT_EQ(::write(writer, clip.data(), clip.size()), static_cast<ssize_t>(clip.size()));
    const RunResult run = runLumiset(outlineCommand("-", folder / "out.mkv"), pipe, [&](pid_t process) {
        for (int i = 0; i < 1000 && folder.entries() < 2; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ::kill(process, SIGINT);
    });
    ::close(writer);
    EXPECT_EQ(run.status, 128 + SIGINT) << run.err;
    EXPECT_EQ(folder.entries(), 1);
}

}  // namespace
}  // namespace lumiset::test

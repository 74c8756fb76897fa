// "lumiset export": the lines that it prints, run as they stand.

#include <cstdlib>

#include "adapters/frei0r/hosts/command_lines.h"
#include "tests/frei0r/frei0r_host.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::frei0r {
namespace {

using test::runLumiset;
using test::RunResult;

class ExportedCommand : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("ffmpeg -v quiet -h filter=frei0r | grep -q filter_params") != 0) {
            GTEST_SKIP() << "there is no ffmpeg with frei0r";
        }
        ::setenv("FREI0R_PATH", pluginFolder().c_str(), 1);
        // Rows that ffmpeg 5.1 fills up without telling plug-ins.
        const std::vector<std::string> render = {"render", "scene:50x32:0.04", input, "-q",
                                                 "-e",     "Alpha Processor",  "-p",  "Transparent Edges"};
        ASSERT_EQ(runLumiset(render).status, 0);
    }

    static std::string pixels(const std::string& file, const std::string& raw) {
        const std::string command = "ffmpeg -v error -y -i \"" + file + "\" -pix_fmt rgba -f rawvideo " + raw;
        EXPECT_EQ(std::system(command.c_str()), 0);
        return test::contentsOf(raw);
    }

    /// Renders with these options by the printed line and by lumiset itself.
    void expectSamePicture(const std::string& effect, const std::vector<std::string>& options) {
        std::vector<std::string> printing = {"export", "ffmpeg", effect, "-i", input, "-o", output};
        std::vector<std::string> rendering = {"render", input, folder / "expected.png", "-q", "-y", "--alpha",
                                              "-e",     effect};
        printing.insert(printing.end(), options.begin(), options.end());
        rendering.insert(rendering.end(), options.begin(), options.end());
        const test::RunResult printed = runLumiset(printing);
        ASSERT_EQ(printed.status, 0) << printed.err;
        ASSERT_EQ(runLumiset(rendering).status, 0);
        std::filesystem::remove(output);
        const std::string line = printed.out.substr(0, printed.out.size() - 1);
        const std::string messages = folder / "messages";
        ASSERT_EQ(std::system((line + " 2>" + messages).c_str()), 0) << line << test::contentsOf(messages);
        const std::string picture = pixels(output, folder / "a.raw");
        EXPECT_EQ(picture.size(), std::size_t{50 * 32 * 4});
        EXPECT_TRUE(picture == pixels(folder / "expected.png", folder / "b.raw")) << printed.out;
    }

    test::TemporaryFolder folder;
    const std::string input = folder / "it's [a], picture; $HOME.png";
    const std::string output = folder / "o'ut put.png";
};

TEST_F(ExportedCommand, RendersThePresetsOfEveryEffect) {
    for (const hostkit::EffectDescription& effect : reference().catalogue.effects()) {
        SCOPED_TRACE(effect.name);
        expectSamePicture(effect.name, {"--preset", effect.presets.back().name});
    }
}

TEST_F(ExportedCommand, RendersSettingsAndPresetFiles) {
    expectSamePicture("Outline", {});
    expectSamePicture("Selective Tint", {"-s", "Blend Mode=Color Burn", "-s", "Inner Tint/Color=#FF8001", "-s",
                                         "Inner Tint/Blend=73.3", "-s", "Top Left=3,40"});
    const std::string file = folder / "glow.lumvc";
    ASSERT_EQ(runLumiset({"preset", "save", file, "-e", "Outline", "-p", "Red Glow", "-s", "Width=10.1"}).status, 0);
    expectSamePicture("Outline", {"--preset-file", file, "-s", "Opacity=50"});
}

// What ffmpeg 5.1 has to be told: rows that it would hand over slanted, shapes of pixels, fields, matrices.
TEST_F(ExportedCommand, RendersClipsOfEverySizeShapeAndScan) {
    struct Case {
        const char* name;
        const char* source;  ///< ffmpeg's filters
        const char* options;
        double decibels;  ///< the two encode with qualities of their own, which small pictures suffer from most
    };
    const Case kCases[] = {
        {"portrait.mp4", "testsrc2=s=1080x1920,scale=out_color_matrix=bt709,format=yuv420p", "-colorspace bt709", 36},
        {"wide.mp4", "testsrc2=s=854x480,format=yuv420p", "", 36},
        {"pal.mp4", "testsrc2=s=720x576:r=50,interlace=lowpass=0,format=yuv420p,setsar=64/45", "-flags +ilme+ildct",
         38},
        {"o'd:d\\=1.mp4", "testsrc2=s=77x45,format=yuv444p", "", 31}};
    for (const Case& each : kCases) {
        SCOPED_TRACE(each.name);
        const auto shell = [&](const std::string& command) {
            return std::system(("cd '" + folder.path().string() + "' && " + command).c_str());
        };
        const std::string clip = folder / each.name;
        const std::string quiet = "ffmpeg -v error -y ";
        ASSERT_EQ(shell(quiet + "-f lavfi -i '" + each.source + "' -frames:v 2 -c:v libx264 -crf 2 " + each.options +
                        " made.mp4"),
                  0);
        std::filesystem::rename(folder / "made.mp4", clip);
        const RunResult printed =
            runLumiset({"export", "ffmpeg", "Viewfinder", "-p", "2000s", "-i", clip, "-o", folder / "exported.mp4"});
        ASSERT_EQ(printed.err, "");
        ASSERT_EQ(printed.out.rfind("ffmpeg ", 0), 0U);
        std::filesystem::remove(folder / "exported.mp4");
        ASSERT_EQ(shell(quiet + printed.out.substr(7)), 0) << printed.out;
        ASSERT_EQ(
            runLumiset({"render", clip, folder / "rendered.mp4", "-q", "-y", "-e", "Viewfinder", "-p", "2000s"}).status,
            0);
        const std::string properties =
            "ffprobe -v error -select_streams v -show_entries "
            "stream=width,height,pix_fmt,sample_aspect_ratio,field_order,color_space,nb_frames -of csv ";
        EXPECT_EQ(shell(properties + "exported.mp4 >a && " + properties + "rendered.mp4 >b && diff a b >&2"), 0);
        ASSERT_EQ(shell("ffmpeg -i exported.mp4 -i rendered.mp4 -lavfi psnr=stats_file=psnr -f null - 2>messages"), 0);
        const std::string stats = test::contentsOf(folder / "psnr");
        int pictures = 0;
        for (std::size_t at = stats.find("psnr_avg:"); at != std::string::npos; at = stats.find("psnr_avg:", at + 1)) {
            EXPECT_GT(std::strtod(stats.c_str() + at + 9, nullptr), each.decibels) << stats;
            ++pictures;
        }
        EXPECT_EQ(pictures, 2);
    }
}

TEST_F(ExportedCommand, LooksAtTheTransparencyAndTheNumbersOfItsInput) {
    for (const char* scene : {"cutout", "full"}) {
        ASSERT_EQ(runLumiset({"render", std::string("scene-") + scene + ":64x48:0.08",
                              folder / (std::string(scene) + "_%02d.png"), "-q", "-e", "Viewfinder"})
                      .status,
                  0);
    }
    const auto lineFor = [&](const char* name, const char* effect, const char* set) {
        return runLumiset({"export", "ffmpeg", effect, "-s", set, "-i", folder / name, "-o", folder / "a.mp4"}).out;
    };
    const std::string sequence = lineFor("cutout_%02d.png", "Viewfinder", "Battery=off");
    EXPECT_NE(sequence.find("premultiply=inplace=1"), std::string::npos) << sequence;
    EXPECT_NE(sequence.find("-framerate 25 -start_number 1 "), std::string::npos) << sequence;
    EXPECT_EQ(lineFor("full_01.png", "Viewfinder", "Battery=off").find("premultiply"), std::string::npos);
    // Later pictures may be transparent where the first is not.
    ASSERT_EQ(
        std::system(
            ("cd '" + folder.path().string() + "' && ffmpeg -v error -i full_01.png -pix_fmt rgba a.png").c_str()),
        0);
    EXPECT_NE(lineFor("a.png", "Viewfinder", "Battery=off").find("premultiply"), std::string::npos);
    EXPECT_NE(lineFor("full_01.png", "Alpha Processor", "Invert=on").find("premultiply"), std::string::npos);
}

TEST(ExportedLines, LeaveOutWhatIsAtItsDefaultAndQuoteTheRest) {
    const hostkit::EffectDescription& effect = reference().catalogue.effect("Selective Tint");
    hostkit::ParameterStore values(effect);
    Clip clip;
    clip.input = "-a.mov";
    clip.output = "b.MP4";
    EXPECT_EQ(ffmpegCommand({settingsOf(values)}, clip),
              "ffmpeg -i ./-a.mov -vf frei0r=filter_name=lumiset_selective_tint -pix_fmt yuv420p b.MP4");
    values.set("Top Left", "10,20");
    values.set("Test Mask", "on");
    values.set("Outer Tint/Color", "#0080C0");
    // melt takes a colon in a name for something else.
    clip.input = "in\\.mp4";
    clip.output = "o'b.mp4";
    EXPECT_EQ(meltCommand({settingsOf(values)}, clip),
              "melt 'in\\.mp4' -filter frei0r.lumiset_selective_tint 'Top Left X=0.1' 'Test Mask=1' '15=#0080c0' "
              "-consumer 'avformat:o'\\''b.mp4'");
    for (const char* name : {"a=b.mp4", "a:b.mp4"}) {
        clip.output = name;
        EXPECT_THROW(static_cast<void>(meltCommand({settingsOf(values)}, clip)), NameError);
        EXPECT_NE(ffmpegCommand({settingsOf(values)}, clip).find(name[1] == ':' ? " file:a:b.mp4" : " a=b.mp4"),
                  std::string::npos);
    }
    // Alpha goes over black where the file has none; pictures in a row have a rate and a first number.
    clip = {"s_%03d.png", "a.mkv"};
    clip.width = clip.height = 32;
    clip.alpha = true;
    clip.sequenceRate = 30;
    clip.firstNumber = 7;
    for (const auto& [output, over] :
         {std::pair{"a.mkv", false}, {"a.mov", false}, {"a.mp4", true}, {"a.png", false}}) {
        clip.output = output;
        const std::string line = ffmpegCommand({settingsOf(values)}, clip);
        EXPECT_EQ(line.find("premultiply=inplace=1") != std::string::npos, over) << line;
        EXPECT_EQ(line.rfind("ffmpeg -framerate 30 -start_number 7 -i s_%03d.png ", 0), 0U) << line;
    }
    clip.input = "s_*.png";
    EXPECT_EQ(ffmpegCommand({settingsOf(values)}, clip).rfind("ffmpeg -framerate 30 -pattern_type glob ", 0), 0U);
}

TEST(ExportedTemplate, IsNamedAsAsked) {
    const test::RunResult named = runLumiset({"export", "kdenlive", "Outline", "-p", "Bold Red", "--name", "A < B"});
    EXPECT_NE(named.out.find("<name>A &lt; B</name>"), std::string::npos) << named.out << named.err;
    EXPECT_NE(named.out.find("tag=\"frei0r.lumiset_outline\" id=\"A &lt; B\" type=\"customVideo\""), std::string::npos);
    EXPECT_NE(
        runLumiset({"export", "kdenlive", "Outline", "-p", "Bold Red"}).out.find("<name>Outline: Bold Red</name>"),
        std::string::npos);
    EXPECT_EQ(runLumiset({"export"}).status, 2);
    EXPECT_EQ(runLumiset({"export", "melt", "No Such"}).status, 2);
}

}  // namespace
}  // namespace lumiset::frei0r

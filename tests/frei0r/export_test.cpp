// "lumiset export": the lines that it prints, run as they stand.

#include <cstdlib>

#include "adapters/frei0r/hosts/command_lines.h"
#include "tests/frei0r/frei0r_host.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::frei0r {
namespace {

using test::runLumiset;

class ExportedCommand : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("ffmpeg -v quiet -h filter=frei0r | grep -q filter_params") != 0) {
            GTEST_SKIP() << "there is no ffmpeg with frei0r";
        }
        ::setenv("FREI0R_PATH", pluginFolder().c_str(), 1);
        // Rows of a multiple of 64 bytes, which ffmpeg 5.1 hands to plug-ins as they are.
        const std::vector<std::string> render = {"render", "scene:48x32:0.04", input, "-q",
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
        std::vector<std::string> rendering = {"render", input, folder / "expected.png", "-q", "--alpha", "-e", effect};
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
        EXPECT_EQ(picture.size(), std::size_t{48 * 32 * 4});
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

TEST(ExportedLines, LeaveOutWhatIsAtItsDefaultAndQuoteTheRest) {
    const hostkit::EffectDescription& effect = reference().catalogue.effect("Selective Tint");
    hostkit::ParameterStore values(effect);
    EXPECT_EQ(ffmpegCommand({settingsOf(values)}, "-a.mov", "b.MP4"),
              "ffmpeg -i ./-a.mov -vf frei0r=filter_name=lumiset_selective_tint -pix_fmt yuv420p b.MP4");
    values.set("Top Left", "10,20");
    values.set("Test Mask", "on");
    values.set("Outer Tint/Color", "#0080C0");
    // melt takes a colon in a name for something else.
    EXPECT_EQ(meltCommand({settingsOf(values)}, "in.mp4", "o'b.mp4"),
              "melt in.mp4 -filter frei0r.lumiset_selective_tint 'Top Left X=0.1' 'Test Mask=1' '14=#0080c0' "
              "-consumer 'avformat:o'\\''b.mp4'");
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

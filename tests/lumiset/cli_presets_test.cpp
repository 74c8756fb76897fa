// Preset files and options from the command line.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

class PresetCommands : public ::testing::Test {
protected:
    // Before any program starts: options of its own.
    PresetCommands() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }

    TemporaryFolder folder;
};

TEST_F(PresetCommands, SaveShowCheckAndRenderAPresetFile) {
    const std::string file = folder / "Glühen.lumvc";
    const RunResult saved =
        runLumiset({"preset", "save", file, "-e", "outline", "-p", "Red Glow", "-s", "Width=10.1", "-s", "Opacity=50"});
    EXPECT_EQ(saved.status, 0) << saved.err;
    const RunResult shown = runLumiset({"preset", "load", file});
    EXPECT_EQ(shown.out, "Outline: Glühen\n  Width=10.1\n  Soften=100\n  Color=#FF0000\n  Opacity=50\n");

    const std::string broken = folder / "broken.lumvc";
    writeFile(broken, contentsOf(file).substr(0, 200));
    EXPECT_EQ(runLumiset({"preset", "check", file}).out, file + ": Outline, \"Glühen\"\n");
    const RunResult checked = runLumiset({"preset", "check", broken, file});
    EXPECT_EQ(checked.status, 1);
    EXPECT_NE(checked.out.find("broken.lumvc\" cannot be read or is not a preset.\n" + file + ": Outline"),
              std::string::npos)
        << checked.out;

    const auto render = [&](const std::string& name, std::vector<std::string> options) {
        options.insert(options.begin(), {"render", "scene:64x48:0.04", folder / name, "-q", "-e", "Outline"});
        const RunResult run = runLumiset(options);
        EXPECT_EQ(run.status, 0) << run.err;
        return contentsOf(folder / name);
    };
    const std::string picture = render("file.png", {"--preset-file", file, "-s", "Opacity=100"});
    EXPECT_EQ(picture, render("options.png", {"-p", "Red Glow", "-s", "Width=10.1"}));
    EXPECT_NE(picture, render("plain.png", {}));

    const RunResult other =
        runLumiset({"render", "scene:64x48:0.04", folder / "x.png", "-e", "Old TV", "--preset-file", file});
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.err.find("is not a preset for the effect \"Old TV\""), std::string::npos) << other.err;
    EXPECT_EQ(runLumiset({"preset", "save", folder / "no/such.lumvc", "-e", "Outline"}).status, 1);
    EXPECT_EQ(runLumiset({"preset", "save", file, "-e", "Outline", "-s", "Width"}).status, 2);
    EXPECT_EQ(runLumiset({"preset"}).status, 2);
}

TEST_F(PresetCommands, ListAndSetOptionsForTheNextRun) {
    EXPECT_EQ(runLumiset({"options"}).out.find("yes"), std::string::npos);
    EXPECT_EQ(runLumiset({"options", "crop overscan", "Yes"}).status, 0);
    const std::string list = runLumiset({"options"}).out;
    EXPECT_NE(list.find("Crop Overscan          yes"), std::string::npos) << list;
    EXPECT_EQ(contentsOf(folder / "vantrel/Common.ini"), "[Common]\nCrop Overscan=yes\n");
    EXPECT_EQ(runLumiset({"options", "Crop Overscan", "perhaps"}).status, 2);
    EXPECT_EQ(runLumiset({"options", "Crop Overscan"}).status, 2);
    EXPECT_NE(runLumiset({"options", "Forced GPU", "yes"}).err.find("Did you mean \"Forced CPU\"?"), std::string::npos);
    ::setenv("XDG_CONFIG_HOME", "/dev/null", 1);
    const RunResult failed = runLumiset({"options", "Crop Overscan", "no"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err, "lumiset: The option \"Crop Overscan\" cannot be stored.\n");
}

TEST_F(PresetCommands, ForcedCpuKeepsEffectsOffOpenGL) {
    if (runLumiset({"gpu", "info"}).status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    const std::vector<std::string> command = {"render", "scene:64x48:0.04", folder / "a.png", "--gpu", "-e", "Outline"};
    EXPECT_EQ(runLumiset(command).err.find("does not render in OpenGL"), std::string::npos);
    ASSERT_EQ(runLumiset({"options", "Forced CPU", "yes"}).status, 0);
    const RunResult forced = runLumiset(command);
    EXPECT_EQ(forced.status, 0);
    EXPECT_NE(forced.err.find("does not render in OpenGL"), std::string::npos) << forced.err;
}

}  // namespace
}  // namespace lumiset::test

// What stands where a command writes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

using Words = std::vector<std::string>;

class Output : public ::testing::Test {
protected:
    void SetUp() override {
        const Words neutral{"-q", "-e", "Outline", "-p", "Reset to None"};
        for (const Words& made : {Words{"render", "scene:32x18:0.2:10", folder / "clip.mp4"},
                                  Words{"render", "scene:32x18:0.2:10", folder / "shot_%02d.png"}}) {
            Words command = made;
            command.insert(command.end(), neutral.begin(), neutral.end());
            ASSERT_EQ(runLumiset(command).status, 0);
        }
        ASSERT_EQ(runLumiset({"preset", "save", folder / "glow.lumvc", "-e", "Outline"}).status, 0);
        ASSERT_EQ(runLumiset({"look", "save", "Tape", "-e", "Outline"}).status, 0);
        std::filesystem::create_hard_link(folder / "lumiset/looks/Tape.lumilook", folder / "tape.lumilook");
        std::filesystem::create_hard_link(folder / "clip.mp4", folder / "same.mp4");
        std::filesystem::create_symlink(folder / "clip.mp4", folder / "link.mp4");
        writeFile(folder / "old.mp4", "old");
        writeFile(folder / "old.png", "old");
        writeFile(folder / "old.json", "old");
    }

    /// The contents of every file, by name.
    [[nodiscard]] std::string everything() const {
        Words files;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.is_directory()) {
                continue;
            }
            files.push_back(entry.path().filename().string() + ':' + contentsOf(entry.path().string()));
        }
        std::sort(files.begin(), files.end());
        std::string all;
        for (const std::string& each : files) {
            all += each + '\n';
        }
        return all;
    }

    TemporaryFolder folder;
    WithEnvironment data{"XDG_DATA_HOME", folder.path().string()};
};

TEST_F(Output, IsNeverAnInput) {
    const std::string before = everything();
    const Words kCommands[] = {
        {"render", folder / "clip.mp4", folder / "clip.mp4", "-e", "Outline"},
        {"render", folder / "clip.mp4", folder / "same.mp4", "-e", "Outline"},
        {"render", folder / "link.mp4", folder / "same.mp4", "-e", "Outline"},
        {"render", folder / "shot_%02d.png", folder / "shot_%02d.png", "-e", "Outline"},
        {"render", folder / "shot_*.png", folder / "shot_01.png", "-e", "Outline"},
        {"render", "-", folder / "clip.mp4", "-e", "Outline"},
        {"render", folder / "clip.mp4", folder / "glow.lumvc", "-e", "Outline", "--preset-file", folder / "glow.lumvc"},
        {"render", folder / "clip.mp4", folder / "tape.lumilook", "--look", "tape"},
        {"render", folder / "clip.mp4", folder / "shot_01.png", "-e", "Outline", "--mask", folder / "shot_01.png"},
        {"gallery", folder / "shot_01.png", folder / "tape.lumilook", "--look", folder / "tape.lumilook"},
        {"look", "save", "Tape", "--look", folder / "tape.lumilook"},
        {"gallery", "Outline", folder / "shot_01.png", folder / "shot_01.png"},
        {"compare", folder / "shot_01.png", folder / "shot_01.png", "-e", "Outline"},
        {"preset", "save", folder / "glow.lumvc", "-e", "Outline", "--preset-file", folder / "glow.lumvc"},
        {"preset", "convert", folder / "glow.lumvc", folder / "glow.lumvc"},
    };
    for (Words command : kCommands) {
        command.emplace_back("--overwrite");
        const RunResult run = runLumiset(command, folder / "clip.mp4");
        EXPECT_EQ(run.status, 2) << command[0] << ' ' << command[2] << '\n' << run.err;
        EXPECT_NE(run.err.find("is what is read"), std::string::npos) << run.err;
    }
    EXPECT_TRUE(everything() == before);
}

TEST_F(Output, ReplacesAFileOnlyWhenAskedTo) {
    const std::string before = everything();
    const Words kCommands[] = {
        {"render", folder / "clip.mp4", folder / "old.mp4", "-e", "Outline"},
        {"render", folder / "clip.mp4", folder / "shot_%02d.png:2", "-e", "Outline"},
        {"gallery", "Alpha Processor", folder / "clip.mp4", folder / "old.png", "--tile", "32"},
        {"preset", "save", folder / "glow.lumvc", "-e", "Outline"},
        {"preset", "convert", folder / "glow.lumvc", folder / "old.json"},
        {"look", "save", folder / "tape.lumilook", "-e", "Old TV"},
    };
    for (const Words& command : kCommands) {
        const RunResult run = runLumiset(command);
        EXPECT_EQ(run.status, 1) << command[0] << ' ' << command[2];
        EXPECT_NE(run.err.find("exist"), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("--overwrite"), std::string::npos) << run.err;
    }
    EXPECT_TRUE(everything() == before);
    for (Words command : kCommands) {
        command.emplace_back("-y");
        EXPECT_EQ(runLumiset(command).status, 0) << command[0] << ' ' << command[2];
    }
    for (const char* file : {"old.mp4", "old.png", "old.json"}) {
        EXPECT_NE(contentsOf(folder / file), "old");
    }
    EXPECT_EQ(runLumiset({"render", folder / "clip.mp4", folder / "shot_%02d.png:7", "-e", "Outline"}).status, 0)
        << "numbers that are not there yet";
}

TEST_F(Output, IsAskedForOnATerminal) {
    if (std::system("command -v script >/dev/null") != 0) {
        GTEST_SKIP() << "There is no script(1) to make a terminal.";
    }
    const std::string render =
        LUMISET_PROGRAM " render -q -e Outline " + (folder / "clip.mp4") + ' ' + (folder / "old.mp4");
    const auto answering = [&](const std::string& answer) {
        return std::system(
            ("echo " + answer + " | script -qec '" + render + "' /dev/null >" + (folder / "said")).c_str());
    };
    EXPECT_NE(answering("n"), 0);
    EXPECT_EQ(contentsOf(folder / "old.mp4"), "old");
    EXPECT_NE(contentsOf(folder / "said").find("exists. Replace? [y/N]"), std::string::npos);
    EXPECT_EQ(answering("y"), 0) << contentsOf(folder / "said");
    EXPECT_NE(contentsOf(folder / "old.mp4"), "old");
}

// In a log: lines, each of another percent, and nothing that overwrites a line.
TEST(Progress, IsLinesWhereThereIsNoTerminal) {
    const TemporaryFolder folder;
    const RunResult run = runLumiset({"render", "scene-full:1280x720:1.6", folder / "film.mp4", "-j", "1", "-e",
                                      "Selective Color", "-e", "Selective Color"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::istringstream lines(run.err);
    int last = 0;
    for (std::string line; std::getline(lines, line);) {
        int percent = 0;
        int frames = 0;
        double rate = 0;
        if (std::sscanf(line.c_str(), "%d %%, %d of 40 frames, %lf frames/s", &percent, &frames, &rate) == 3) {
            EXPECT_GT(frames, 0.9 * rate) << "a line within the first second";
            EXPECT_GT(percent, last);
            EXPECT_EQ(percent, frames * 100 / 40);
            last = percent;
        }
    }
    EXPECT_GT(last, 0) << run.err;
    EXPECT_EQ(run.err.find_first_of("\r\x1b"), std::string::npos);
}

}  // namespace
}  // namespace lumiset::test

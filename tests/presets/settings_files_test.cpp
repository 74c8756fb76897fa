// What only the store in files can get wrong.

#include "platform/settings_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "support/option_store.h"
#include "tests/presets/preset_effect.h"

namespace lumiset::test {
namespace {

class SettingsFiles : public ::testing::Test {
protected:
    SettingsFiles() { ::setenv("XDG_CONFIG_HOME", (folder / ".").c_str(), 1); }

    PresetFolder folder;
};

TEST_F(SettingsFiles, HaveNoSectionsOutsideTheirFolder) {
    for (const char* section : {"", "../x", "..", "a/b"}) {
        EXPECT_FALSE(platform::writeSetting(section, "a", "b")) << section;
    }
}

TEST_F(SettingsFiles, LeaveWhatAPersonWroteIntoTheFile) {
    std::filesystem::create_directory(folder / "vantrel");
    writeFile(folder / "vantrel" / "Common.ini",
              "; mine\r\n[Common]\nOther = 5 \nCrop Overscan=no\n  Crop Overscan =  yes\nForced CPU=Yes");
    EXPECT_EQ(readOptions(), (std::array<bool, kOptionCount>{false, false, false, true})) << "\"Yes\" is not \"yes\"";
    EXPECT_EQ(platform::readSetting("Common", "Crop Overscan"), "yes");
    EXPECT_TRUE(writeOption(kCropOverscan, false));
    EXPECT_TRUE(writeOption(kKnobsDragVertical, true));
    EXPECT_EQ(contentsOf(folder / "vantrel" / "Common.ini"),
              "; mine\r\n[Common]\nOther = 5 \nCrop Overscan=no\nForced CPU=Yes\nKnobs Drag Vertical=yes\n");
}

TEST_F(SettingsFiles, SayWhenNothingCanBeStored) {
    writeFile(folder / "vantrel", "a file where the folder should be");
    EXPECT_FALSE(writeOption(kForcedCpu, true));
    EXPECT_NE(platform::storingProblem("Common").find("vantrel/Common.ini: Not a directory"), std::string::npos);
    EXPECT_EQ(readOptions(), (std::array<bool, kOptionCount>{}));
    std::filesystem::remove(folder / "vantrel");
    std::filesystem::create_directories(folder / "vantrel" / "Common.ini");
    EXPECT_FALSE(writeOption(kForcedCpu, true));
}

TEST_F(SettingsFiles, AreNeverSoLargeThatNobodyCanReadThem) {
    const std::filesystem::path file = folder / "vantrel" / "Common.ini";
    EXPECT_FALSE(platform::writeSettings("Common", {{"long", std::string(5U << 20U, 'v')}, {"short", "v"}}));
    EXPECT_TRUE(platform::readSettings("Common").empty());
    EXPECT_EQ(platform::storingProblem("Common"), "");
    writeFile(file, std::string((4U << 20U) + 1, ';'));
    EXPECT_THROW(platform::readSettings("Common"), std::system_error);
    EXPECT_FALSE(writeOption(kForcedCpu, true));
    EXPECT_TRUE(platform::storingProblem("Common").ends_with("/vantrel/Common.ini: File too large"));
    EXPECT_TRUE(platform::removeSettings("Common"));
    EXPECT_TRUE(writeOption(kForcedCpu, true));
}

TEST_F(SettingsFiles, KeepTheOldFileWhenTheDiskIsFull) {
    ASSERT_TRUE(writeOption(kForcedCpu, true));
    const pid_t process = ::fork();
    if (process == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const struct rlimit limit { 100, 100 };  // bytes of any file
        const bool limited = ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
        ::_exit(limited && !platform::writeSetting("Common", "long", std::string(500, 'v')) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentsOf(folder / "vantrel" / "Common.ini"), "[Common]\nForced CPU=yes\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "vantrel"), {}), 2);
}

TEST_F(SettingsFiles, GiveUpOnALockThatIsNeverLeft) {
    ASSERT_TRUE(writeOption(kForcedCpu, true));
    const int lock = ::open((folder / "vantrel" / "Common.ini.lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    EXPECT_FALSE(writeOption(kForcedCpu, false));
    EXPECT_TRUE(readOptions()[kForcedCpu]) << "reading waits for nobody";
    // Others that get on with their changes, one after the other, are waited for however long it takes.
    std::thread others([&] {
        for (int i = 0; i < 3; ++i) {
            writeFile(folder / "vantrel" / "Common.ini", "other=" + std::to_string(i));
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
        ::close(lock);
    });
    EXPECT_TRUE(writeOption(kForcedCpu, false));
    others.join();
    EXPECT_EQ(platform::readSetting("Common", "other"), "2");
}

TEST_F(SettingsFiles, LoseNothingToOtherProcessesAndAreNeverTorn) {
    constexpr int kProcesses = 4;
    constexpr int kNames = 25;
    pid_t processes[kProcesses];
    for (int process = 0; process < kProcesses; ++process) {
        processes[process] = ::fork();
        ASSERT_GE(processes[process], 0);
        if (processes[process] == 0) {
            bool good = true;
            for (int i = 0; i < kNames; ++i) {
                const std::string name = std::to_string(process) + '.' + std::to_string(i);
                good = platform::writeSetting("Common", name, std::string(500, 'v') + name) && good;
                good =
                    platform::writeSetting("Common", "shared", std::string(1000, static_cast<char>('a' + process))) &&
                    good;
            }
            ::_exit(good ? 0 : 1);
        }
    }
    for (int running = kProcesses; running > 0;) {
        const std::string shared = platform::readSetting("Common", "shared").value_or(std::string(1000, 'a'));
        ASSERT_EQ(shared, std::string(1000, shared.at(0)));
        int status = 0;
        while (running > 0 && ::waitpid(-1, &status, WNOHANG) > 0) {
            EXPECT_EQ(status, 0);
            --running;
        }
    }
    EXPECT_EQ(platform::readSettings("Common").size(), kProcesses * kNames + 1U);
    for (int process = 0; process < kProcesses; ++process) {
        const std::string name = std::to_string(process) + ".24";
        EXPECT_EQ(platform::readSetting("Common", name), std::string(500, 'v') + name);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "vantrel"), {}), 2) << "the file and its lock";
}

}  // namespace
}  // namespace lumiset::test

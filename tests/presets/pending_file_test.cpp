// Outputs of every kind while they are written: in a folder that others write to as well, and after a kill.

#include "platform/pending_file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <set>
#include <system_error>

#include "tests/presets/preset_effect.h"

namespace lumiset::test {
namespace {

namespace fs = std::filesystem;
using platform::PendingFile;

/// Runs it in a process of its own, and how that ended.
int inAnotherProcess(const std::function<void()>& work) {
    const pid_t process = ::fork();
    if (process == 0) {
        work();
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(process, &status, 0);
    return status;
}

std::set<std::string> hiddenFiles(const PresetFolder& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder / "")) {
        if (entry.path().filename().string().starts_with(".lumiset-")) {
            names.insert(entry.path().string());
        }
    }
    return names;
}

fs::perms permissionsOf(const fs::path& file) {
    return fs::status(file).permissions();
}

TEST(PendingFile, KeepsThePermissionsOfTheOldFileAndShowsNobodyTheNewOneBefore) {
    const PresetFolder folder;
    const fs::path target = folder / "out.png";
    for (const unsigned mode : {0600U, 0640U, 0604U}) {
        writeFile(target, "old");
        const uid_t owner = mode == 0600U ? 12345U : ::geteuid();
        const bool isOthers = ::chown(target.c_str(), owner, 54321) == 0;  // by the superuser alone
        fs::permissions(target, fs::perms(mode));
        PendingFile file(target);
        file.write("new");
        ASSERT_EQ(hiddenFiles(folder).size(), 1U);
        EXPECT_EQ(permissionsOf(*hiddenFiles(folder).begin()), fs::perms(0600));
        EXPECT_EQ(contentsOf(target), "old");
        file.commit();
        EXPECT_EQ(contentsOf(target), "new");
        EXPECT_EQ(permissionsOf(target), fs::perms(mode));
        struct stat status {};
        ASSERT_EQ(::stat(target.c_str(), &status), 0);
        EXPECT_TRUE(!isOthers || (status.st_uid == owner && status.st_gid == 54321));
    }
    EXPECT_EQ(folder.entries(), 1);
}

TEST(PendingFile, HasAnotherNameEachTimeThatNobodyKnowsBefore) {
    const PresetFolder folder;
    std::set<std::string> names;
    for (int i = 0; i < 20; ++i) {
        const PendingFile file(folder / "out.png");
        const std::set<std::string> now = hiddenFiles(folder);
        ASSERT_EQ(now.size(), 1U);
        EXPECT_EQ(now.begin()->find('-' + std::to_string(::getpid()) + '-'), std::string::npos);
        names.insert(*now.begin());
    }
    EXPECT_EQ(names.size(), 20U);
}

TEST(PendingFile, WritesIntoNothingThatIsPutInItsPlace) {
    const PresetFolder folder;
    writeFile(folder / "precious", "kept");
    PendingFile file(folder / "out.png");
    const fs::path hidden = *hiddenFiles(folder).begin();
    fs::remove(hidden);
    fs::create_symlink(folder / "precious", hidden);
    file.write("new");
    std::ofstream(file.path()) << "new, by a library";
    EXPECT_THROW(file.commit(), std::system_error);
    EXPECT_EQ(contentsOf(folder / "precious"), "kept");
    EXPECT_FALSE(fs::exists(folder / "out.png"));
}

TEST(PendingFile, FollowsTheUsersOwnLinksAlone) {
    const PresetFolder folder;
    writeFile(folder / "precious", "kept");
    fs::create_directory(folder / "open");
    fs::permissions(folder / "open", fs::perms(01777));
    const fs::path link = folder / "open" / "out.png";
    fs::create_symlink(folder / "precious", link);
    if (::lchown(link.c_str(), 12345, 12345) == 0) {  // by the superuser alone
        EXPECT_THROW(PendingFile{link}, std::system_error);
        ASSERT_EQ(::lchown(link.c_str(), ::geteuid(), ::getegid()), 0);
    }
    EXPECT_EQ(contentsOf(folder / "precious"), "kept");
    PendingFile file(link);
    file.write("new");
    file.commit();
    EXPECT_EQ(contentsOf(folder / "precious"), "new");
    EXPECT_TRUE(fs::is_symlink(link));
}

TEST(PendingFile, RemovesWhatKilledProcessesHaveLeftAndNothingElse) {
    const PresetFolder folder;
    writeFile(folder / ".lumiset-notes", "mine");
    writeFile(folder / "other", "mine");
    fs::create_symlink(folder / "other", folder / ".lumiset-0123456789abcdef.png");
    for (int i = 0; i < 3; ++i) {
        inAnotherProcess([&] {
            PendingFile file(folder / "out.png");
            file.write("half");
            ::kill(::getpid(), SIGKILL);
        });
    }
    ASSERT_EQ(folder.entries(), 4) << "the notes, the other, the link, and the last one's: each removes those before";
    const PendingFile lasting(folder / "lasting.png");
    EXPECT_EQ(folder.entries(), 4);
    EXPECT_EQ(inAnotherProcess([&] { PendingFile(folder / "short.png").commit(); }), 0);
    EXPECT_EQ(folder.entries(), 5) << "the lasting one, which is being written, must stay";
    EXPECT_EQ(contentsOf(folder / "other"), "mine");
}

TEST(PendingFile, GoesWithAProcessThatASignalEnds) {
    const PresetFolder folder;
    inAnotherProcess([&] {
        ::signal(SIGTERM, [](int) {
            PendingFile::removeAll();
            ::_exit(1);
        });
        const PendingFile one(folder / "one");
        const PendingFile another(folder / "another");
        PendingFile(folder / "done").commit();
        ::raise(SIGTERM);
    });
    EXPECT_EQ(folder.entries(), 1);
    EXPECT_TRUE(fs::exists(folder / "done"));
}

}  // namespace
}  // namespace lumiset::test

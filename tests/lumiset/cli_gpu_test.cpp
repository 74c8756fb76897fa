// Rendering in OpenGL from the command line, and on a machine without it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "media/media.h"
#include "platform/crash_reports.h"
#include "tests/lumiset/cli_run.h"
#include "tests/media/media_fixture.h"

namespace lumiset::test {
namespace {

std::vector<media::Picture> render(const TemporaryFolder& folder, std::vector<std::string> options, RunResult& run) {
    const std::string output = folder / "out.mkv";
    options.insert(options.begin(), {"render", "scene:96x64:0.5:10", output, "-y", "--codec", "ffv1", "--alpha", "-e",
                                     "Outline", "-p", "Red Glow"});
    run = runLumiset(options);
    EXPECT_EQ(run.status, 0) << run.err;
    return media::readAll(output);
}

TEST(GPUCommands, RenderTheSamePicturesInOpenGL) {
    if (runLumiset({"gpu", "info"}).status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    const TemporaryFolder folder;
    RunResult run;
    const std::vector<media::Picture> expected = render(folder, {}, run);
    for (const char* layout : {"bgra", "argb"}) {
        const std::vector<media::Picture> pictures = render(folder, {"--gpu", "--layout", layout}, run);
        EXPECT_EQ(run.err.find("processor"), std::string::npos) << run.err;
        ASSERT_EQ(pictures.size(), expected.size());
        double largest = 0.0;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            largest = std::max(largest, media::worstDifference(pictures[i], expected[i]));
        }
        EXPECT_LE(largest, 3);
        EXPECT_GT(largest, 0) << "or the processor has rendered after all";
    }
}

TEST(GPUCommands, TellWhatThereIs) {
    const RunResult run = runLumiset({"gpu", "info"});
    if (run.status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    for (const char* word : {"Renderer", "OpenGL", "GL_ARB_shader_objects               yes  needed"}) {
        EXPECT_NE(run.out.find(word), std::string::npos) << run.out;
    }
}

TEST(GPUCommands, LeaveTheFramesToTheProcessorWithoutOpenGL) {
    const TemporaryFolder folder;
    RunResult run;
    const std::vector<media::Picture> expected = render(folder, {}, run);
    const WithoutOpenGL withoutOpenGL;
    const std::vector<media::Picture> pictures = render(folder, {"--gpu"}, run);
    ASSERT_EQ(pictures.size(), expected.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        EXPECT_EQ(media::worstDifference(pictures[i], expected[i]), 0);
    }
    const std::size_t said = run.err.find("There is no OpenGL on this machine");
    ASSERT_NE(said, std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("There is no OpenGL", said + 1), std::string::npos) << "said twice: " << run.err;

    const RunResult info = runLumiset({"gpu", "info"});
    EXPECT_EQ(info.status, 1);
    EXPECT_NE(info.err.find("There is no OpenGL"), std::string::npos) << info.err;
}

/// A picture's samples as they are seen: colours weigh as much as their alpha.
std::vector<double> seen(const std::string& file) {
    media::Picture picture;
    EXPECT_TRUE(media::openSource(file)->read(picture)) << file;
    std::vector<double> samples;
    for (int y = 0; y < picture.height; ++y) {
        for (int i = 0; i < 4 * picture.width; ++i) {
            const double alpha = i % 4 == 3 ? 1.0 : picture.row(y)[i | 3] / 255.0;
            samples.push_back(alpha * picture.row(y)[i]);
        }
    }
    return samples;
}

TEST(Compare, MeasuresBothRenderersAndDrawsThem) {
    if (runLumiset({"gpu", "info"}).status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    const TemporaryFolder folder;
    const std::vector<std::string> effect{"-e", "Outline", "-p", "Red Glow", "--set", "Width=15"};
    const auto with = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), effect.begin(), effect.end());
        return runLumiset(arguments);
    };
    ASSERT_EQ(with({"render", "scene:96x54", folder / "a.png", "--start", "1", "--duration", "0.03"}).status, 0);
    ASSERT_EQ(with({"render", "scene:96x54", folder / "b.png", "--start", "1", "--duration", "0.03", "--gpu"}).status,
              0);
    const std::vector<double> a = seen(folder / "a.png");
    const std::vector<double> b = seen(folder / "b.png");
    ASSERT_EQ(a.size(), b.size());
    const auto samplesOf = [](const std::vector<double>& all) {
        return [&all](int i, int, int) { return all[static_cast<std::size_t>(i)]; };
    };
    const test::Difference apart = test::differenceOf(static_cast<int>(a.size()), 1, 1, samplesOf(a), samplesOf(b));
    ASSERT_GT(apart.largest, 0.0);

    const RunResult run = with({"compare", "scene:96x54", folder / "sheet.png", "--time", "1"});
    ASSERT_EQ(run.status, 0) << run.err;
    double psnr = 0.0;
    double worst = 0.0;
    ASSERT_EQ(std::sscanf(run.out.c_str(), "PSNR %lf dB, largest difference %lf", &psnr, &worst), 2) << run.out;
    EXPECT_NEAR(psnr, apart.psnr, 0.051);
    EXPECT_NEAR(worst, apart.largest, 0.5);
    media::Picture sheet;
    ASSERT_TRUE(media::openSource(folder / "sheet.png")->read(sheet));
    EXPECT_GT(sheet.width, 3 * 96);
}

TEST(Compare, SaysWhereThereIsNoOpenGL) {
    const TemporaryFolder folder;
    const WithoutOpenGL withoutOpenGL;
    const RunResult run = runLumiset({"compare", "scene:96x54", folder / "sheet.png", "-e", "Outline"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("There is no OpenGL"), std::string::npos) << run.err;
    EXPECT_EQ(folder.entries(), 0);
}

TEST(GPUCommands, SayWhyAnEffectStaysOffOpenGLAndLetItTryAgain) {
    const OwnSettings settings;
    EXPECT_EQ(runLumiset({"gpu", "reports"}).out, "No crash in OpenGL is reported.\n");
    ASSERT_TRUE(platform::storeCrashReport({"0-1", "Cutter; second", "Vantrel Lumiset V", "Outline"}));
    ASSERT_TRUE(platform::storeCrashReport({"0-2", "Cutter", "Vantrel Lumiset V", "Old TV"}));
    const std::string reports = runLumiset({"gpu", "reports"}).out;
    for (const char* word : {"0-1", "0-2", "Cutter; second", "Vantrel Lumiset V", "Outline", "Old TV"}) {
        EXPECT_NE(reports.find(word), std::string::npos) << reports;
    }
    const bool hasOpenGL = runLumiset({"gpu", "info"}).status == 0;
    const TemporaryFolder folder;
    RunResult run;
    if (hasOpenGL) {
        render(folder, {"--gpu"}, run);
        const std::size_t said = run.err.find("\"Outline\" stays off OpenGL since \"Cutter; second\" crashed");
        EXPECT_NE(said, std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("stays off", said + 20), std::string::npos) << "said twice: " << run.err;
    }
    EXPECT_EQ(runLumiset({"gpu", "reset"}).out, "2 reports removed.\n");
    EXPECT_EQ(runLumiset({"gpu", "reset"}).out, "No crash in OpenGL was reported.\n");
    if (hasOpenGL) {
        render(folder, {"--gpu"}, run);
        EXPECT_EQ(run.err.find("off OpenGL"), std::string::npos) << run.err;
        ASSERT_EQ(runLumiset({"options", "Forced CPU", "yes"}).status, 0);
        render(folder, {"--gpu"}, run);
        EXPECT_NE(run.err.find("\"Forced CPU\" keeps all effects off OpenGL"), std::string::npos) << run.err;
    }
}

TEST(GPUCommands, StayOffOpenGLWhileTheReportsCannotBeRead) {
    const OwnSettings settings;
    ASSERT_TRUE(
        platform::storeCrashReport({"\x1B[31m", "Cutter\x1B]0;\xC2\x9Bname\x07", "Another library", "Outline"}));
    const RunResult listed = runLumiset({"gpu", "reports"});
    EXPECT_EQ(listed.out.find_first_of("\x1B\x07\x9B"), std::string::npos) << listed.out;
    EXPECT_NE(listed.out.find("Cutter?]0;?name?"), std::string::npos) << listed.out;

    const std::string file = settings.folder / "vantrel/Common/Monitoring/Reports.ini";
    std::ofstream(file, std::ios::app) << std::string(5U << 20U, ';');
    const RunResult unreadable = runLumiset({"gpu", "reports"});
    EXPECT_EQ(unreadable.status, 1);
    EXPECT_NE(unreadable.err.find("cannot be read"), std::string::npos) << unreadable.err;
    if (runLumiset({"gpu", "info"}).status == 0) {
        const TemporaryFolder folder;
        RunResult run;
        render(folder, {"--gpu"}, run);
        EXPECT_NE(run.err.find("the reports of crashes cannot be read"), std::string::npos) << run.err;
    }
    EXPECT_EQ(runLumiset({"gpu", "reset"}).status, 0);
    EXPECT_EQ(runLumiset({"gpu", "reports"}).out, "No crash in OpenGL is reported.\n");
}

TEST(GPUCommands, WriteNoMessageIntoTheFileWhereStandardErrorIsClosed) {
    if (runLumiset({"gpu", "info"}).status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    const OwnSettings settings;
    ASSERT_EQ(runLumiset({"options", "Forced CPU", "yes"}).status, 0);  // which the first frame speaks of
    const TemporaryFolder folder;
    const std::string command = "render scene:64x36:0.2:25 --gpu -e Outline " + folder.path().string();
    EXPECT_EQ(std::system((LUMISET_PROGRAM " " + command + "/told.y4m 2>/dev/null").c_str()), 0);
    EXPECT_EQ(std::system((LUMISET_PROGRAM " " + command + "/closed.y4m 2>&-").c_str()), 0);
    EXPECT_TRUE(contentsOf(folder / "told.y4m") == contentsOf(folder / "closed.y4m"));
}

/// Stands in the monitor's place for one program, and hears which of its frames begin and end.
class MonitorPipe {
public:
    explicit MonitorPipe(const OwnSettings& settings) {
        const std::string path = settings.folder / "runtime/vantrelgpumonitor";
        ::mkfifo(path.c_str(), 0600);
        m_pipe = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    }
    ~MonitorPipe() { ::close(m_pipe); }
    MonitorPipe(const MonitorPipe&) = delete;
    MonitorPipe& operator=(const MonitorPipe&) = delete;

    /// False when the program ends without one.
    bool waitForFrame(pid_t program) {
        siginfo_t end{};
        while (!m_begun && ::waitid(P_PID, static_cast<id_t>(program), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               end.si_pid == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            hear();
        }
        return m_begun;
    }
    /// Once the program has ended: what would look like a crash.
    std::set<std::string> unfinished() {
        hear();
        return m_frames;
    }

private:
    void hear() {
        char block[4096];
        for (ssize_t count = 0; (count = ::read(m_pipe, block, sizeof block)) > 0;) {
            m_bytes.append(block, static_cast<std::size_t>(count));
        }
        for (std::size_t end = 0; (end = m_bytes.find('\0')) != std::string::npos; m_bytes.erase(0, end + 1)) {
            const std::string message = m_bytes.substr(0, end);
            const std::string frame = message.substr(0, message.size() - 1);  // "SENDER HOST;LIBRARY;EFFECT;GUID;"
            if (message.ends_with(" ;;;;3")) {
                m_left = frame.substr(0, frame.size() - 4);
                std::erase_if(m_frames, [&](const std::string& each) { return each.starts_with(m_left); });
            } else if (message.ends_with(";2")) {
                m_frames.erase(frame);
            } else if (m_begun = true; m_left.empty() || !frame.starts_with(m_left)) {
                m_frames.insert(frame);
            }
        }
    }

    int m_pipe = -1;
    std::string m_bytes;
    std::set<std::string> m_frames;  ///< under way
    std::string m_left;              ///< a sender's mark
    bool m_begun = false;
};

TEST(GPUCommands, LeaveNoReportWhenTheyAreInterrupted) {
    if (runLumiset({"gpu", "info"}).status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    const OwnSettings settings;
    const TemporaryFolder folder;
    const auto once = [](pid_t process) { ::kill(process, SIGINT); };
    const auto twice = [&once](pid_t process) {
        once(process);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        once(process);
    };
    // A frame that goes on for longer than an interrupted program waits for it.
    const auto inALongFrame = [&once](pid_t process) {
        once(process);
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        ::kill(process, SIGSTOP);
        std::this_thread::sleep_for(std::chrono::milliseconds(5200));
        ::kill(process, SIGCONT);
    };
    const std::string clip = folder / "out.mkv";
    const struct {
        const char* what;
        std::vector<std::string> command;
        std::function<void(pid_t)> interrupt;
    } rows[] = {
        {"once", {"render", "scene:640x360:20:30", clip, "--gpu", "-e", "Outline", "-p", "Red Glow"}, once},
        {"twice", {"render", "scene:640x360:20:30", clip, "--gpu", "-e", "Outline", "-p", "Red Glow"}, twice},
        {"in a long frame", {"render", "scene:1920x1080:20", clip, "--gpu", "-e", "Old TV"}, inALongFrame},
        {"compare", {"compare", "scene:1280x720", folder / "sheet.png", "-e", "Old TV"}, once},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        MonitorPipe pipe(settings);
        const RunResult run = runLumiset(row.command, "/dev/null", [&](pid_t process) {
            if (pipe.waitForFrame(process)) {
                row.interrupt(process);
            }
        });
        EXPECT_EQ(run.status, 128 + SIGINT) << run.err;
        EXPECT_EQ(folder.entries(), 0);
        EXPECT_EQ(pipe.unfinished(), std::set<std::string>());
    }
}

}  // namespace
}  // namespace lumiset::test

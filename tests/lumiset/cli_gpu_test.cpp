// Rendering in OpenGL from the command line, and on a machine without it.

#include <gtest/gtest.h>

#include <cstdlib>

#include "apps/lumiset/media/media.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

/// Hides the OpenGL drivers from programs started meanwhile.
class WithoutOpenGL {
public:
    WithoutOpenGL() { ::setenv(kDrivers, "/dev/null", 1); }
    ~WithoutOpenGL() { ::unsetenv(kDrivers); }
    WithoutOpenGL(const WithoutOpenGL&) = delete;
    WithoutOpenGL& operator=(const WithoutOpenGL&) = delete;

private:
    static constexpr const char* kDrivers = "__EGL_VENDOR_LIBRARY_FILENAMES";
};

std::vector<media::Picture> render(const TemporaryFolder& folder, std::vector<std::string> options, RunResult& run) {
    const std::string output = folder / "out.mkv";
    options.insert(options.begin(), {"render", "scene:96x64:0.5:10", output, "--codec", "ffv1", "--alpha", "-e",
                                     "Outline", "-p", "Red Glow"});
    run = runLumiset(options);
    EXPECT_EQ(run.status, 0) << run.err;
    std::vector<media::Picture> pictures;
    const std::unique_ptr<media::Source> source = media::openSource(output);
    for (media::Picture picture; source->read(picture);) {
        pictures.push_back(picture);
    }
    return pictures;
}

int largestDifference(const media::Picture& a, const media::Picture& b) {
    int largest = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int i = 0; i < 4 * a.width; ++i) {
            largest = std::max(largest, std::abs(a.row(y)[i] - b.row(y)[i]));
        }
    }
    return largest;
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
        int largest = 0;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            largest = std::max(largest, largestDifference(pictures[i], expected[i]));
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
        EXPECT_EQ(largestDifference(pictures[i], expected[i]), 0);
    }
    const std::size_t said = run.err.find("There is no OpenGL on this machine");
    ASSERT_NE(said, std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("There is no OpenGL", said + 1), std::string::npos) << "said twice: " << run.err;

    const RunResult info = runLumiset({"gpu", "info"});
    EXPECT_EQ(info.status, 1);
    EXPECT_NE(info.err.find("There is no OpenGL"), std::string::npos) << info.err;
}

}  // namespace
}  // namespace lumiset::test
